#include "screenshot.h"

#include <GLES/gl.h>
#include <png.h>

#include <cstdio>
#include <vector>

// GL rows run bottom-up; the file's run top-down.
bool saveScreenshot(const char* path, int width, int height)
{
    std::vector<unsigned char> pixels(size_t(width) * size_t(height) * 4);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());

    FILE* file = std::fopen(path, "wb");
    if (!file)
        return false;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info || setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, info ? &info : nullptr);
        std::fclose(file);
        return false;
    }
    png_init_io(png, file);
    png_set_IHDR(png, info, width, height, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    std::vector<unsigned char> row(size_t(width) * 3);
    for (int y = height - 1; y >= 0; --y) {
        const unsigned char* source = &pixels[size_t(y) * size_t(width) * 4];
        for (int x = 0; x < width; ++x)
            for (int channel = 0; channel < 3; ++channel)
                row[size_t(x) * 3 + channel] = source[x * 4 + channel];
        png_write_row(png, row.data());
    }
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return std::fclose(file) == 0;
}
