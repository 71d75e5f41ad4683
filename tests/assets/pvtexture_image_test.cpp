// PNG and JPEG loading: each kind of file under data/images gives the bitmap,
// format, sizes and memory charge of the TGA of the same picture beside it;
// pictures too large, files of another format and cut files are refused with
// their lines.
#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <tuple>

#include "assets/pvtexture.h"
#include "foundation/kvfmemory.h"
#include "support/glfixture.h"

using namespace pvtest;

namespace {

const std::string images = PEVRANO_TEST_DATA "/images/";

struct ImageCase {
    const char* file;
    const char* tga;  // the same picture as a TGA
};

// Colour types RGB, RGBA, 16-bit, grey, 2-bit grey, grey and alpha, palette
// with and without alphas, interlaced; JPEGs in colour and in grey.
const ImageCase imageCases[] = {
    {"rgb.png", "rgb.tga"},       {"rgba.png", "rgba.tga"},          {"rgb16.png", "rgb.tga"},
    {"grey.png", "grey.tga"},     {"grey2.png", "grey.tga"},         {"greyalpha.png", "greyalpha.tga"},
    {"palette.png", "rgb.tga"},   {"palettealpha.png", "rgba.tga"},  {"interlaced.png", "rgba.tga"},
    {"blocks.jpg", "blocks.tga"}, {"blocksgrey.jpeg", "blocks.tga"},
};

class ImageLoading : public RecordingTest, public ::testing::WithParamInterface<size_t> {};

TEST_P(ImageLoading, BitmapEqualsTheTgaOfTheSamePicture)
{
    // The content decides the format, not the name: every file is read as .tga.
    const ImageCase& c = imageCases[GetParam()];
    SCOPED_TRACE(c.file);
    writeFile("image.tga", readFile(images + c.file));
    writeFile("same.tga", readFile(images + c.tga));
    PVTEXTURE image, tga;
    ASSERT_TRUE(image.load("image.tga"));
    ASSERT_TRUE(tga.load("same.tga"));
    EXPECT_EQ(log.text(), "");
    // Format, sizes, memory charge and pixels.
    auto contents = [](PVTEXTURE& t) {
        const char* bitmap = reinterpret_cast<const char*>(t.getBitmap());
        return std::make_tuple(t.getFormat(), t.getSizeX(), t.getSizeY(), t.getMemorySize(),
                               std::string(bitmap, size_t(t.getSizeX()) * t.getSizeY() * t.getFormat()));
    };
    EXPECT_EQ(contents(image), contents(tga));
}

INSTANTIATE_TEST_SUITE_P(Files, ImageLoading, ::testing::Range<size_t>(0, std::size(imageCases)));

using ImageRefusals = RecordingTest;

TEST_F(ImageRefusals, LinesSayWhy)
{
    const struct {
        const char* name;
        std::string line;
    } cases[] = {
        {"wide.png", "   [!] Picture wide.png is 257x1, larger than 256x256 @ PVTEXTURE::load\n"},
        {"tall.jpg", "   [!] Picture tall.jpg is 8x264, larger than 256x256 @ PVTEXTURE::load\n"},
        {"a.gif", "   [!] Unsupported image format for a.gif @ PVTEXTURE::load\n"},
        {"b.bmp", "   [!] Unsupported image format for b.bmp @ PVTEXTURE::load\n"},
        {"cut.png", "   [!] File corrupted cut.png @ PVTEXTURE::load\n"},
        {"cut.jpg", "   [!] File corrupted cut.jpg @ PVTEXTURE::load\n"},
    };
    std::string expected;
    const int blocksBefore = kvfGetMemoryStats().ratio;
    for (const auto& c : cases) {
        writeFile(c.name, readFile(images + c.name));
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
