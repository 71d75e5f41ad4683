// Picture files by their first bytes: PNG (libpng) and JPEG (libjpeg-turbo)
// decoded from memory into the same bitmap a TGA of the same picture gives
// (R,G,B without alpha, R,G,B,A with it, bottom row first); anything else
// that looks like a TGA goes to the TGA decoder. Both libraries read only the
// bytes they are given and report errors through setjmp/longjmp: every
// allocation made before the jump is freed after it.
#include "assets/pvtexture.h"

#include <csetjmp>
#include <cstdio>
#include <cstring>

#include <jpeglib.h>
#include <png.h>

#include "foundation/kvflog.h"
#include "foundation/kvfmemory.h"

namespace {

const unsigned char PNG_SIGNATURE[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
const unsigned char JPEG_SIGNATURE[3] = {0xFF, 0xD8, 0xFF};
// A progressive JPEG may hold any number of scans; more than this many is
// taken for a hostile file rather than decoded for ever.
const int JPEG_MAX_SCANS = 100;

enum class Decoded { PICTURE, CORRUPTED, TOO_LARGE, UNSUPPORTED, NO_MEMORY };

// A decoded picture: pixels allocated with kvfMalloc, owned by whoever
// takes them.
struct PICTURE {
    unsigned char* pixels = nullptr;
    unsigned int width = 0;
    unsigned int height = 0;
    unsigned int format = 0;  // bytes per pixel: 3 or 4
};

bool startsWith(const unsigned char* data, size_t length, const unsigned char* signature, size_t size)
{
    return length >= size && memcmp(data, signature, size) == 0;
}

// TGA has no signature: a colour-map type of 0 or 1 and one of the image
// types the format defines. Files too short to tell go to the TGA decoder,
// which reports them.
bool looksLikeTga(const unsigned char* data, size_t length)
{
    if (length < 3)
        return true;
    const unsigned char type = data[2];
    return data[1] <= 1 && (type <= 3 || (type >= 9 && type <= 11));
}

bool fitsTexture(unsigned int width, unsigned int height)
{
    return width <= PV_TEXTURE_MAX_SIZE && height <= PV_TEXTURE_MAX_SIZE;
}

// Row y of the picture counted from the top, in a bitmap that starts with
// the bottom row.
unsigned char* rowFromTop(const PICTURE& picture, unsigned int y)
{
    return picture.pixels + size_t(picture.height - 1 - y) * picture.width * picture.format;
}

// kvfFree counts every call, a null pointer's too: only blocks are given back.
void releaseBlock(void* block)
{
    if (block)
        kvfFree(block);
}

bool allocatePixels(PICTURE& picture)
{
    picture.pixels = static_cast<unsigned char*>(kvfMalloc(picture.width * picture.height * picture.format));
    return picture.pixels != nullptr;
}

// ---- PNG

struct PNGSOURCE {
    const unsigned char* data;
    size_t length;
    size_t position;
};

void readPngBytes(png_structp png, png_bytep out, png_size_t count)
{
    PNGSOURCE* source = static_cast<PNGSOURCE*>(png_get_io_ptr(png));
    if (count > source->length - source->position)
        png_error(png, "read past the end of the data");
    memcpy(out, source->data + source->position, count);
    source->position += count;
}

void ignorePngWarning(png_structp, png_const_charp) {}
void failPng(png_structp png, png_const_charp) { png_longjmp(png, 1); }

// Palette, grey and 16-bit pictures become 8-bit RGB, with alpha when the
// file has an alpha channel or a transparent colour.
void convertPngToRgb(png_structp png, png_infop info)
{
    const png_byte colourType = png_get_color_type(png, info);
    if (colourType == PNG_COLOR_TYPE_PALETTE)
        png_set_palette_to_rgb(png);
    if (colourType == PNG_COLOR_TYPE_GRAY || colourType == PNG_COLOR_TYPE_GRAY_ALPHA)
        png_set_gray_to_rgb(png);
    if (png_get_bit_depth(png, info) < 8)
        png_set_expand(png);
    if (png_get_valid(png, info, PNG_INFO_tRNS))
        png_set_tRNS_to_alpha(png);
    png_set_scale_16(png);
    png_set_interlace_handling(png);
    png_read_update_info(png, info);
}

// The pixel work between png_read_info and the end, run under the caller's
// setjmp. rows is the caller's, so that it is freed after a jump.
Decoded readPngPixels(png_structp png, png_infop info, PICTURE& picture, png_bytep*& rows)
{
    png_read_info(png, info);
    picture.width = png_get_image_width(png, info);
    picture.height = png_get_image_height(png, info);
    if (!fitsTexture(picture.width, picture.height))
        return Decoded::TOO_LARGE;
    convertPngToRgb(png, info);
    picture.format = png_get_channels(png, info);
    if ((picture.format != 3 && picture.format != 4) ||
        png_get_rowbytes(png, info) != size_t(picture.width) * picture.format)
        return Decoded::UNSUPPORTED;
    rows = static_cast<png_bytep*>(kvfMalloc(picture.height * sizeof(png_bytep)));
    if (!rows || !allocatePixels(picture))
        return Decoded::NO_MEMORY;
    for (unsigned int y = 0; y < picture.height; y++)
        rows[y] = rowFromTop(picture, y);
    png_read_image(png, rows);
    png_read_end(png, nullptr);
    return Decoded::PICTURE;
}

// Creates the decoder and runs it under setjmp; rows is the caller's, so
// that it can be freed whichever way the decoder ends.
Decoded runPng(const unsigned char* data, size_t length, PICTURE& picture, png_bytep*& rows)
{
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, failPng, ignorePngWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info) {
        png_destroy_read_struct(&png, nullptr, nullptr);
        return Decoded::NO_MEMORY;
    }
    PNGSOURCE source = {data, length, 0};
    png_set_read_fn(png, &source, readPngBytes);
    // Nothing local is changed between here and a jump back.
    if (setjmp(png_jmpbuf(png)) != 0) {
        png_destroy_read_struct(&png, &info, nullptr);
        return Decoded::CORRUPTED;
    }
    const Decoded result = readPngPixels(png, info, picture, rows);
    png_destroy_read_struct(&png, &info, nullptr);
    return result;
}

Decoded decodePng(const unsigned char* data, size_t length, PICTURE& picture)
{
    png_bytep* rows = nullptr;
    const Decoded result = runPng(data, length, picture, rows);
    releaseBlock(rows);
    return result;
}

// ---- JPEG

struct JPEGERROR {
    jpeg_error_mgr manager;
    jmp_buf jump;
};

void failJpeg(j_common_ptr decoder) { longjmp(reinterpret_cast<JPEGERROR*>(decoder->err)->jump, 1); }

// Warnings are counted (libjpeg goes on with made-up data after them), and
// nothing is printed.
void countJpegMessage(j_common_ptr decoder, int level)
{
    if (level < 0)
        decoder->err->num_warnings++;
}

void limitJpegScans(j_common_ptr decoder)
{
    const j_decompress_ptr input = reinterpret_cast<j_decompress_ptr>(decoder);
    if (input->input_scan_number > JPEG_MAX_SCANS)
        failJpeg(decoder);
}

// The work between the header and the end, run under the caller's setjmp.
Decoded readJpegPixels(jpeg_decompress_struct& input, PICTURE& picture)
{
    jpeg_read_header(&input, TRUE);
    picture.width = input.image_width;
    picture.height = input.image_height;
    if (!fitsTexture(picture.width, picture.height))
        return Decoded::TOO_LARGE;
    if (input.jpeg_color_space == JCS_CMYK || input.jpeg_color_space == JCS_YCCK)
        return Decoded::UNSUPPORTED;
    input.out_color_space = JCS_RGB;
    picture.format = 3;
    if (!allocatePixels(picture))
        return Decoded::NO_MEMORY;
    jpeg_start_decompress(&input);
    if (input.output_components != 3 || input.output_width != picture.width ||
        input.output_height != picture.height)
        return Decoded::UNSUPPORTED;
    while (input.output_scanline < input.output_height) {
        JSAMPROW row = rowFromTop(picture, input.output_scanline);
        jpeg_read_scanlines(&input, &row, 1);
    }
    jpeg_finish_decompress(&input);
    return input.err->num_warnings ? Decoded::CORRUPTED : Decoded::PICTURE;
}

// Runs the decoder under setjmp; the decoder's state is the caller's.
Decoded runJpeg(jpeg_decompress_struct& input, JPEGERROR& error, const unsigned char* data, size_t length,
                PICTURE& picture)
{
    if (setjmp(error.jump) != 0)
        return Decoded::CORRUPTED;
    jpeg_create_decompress(&input);
    jpeg_mem_src(&input, data, static_cast<unsigned long>(length));
    return readJpegPixels(input, picture);
}

Decoded decodeJpeg(const unsigned char* data, size_t length, PICTURE& picture)
{
    jpeg_decompress_struct input;
    JPEGERROR error;
    input.err = jpeg_std_error(&error.manager);
    error.manager.error_exit = failJpeg;
    error.manager.emit_message = countJpegMessage;
    jpeg_progress_mgr progress;
    progress.progress_monitor = limitJpegScans;
    input.progress = &progress;
    const Decoded result = runJpeg(input, error, data, length, picture);
    jpeg_destroy_decompress(&input);
    return result;
}

void logRefusal(Decoded result, const PICTURE& picture, const char* name)
{
    switch (result) {
    case Decoded::TOO_LARGE:
        kvfLog("   [!] Picture %s is %ux%u, larger than %ux%u @ PVTEXTURE::load\n", name, picture.width,
               picture.height, PV_TEXTURE_MAX_SIZE, PV_TEXTURE_MAX_SIZE);
        break;
    case Decoded::UNSUPPORTED:
        kvfLog("   [!] Unsupported image format for %s @ PVTEXTURE::load\n", name);
        break;
    case Decoded::NO_MEMORY:
        kvfLog("   [!] Out of memory for %s @ PVTEXTURE::load\n", name);
        break;
    default:
        kvfLog("   [!] File corrupted %s @ PVTEXTURE::load\n", name);
        break;
    }
}

}  // namespace

bool PVTEXTURE::loadImage(const unsigned char* data, size_t length, const char* name)
{
    if (!data || !acceptsName(name))
        return false;
    const bool png = startsWith(data, length, PNG_SIGNATURE, sizeof PNG_SIGNATURE);
    if (!png && !startsWith(data, length, JPEG_SIGNATURE, sizeof JPEG_SIGNATURE)) {
        if (looksLikeTga(data, length))
            return loadTGA(data, length, name);
        logRefusal(Decoded::UNSUPPORTED, PICTURE(), name);
        return false;
    }
    PICTURE picture;
    const Decoded result = png ? decodePng(data, length, picture) : decodeJpeg(data, length, picture);
    if (result != Decoded::PICTURE) {
        releaseBlock(picture.pixels);
        logRefusal(result, picture, name);
        return false;
    }
    releaseLoadedBitmap();
    bitmap = picture.pixels;
    format = picture.format;
    storeLoaded(picture.width, picture.height, name);
    return true;
}
