// TGA decoding: uncompressed and run-length true-colour files, 24 or 32
// bits, into the texture's bitmap (R,G,B(,A) bytes, bottom row first).
#include "assets/pvtexture.h"

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#endif

#include <algorithm>
#include <cstring>

#include "foundation/kvflog.h"
#include "foundation/kvfmemory.h"
#include "foundation/kvfreader.h"

namespace {

const unsigned int TGA_HEADER_SIZE = 18;
const unsigned char TGA_RAW_HEADER[12] = {0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0};
const unsigned char TGA_RLE_HEADER[12] = {0, 0, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0};

// Pointer to the reader's next count bytes, consumed; null when fewer are left.
const unsigned char* take(KVFREADER& reader, size_t count)
{
    const unsigned char* taken = reader.current();
    return reader.skip(count) ? taken : nullptr;
}

// Copies pixels stored B,G,R(,A) into R,G,B(,A) order.
template <unsigned int Bytes>
void swizzlePortable(unsigned char* destination, const unsigned char* source, size_t pixels)
{
    for (size_t i = 0; i < pixels; i++, destination += Bytes, source += Bytes) {
        destination[0] = source[2];
        destination[1] = source[1];
        destination[2] = source[0];
        if (Bytes == 4)
            destination[3] = source[3];
    }
}

#if defined(__x86_64__) || defined(__i386__)
// The same with one byte shuffle per 16 bytes: five 24-bit pixels (the
// 16th byte is rewritten by the next step) or four 32-bit ones. Both
// buffers must hold 16 bytes from every step's start.
template <unsigned int Bytes>
__attribute__((target("ssse3"))) void swizzleShuffled(unsigned char* destination, const unsigned char* source,
                                                      size_t pixels)
{
    const unsigned int step = 16 / Bytes;
    const __m128i order = Bytes == 3 ? _mm_setr_epi8(2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13, 12, 15)
                                     : _mm_setr_epi8(2, 1, 0, 3, 6, 5, 4, 7, 10, 9, 8, 11, 14, 13, 12, 15);
    size_t done = 0;
    for (; done + step + 1 <= pixels; done += step) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + done * Bytes));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(destination + done * Bytes),
                         _mm_shuffle_epi8(block, order));
    }
    swizzlePortable<Bytes>(destination + done * Bytes, source + done * Bytes, pixels - done);
}

bool detectByteShuffle()
{
    __builtin_cpu_init();
    return __builtin_cpu_supports("ssse3");
}

const bool hasByteShuffle = detectByteShuffle();
#endif

template <unsigned int Bytes>
void swizzlePixels(unsigned char* destination, const unsigned char* source, size_t pixels)
{
#if defined(__x86_64__) || defined(__i386__)
    if (hasByteShuffle) {
        swizzleShuffled<Bytes>(destination, source, pixels);
        return;
    }
#endif
    swizzlePortable<Bytes>(destination, source, pixels);
}

template <unsigned int Bytes>
void repeatPixel(unsigned char* destination, const unsigned char* source, size_t pixels)
{
    unsigned char pixel[Bytes];
    swizzlePixels<Bytes>(pixel, source, 1);
    for (size_t i = 0; i < pixels; i++, destination += Bytes)
        memcpy(destination, pixel, Bytes);
}

template <unsigned int Bytes> bool decodeRaw(KVFREADER& reader, unsigned char* bitmap, size_t pixels)
{
    const unsigned char* source = take(reader, pixels * Bytes);
    if (!source)
        return false;
    swizzlePixels<Bytes>(bitmap, source, pixels);
    return true;
}

// Run-length packets until every pixel is written; a packet running past
// the image end is cut there.
template <unsigned int Bytes> bool decodeRunLength(KVFREADER& reader, unsigned char* bitmap, size_t pixels)
{
    size_t written = 0;
    while (written < pixels) {
        const unsigned char* packet = take(reader, 1);
        if (!packet)
            return false;
        const bool repeat = *packet >= 128;
        const size_t count = std::min<size_t>(repeat ? *packet - 127 : *packet + 1, pixels - written);
        unsigned char* destination = bitmap + written * Bytes;
        if (repeat) {
            const unsigned char* source = take(reader, Bytes);
            if (!source)
                return false;
            repeatPixel<Bytes>(destination, source, count);
        } else {
            const unsigned char* source = take(reader, count * Bytes);
            if (!source)
                return false;
            swizzlePixels<Bytes>(destination, source, count);
        }
        written += count;
    }
    return true;
}

