// PNG and JPEG files made in memory for the texture tests, with libpng and
// libjpeg: a picture given as R,G,B,A pixels, top row first, written in the
// PNG colour type and bit depth asked for, or as a JPEG of quality 100.
#ifndef PEVRANO_TESTS_ASSETS_IMAGEFILE_H
#define PEVRANO_TESTS_ASSETS_IMAGEFILE_H

#include <cstdio>
#include <string>
#include <vector>

#include <jpeglib.h>
#include <png.h>

#include "tgafile.h"

namespace pvtest {

struct Picture {
    unsigned width, height;
    Bytes rgba;  // top row first
    const unsigned char* pixel(unsigned x, unsigned y) const { return &rgba[(size_t(y) * width + x) * 4]; }
};

// The picture as a TGA of 32 bits (with alpha) or 24, top row first.
inline std::string tgaOf(const Picture& picture, bool alpha)
{
    Bytes body;
    for (size_t i = 0; i < picture.rgba.size(); i += 4) {
        body.insert(body.end(), {picture.rgba[i + 2], picture.rgba[i + 1], picture.rgba[i]});
        if (alpha)
            body.push_back(picture.rgba[i + 3]);
    }
    return tgaFile(TGA_RAW, picture.width, picture.height, alpha ? 32 : 24, 0x20, body);
}

enum class PngKind { RGB, RGBA, RGB16, GREY, GREY2, GREY_ALPHA, PALETTE, PALETTE_TRNS };

namespace pngdetail {

    inline void append(png_structp png, png_bytep data, png_size_t size)
    {
        std::string* out = static_cast<std::string*>(png_get_io_ptr(png));
        out->append(reinterpret_cast<const char*>(data), size);
    }
    inline void flush(png_structp) {}

    // One stored row of the picture in the kind's layout. Grey kinds take the red
    // channel; palette kinds have one entry per pixel.
    inline Bytes row(const Picture& p, unsigned y, PngKind kind)
    {
        Bytes out;
        for (unsigned x = 0; x < p.width; x++) {
            const unsigned char* c = p.pixel(x, y);
            switch (kind) {
            case PngKind::RGB:
                out.insert(out.end(), {c[0], c[1], c[2]});
                break;
            case PngKind::RGBA:
                out.insert(out.end(), {c[0], c[1], c[2], c[3]});
                break;
            case PngKind::RGB16:
                out.insert(out.end(), {c[0], c[0], c[1], c[1], c[2], c[2]});  // v * 257
                break;
            case PngKind::GREY:
                out.push_back(c[0]);
                break;
            case PngKind::GREY_ALPHA:
                out.insert(out.end(), {c[0], c[3]});
                break;
            case PngKind::GREY2:  // 2-bit levels 0, 85, 170, 255, four a byte
                if (x % 4 == 0)
                    out.push_back(0);
                out.back() |= (unsigned char)((c[0] / 85u) << (6 - 2 * (x % 4)));
                break;
            default:
                out.push_back((unsigned char)(y * p.width + x));  // one palette entry per pixel
            }
        }
        return out;
    }

}  // namespace pngdetail

inline std::string pngOf(const Picture& p, PngKind kind, bool interlaced = false)
{
    static const int colourTypes[] = {
        PNG_COLOR_TYPE_RGB,  PNG_COLOR_TYPE_RGB_ALPHA,  PNG_COLOR_TYPE_RGB,     PNG_COLOR_TYPE_GRAY,
        PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA, PNG_COLOR_TYPE_PALETTE, PNG_COLOR_TYPE_PALETTE};
    const int depth = kind == PngKind::RGB16 ? 16 : kind == PngKind::GREY2 ? 2 : 8;
    std::vector<png_color> palette;
    Bytes alphas;
    if (kind == PngKind::PALETTE || kind == PngKind::PALETTE_TRNS)
        for (unsigned i = 0; i < p.width * p.height; i++) {
            const unsigned char* c = &p.rgba[i * 4];
            palette.push_back({c[0], c[1], c[2]});
            if (kind == PngKind::PALETTE_TRNS)
                alphas.push_back(c[3]);
        }
    std::string out;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &out, pngdetail::append, pngdetail::flush);
    png_set_IHDR(png, info, p.width, p.height, depth, colourTypes[int(kind)],
                 interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    if (!palette.empty())
        png_set_PLTE(png, info, palette.data(), int(palette.size()));
    if (!alphas.empty())
        png_set_tRNS(png, info, alphas.data(), int(alphas.size()), nullptr);
    png_write_info(png, info);
    std::vector<Bytes> rows;
    std::vector<png_bytep> pointers;
    for (unsigned y = 0; y < p.height; y++)
        rows.push_back(pngdetail::row(p, y, kind));
    for (Bytes& r : rows)
        pointers.push_back(r.data());
    png_write_image(png, pointers.data());
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return out;
}

// A JPEG of quality 100, in colour or in grey (the red channel).
inline std::string jpegOf(const Picture& p, bool grey)
{
    jpeg_compress_struct output;
    jpeg_error_mgr error;
    output.err = jpeg_std_error(&error);
    jpeg_create_compress(&output);
    unsigned char* buffer = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&output, &buffer, &size);
    output.image_width = p.width;
    output.image_height = p.height;
    output.input_components = grey ? 1 : 3;
    output.in_color_space = grey ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&output);
    jpeg_set_quality(&output, 100, TRUE);
    jpeg_start_compress(&output, TRUE);
    for (unsigned y = 0; y < p.height; y++) {
        Bytes row;
        for (unsigned x = 0; x < p.width; x++)
            for (unsigned c = 0; c < (grey ? 1u : 3u); c++)
                row.push_back(p.pixel(x, y)[c]);
        JSAMPROW pointer = row.data();
        jpeg_write_scanlines(&output, &pointer, 1);
    }
    jpeg_finish_compress(&output);
    jpeg_destroy_compress(&output);
    std::string out(reinterpret_cast<const char*>(buffer), size);
    free(buffer);
    return out;
}

}  // namespace pvtest

#endif
