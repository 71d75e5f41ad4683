// The window's caption, and screenshots of the frame being drawn as PNG files.
#include <GLES/gl.h>
#include <SDL/SDL.h>
#include <png.h>

#include <csetjmp>
#include <cstdio>
#include <vector>

#include "core/pevrano.h"
#include "core/pvsettings.h"
#include "foundation/kvflog.h"

namespace {

// Writes the rows (RGBA, top row first) as an 8-bit RGB PNG; the alpha byte
// is dropped as libpng writes. libpng reports its errors by a long jump
// back here, so nothing with a destructor lives in this function.
bool writeRgbPng(FILE* file, int width, int height, png_bytep* rows)
{
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info || setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, info ? &info : nullptr);
        return false;
    }
    png_init_io(png, file);
    png_set_IHDR(png, info, png_uint_32(width), png_uint_32(height), 8, PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    png_set_filler(png, 0, PNG_FILLER_AFTER);
    png_write_image(png, rows);
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return true;
}

}  // namespace

bool PEVRANO::setCaption(const char* text)
{
    if (!text) {
        kvfLog("   [!] Invalid params @ PEVRANO::setCaption\n");
        return false;
    }
    // Off-screen there is no window to name.
    if (active && PVSETTINGS::getSDLWindow())
        SDL_WM_SetCaption(text, text);
    return true;
}

bool PEVRANO::screenshot(const char* pngFile)
{
    if (!pngFile) {
        kvfLog("   [!] Invalid params @ PEVRANO::screenshot\n");
        return false;
    }
    const int width = PVSETTINGS::getSDLWindowX(), height = PVSETTINGS::getSDLWindowY();
    if (!active || width <= 0 || height <= 0) {
        kvfLog("   [!] No frame to capture @ PEVRANO::screenshot\n");
        return false;
    }
    // GL's rows run bottom-up (RGBA rows are always 4-byte aligned).
    std::vector<png_byte> pixels(size_t(width) * size_t(height) * 4);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    std::vector<png_bytep> rows(static_cast<size_t>(height));
    for (int row = 0; row < height; row++)
        rows[size_t(row)] = &pixels[size_t(height - 1 - row) * size_t(width) * 4];
    FILE* file = std::fopen(pngFile, "wb");
    bool written = file && writeRgbPng(file, width, height, rows.data());
    if (file)
        written = std::fclose(file) == 0 && written;
    if (!written)
        kvfLog("   [!] Unable to write %s @ PEVRANO::screenshot\n", pngFile);
    return written;
}