template <unsigned int Bytes>
bool decodeBody(bool runLength, KVFREADER& reader, unsigned char* bitmap, size_t pixels)
{
    return runLength ? decodeRunLength<Bytes>(reader, bitmap, pixels)
                     : decodeRaw<Bytes>(reader, bitmap, pixels);
}

}  // namespace

bool PVTEXTURE::loadTGA(const unsigned char* data, size_t length, const char* name)
{
    if (!data || !acceptsName(name))
        return false;
    if (length < TGA_HEADER_SIZE) {
        kvfLog("   [!] File corrupted %s @ PVTEXTURE::loadTGA\n", name);
        return false;
    }
    const unsigned int width = data[12] + 256u * data[13];
    const unsigned int height = data[14] + 256u * data[15];
    const unsigned int depth = data[16];
    const unsigned int descriptor = data[17];
    if ((depth != 24 && depth != 32) || width < 1 || width > PV_TEXTURE_MAX_SIZE || height < 1 ||
        height > PV_TEXTURE_MAX_SIZE) {
        kvfLog("   [!] Unsupported depth or sizes for %s @ PVTEXTURE::loadTGA\n", name);
        return false;
    }
    format = depth / 8;
    releaseLoadedBitmap();
    bitmap = static_cast<unsigned char*>(kvfMalloc(width * height * format));
    if (!bitmap) {
        kvfLog("   [!] Out of memory for %s @ PVTEXTURE::loadTGA\n", name);
        return false;
    }
    const bool raw = memcmp(data, TGA_RAW_HEADER, sizeof(TGA_RAW_HEADER)) == 0;
    const bool runLength = memcmp(data, TGA_RLE_HEADER, sizeof(TGA_RLE_HEADER)) == 0;
    if (raw || runLength) {
        if (!decodePixels(data, length, size_t(width) * height)) {
            kvfLog("   [!] File corrupted %s @ PVTEXTURE::loadTGA\n", name);
            releaseBitmap();
            return false;
        }
    } else {
        // The load goes on and reports success, with no pixels kept.
        kvfLog("   [!] Unsupported file header for %s @ PVTEXTURE::loadTGA\n", name);
        releaseBitmap();
    }
    if (descriptor >= 16 && !flipRows(width, height)) {
        kvfLog("   [!] Out of memory for %s @ PVTEXTURE::loadTGA\n", name);
        releaseBitmap();
        return false;
    }
    storeLoaded(width, height, name);
    return true;
}

// Decodes the pixel data after the 18-byte header into the bitmap; false
// when the data ends before every pixel is written.
bool PVTEXTURE::decodePixels(const unsigned char* data, size_t length, size_t pixels)
{
    KVFREADER reader(data, length, TGA_HEADER_SIZE);
    const bool runLength = data[2] == TGA_RLE_HEADER[2];
    if (format == 3)
        return decodeBody<3>(runLength, reader, bitmap, pixels);
    return decodeBody<4>(runLength, reader, bitmap, pixels);
}

// Swaps rows top to bottom, so that the bitmap starts with the bottom row.
bool PVTEXTURE::flipRows(unsigned int width, unsigned int height)
{
    if (!bitmap)
        return true;
    const unsigned int rowBytes = width * format;
    unsigned char* scratch = static_cast<unsigned char*>(kvfMalloc(rowBytes));
    if (!scratch)
        return false;
    for (unsigned int i = 0; i < height / 2; i++) {
        unsigned char* top = bitmap + i * rowBytes;
        unsigned char* bottom = bitmap + (height - 1 - i) * rowBytes;
        memcpy(scratch, top, rowBytes);
        memcpy(top, bottom, rowBytes);
        memcpy(bottom, scratch, rowBytes);
    }
    kvfFree(scratch);
    return true;
}
