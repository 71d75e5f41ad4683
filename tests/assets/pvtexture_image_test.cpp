// PNG and JPEG loading: each kind of file gives the bitmap, format, sizes and
// memory charge of a TGA of the same picture; pictures too large, files of
// another format and cut files are refused with their lines.
#include <gtest/gtest.h>

#include <string>

#include "assets/pvtexture.h"
#include "foundation/kvfmemory.h"
#include "imagefile.h"
#include "support/glfixture.h"

using namespace pvtest;

namespace {

// R,G,B,A pixels, top row first.
const Picture opaque = {3, 2, {255, 0,  0,  255, 0,  255, 0,  255, 0,   0,   255, 255,  //
                               10,  20, 30, 255, 40, 50,  60, 255, 250, 128, 1,   255}};
const Picture translucent = {3, 2, {255, 0,  0,  0,   0,  255, 0,  64,  0,   0,   255, 128,  //
                                    10,  20, 30, 255, 40, 50,  60, 200, 250, 128, 1,   1}};
const Picture greys = {5, 2, {0,   0,   0,  255, 85, 85,  85,  255, 170, 170, 170, 255, 255, 255,
                              255, 255, 85, 85,  85, 255, 255, 255, 255, 255, 170, 170, 170, 255,
                              85,  85,  85, 255, 0,  0,   0,   255, 0,   0,   0,   255}};
const Picture translucentGreys = {2, 2, {0, 0, 0, 0, 85, 85, 85, 40, 170, 170, 170, 255, 200, 200, 200, 99}};

// 8x16: a light 8x8 block over a dark one. Flat grey blocks survive a
// quality-100 JPEG exactly.
Picture blocks()
{
    Picture picture = {8, 16, {}};
    for (unsigned i = 0; i < 128; i++) {
        const unsigned char level = i < 64 ? 200 : 40;
        picture.rgba.insert(picture.rgba.end(), {level, level, level, 255});
    }
    return picture;
}

struct ImageCase {
    const char* what;
    const char* name;
    std::string file;
    Picture picture;
    bool alpha;
};

std::vector<ImageCase> imageCases()
{
    return {
        {"PNG RGB", "rgb.png", pngOf(opaque, PngKind::RGB), opaque, false},
        {"PNG named .tga", "png.tga", pngOf(opaque, PngKind::RGB), opaque, false},
        {"PNG RGBA", "rgba.png", pngOf(translucent, PngKind::RGBA), translucent, true},
        {"PNG 16-bit", "16.png", pngOf(opaque, PngKind::RGB16), opaque, false},
        {"PNG grey", "grey.png", pngOf(greys, PngKind::GREY), greys, false},
        {"PNG 2-bit grey", "grey2.png", pngOf(greys, PngKind::GREY2), greys, false},
        {"PNG grey and alpha", "ga.png", pngOf(translucentGreys, PngKind::GREY_ALPHA), translucentGreys,
         true},
        {"PNG palette", "pal.png", pngOf(opaque, PngKind::PALETTE), opaque, false},
        {"PNG palette with alphas", "trns.png", pngOf(translucent, PngKind::PALETTE_TRNS), translucent, true},
        {"PNG interlaced", "adam7.png", pngOf(translucent, PngKind::RGBA, true), translucent, true},
        {"JPEG colour", "c.jpg", jpegOf(blocks(), false), blocks(), false},
        {"JPEG grey", "g.jpeg", jpegOf(blocks(), true), blocks(), false},
    };
}

class ImageLoading : public RecordingTest, public ::testing::WithParamInterface<size_t> {};

TEST_P(ImageLoading, BitmapEqualsTheTgaOfTheSamePicture)
{
    const ImageCase c = imageCases()[GetParam()];
    SCOPED_TRACE(c.what);
    writeFile(c.name, c.file);
    writeFile("same.tga", tgaOf(c.picture, c.alpha));
    PVTEXTURE image, tga;
    ASSERT_TRUE(image.load(c.name));
    ASSERT_TRUE(tga.load("same.tga"));
    EXPECT_EQ(log.text(), "");
    EXPECT_STREQ(image.getFilename(), c.name);
    EXPECT_EQ(image.getFormat(), tga.getFormat());
    EXPECT_EQ(image.getSizeX(), tga.getSizeX());
    EXPECT_EQ(image.getSizeY(), tga.getSizeY());
    EXPECT_EQ(image.getMemorySize(), tga.getMemorySize());
    const size_t bytes = size_t(tga.getSizeX()) * tga.getSizeY() * tga.getFormat();
    EXPECT_EQ(Bytes(image.getBitmap(), image.getBitmap() + bytes),
              Bytes(tga.getBitmap(), tga.getBitmap() + bytes));
}

INSTANTIATE_TEST_SUITE_P(Files, ImageLoading, ::testing::Range<size_t>(0, imageCases().size()));

Picture flat(unsigned width, unsigned height)
{
    return {width, height, repeated({90, 90, 90, 255}, width * height)};
}

using ImageRefusals = RecordingTest;

TEST_F(ImageRefusals, LinesSayWhy)
{
    const std::string png = pngOf(opaque, PngKind::RGB), jpeg = jpegOf(blocks(), false);
    const struct {
        const char* name;
        std::string file;
        std::string line;
    } cases[] = {
        {"wide.png", pngOf(flat(257, 1), PngKind::RGB),
         "   [!] Picture wide.png is 257x1, larger than 256x256 @ PVTEXTURE::load\n"},
        {"tall.jpg", jpegOf(flat(8, 264), true),
         "   [!] Picture tall.jpg is 8x264, larger than 256x256 @ PVTEXTURE::load\n"},
        {"a.gif", std::string("GIF89a\1\0\1\0\0\0\0;", 13),
         "   [!] Unsupported image format for a.gif @ PVTEXTURE::load\n"},
        {"b.bmp", std::string("BM\x3a\0\0\0\0\0\0\0\x36\0\0\0", 14),
         "   [!] Unsupported image format for b.bmp @ PVTEXTURE::load\n"},
        {"cut.png", png.substr(0, png.size() / 2), "   [!] File corrupted cut.png @ PVTEXTURE::load\n"},
        {"cut.jpg", jpeg.substr(0, jpeg.size() - 40), "   [!] File corrupted cut.jpg @ PVTEXTURE::load\n"},
    };
    std::string expected;
    const int blocksBefore = kvfGetMemoryStats().ratio;
    for (const auto& c : cases) {
        writeFile(c.name, c.file);
        PVTEXTURE texture;
        EXPECT_FALSE(texture.load(c.name)) << c.name;
        EXPECT_EQ(texture.getBitmap(), nullptr) << c.name;
        EXPECT_EQ(texture.getFilename(), "[texture " + std::to_string(texture.getId()) + "]");
        expected += c.line;
    }
    EXPECT_EQ(PVTEXTURE::getUsedMemory(), 0);
    EXPECT_EQ(kvfGetMemoryStats().ratio, blocksBefore);  // every block given back, none twice
    EXPECT_EQ(log.text(), expected);
}

}  // namespace
