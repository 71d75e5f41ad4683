// TGA loading: every accepted and refused file with its log line, the
// bitmap compared whole (R,G,B(,A) bytes, bottom row first).
#include <gtest/gtest.h>

#include <string>

#include "assets/pvtexture.h"
#include "support/glfixture.h"
#include "tgafile.h"

using namespace pvtest;

namespace {

struct TgaCase {
    const char* what;
    std::string file;
    bool loads;
    std::string log;
    Bytes bitmap;  // empty: no bitmap kept
    unsigned sizeX, sizeY, format;
};

const Bytes bgr1 = {1, 2, 3}, bgr2 = {4, 5, 6}, bgra = {1, 2, 3, 4};
const Bytes rgb1 = {3, 2, 1}, rgb2 = {6, 5, 4};
const std::string corrupted = "   [!] File corrupted t.tga @ PVTEXTURE::loadTGA\n";
const std::string unsupported = "   [!] Unsupported depth or sizes for t.tga @ PVTEXTURE::loadTGA\n";
const std::string idField = "   [!] Unsupported file header for t.tga @ PVTEXTURE::loadTGA\n";

// A file refused with its log line: no bitmap, no size.
TgaCase refused(const char* what, const std::string& file, const std::string& log, unsigned format = 0)
{
    return {what, file, false, log, {}, 0, 0, format};
}

std::vector<TgaCase> tgaCases()
{
    return {
        {"raw 24-bit", tgaFile(TGA_RAW, 2, 1, 24, 0, joined(bgr1, bgr2)), true, "", joined(rgb1, rgb2), 2, 1,
         3},
        {"raw 32-bit", tgaFile(TGA_RAW, 1, 1, 32, 0, bgra), true, "", {3, 2, 1, 4}, 1, 1, 4},
        {"3x5 is accepted", tgaFile(TGA_RAW, 3, 5, 24, 0, repeated(bgr1, 15)), true, "", repeated(rgb1, 15),
         3, 5, 3},
        {"descriptor 0x20 flips", tgaFile(TGA_RAW, 1, 2, 24, 0x20, joined(bgr1, bgr2)), true, "",
         joined(rgb2, rgb1), 1, 2, 3},
        {"descriptor 0x10 flips", tgaFile(TGA_RAW, 1, 2, 24, 0x10, joined(bgr1, bgr2)), true, "",
         joined(rgb2, rgb1), 1, 2, 3},
        {"descriptor 0x08 keeps", tgaFile(TGA_RAW, 1, 2, 24, 0x08, joined(bgr1, bgr2)), true, "",
         joined(rgb1, rgb2), 1, 2, 3},
        {"repeat 0x80 is one pixel",
         tgaFile(TGA_RLE, 2, 1, 24, 0, joined(joined({0x80}, bgr1), joined({0x80}, bgr2))), true, "",
         joined(rgb1, rgb2), 2, 1, 3},
        {"repeat 0xFF is 128 pixels", tgaFile(TGA_RLE, 128, 1, 24, 0, joined({0xFF}, bgr1)), true, "",
         repeated(rgb1, 128), 128, 1, 3},
        {"raw packet 0x7F is 128 pixels",
         tgaFile(TGA_RLE, 128, 1, 32, 0, joined({0x7F}, repeated(bgra, 128))), true, "",
         repeated({3, 2, 1, 4}, 128), 128, 1, 4},
        {"run past the end is cut",
         tgaFile(TGA_RLE, 1, 2, 24, 0, joined(joined({0x81}, bgr1), joined({0x80}, bgr2))), true, "",
         joined(rgb1, rgb1), 1, 2, 3},
        {"raw packet past the end is cut", tgaFile(TGA_RLE, 1, 1, 24, 0, joined({0x01}, bgr1)), true, "",
         rgb1, 1, 1, 3},
        {"widest file", tgaFile(TGA_RLE, 256, 1, 24, 0, joined(joined({0xFF}, bgr1), joined({0xFF}, bgr2))),
         true, "", joined(repeated(rgb1, 128), repeated(rgb2, 128)), 256, 1, 3},
        {"image-ID field", tgaFile(TGA_RAW, 2, 1, 24, 0, joined(bgr1, bgr2), 1), true, idField, {}, 2, 1, 3},
        refused("raw data short", tgaFile(TGA_RAW, 2, 1, 24, 0, joined(bgr1, {4, 5})), corrupted, 3),
        refused("run-length data short", tgaFile(TGA_RLE, 2, 1, 24, 0, joined({0x80}, bgr1)), corrupted, 3),
        refused("repeat pixel short", tgaFile(TGA_RLE, 2, 1, 32, 0, {0x81, 1, 2, 3}), corrupted, 4),
        refused("header short", tgaFile(TGA_RAW, 1, 1, 24, 0, {}).substr(0, 17), corrupted),
        refused("257 wide", tgaFile(TGA_RAW, 257, 1, 24, 0, {}), unsupported),
        refused("16-bit", tgaFile(TGA_RAW, 1, 1, 16, 0, {0, 0}), unsupported),
        refused("0 high", tgaFile(TGA_RAW, 1, 0, 24, 0, {}), unsupported),
    };
}

class TgaLoading : public RecordingTest, public ::testing::WithParamInterface<size_t> {};

TEST_P(TgaLoading, BitmapAndLogAsExpected)
{
    const TgaCase c = tgaCases()[GetParam()];
    SCOPED_TRACE(c.what);
    writeFile("t.tga", c.file);
    PVTEXTURE texture;
    EXPECT_EQ(texture.load("t.tga"), c.loads);
    EXPECT_EQ(log.text(), c.log);
    const unsigned char* bitmap = texture.getBitmap();
    EXPECT_EQ(bitmap ? Bytes(bitmap, bitmap + c.bitmap.size()) : Bytes(), c.bitmap);
    EXPECT_EQ(bitmap != nullptr, !c.bitmap.empty());
    EXPECT_EQ(texture.getSizeX(), c.sizeX);
    EXPECT_EQ(texture.getSizeY(), c.sizeY);
    EXPECT_EQ(texture.getFormat(), c.format);
    EXPECT_EQ(texture.getMemorySize(), c.sizeX * c.sizeY * 4);
    EXPECT_EQ(PVTEXTURE::getUsedMemory(), int(c.sizeX * c.sizeY * 4));
    EXPECT_STREQ(texture.getFilename(),
                 c.loads ? "t.tga" : ("[texture " + std::to_string(texture.getId()) + "]").c_str());
}

INSTANTIATE_TEST_SUITE_P(Files, TgaLoading, ::testing::Range<size_t>(0, tgaCases().size()));

using TextureFiles = RecordingTest;

TEST_F(TextureFiles, NamesPathAndReplacedBitmap)
{
    PVTEXTURE texture;
    EXPECT_FALSE(texture.load(nullptr));
    EXPECT_FALSE(texture.load("missing.tga"));
    EXPECT_TRUE(texture.load("[dynamic]"));
    PVTEXTURE::setPath("dir/");
    ASSERT_EQ(system("mkdir dir"), 0);
    writeFile("dir/big.tga", tgaFile(TGA_RAW, 256, 256, 24, 0, repeated(bgr1, 256 * 256)));
    writeFile("dir/small.tga", tgaFile(TGA_RAW, 2, 1, 32, 0, repeated(bgra, 2)));
    ASSERT_TRUE(texture.load("big.tga") && texture.load("small.tga"));
    EXPECT_EQ(PVTEXTURE::getUsedMemory(), 8);  // the 262144 bytes of big.tga given back
    EXPECT_EQ(log.text(), "   [!] Invalid params @ PVTEXTURE@loadTGA\n"
                          "   [!] Unable to open file missing.tga @ PVTEXTURE::loadTGA\n");
}

// acquire finds a texture by name or reads it, without GL, and counts the
// caller's reference; a file it cannot read leaves no texture behind.
TEST_F(TextureFiles, AcquireFindsOrReadsAndCountsTheCaller)
{
    writeFile("a.tga", tgaFile(TGA_RAW, 1, 1, 24, 0, bgr1));
    bool loadedNow[2] = {false, true};
    PVTEXTURE* texture[2] = {};
    const Calls calls = record([&] {
        for (int i = 0; i < 2; i++)
            texture[i] = PVTEXTURE::acquire("a.tga", &loadedNow[i]);
    });
    EXPECT_EQ(calls, Calls {});
    ASSERT_NE(texture[0], nullptr);
    EXPECT_EQ(texture[1], texture[0]);
    EXPECT_TRUE(loadedNow[0]);
    EXPECT_FALSE(loadedNow[1]);
    EXPECT_EQ(texture[0]->getReferences(), 2);
    EXPECT_EQ(Bytes(texture[0]->getBitmap(), texture[0]->getBitmap() + 3), rgb1);
    EXPECT_EQ(PVTEXTURE::acquire("missing.tga"), nullptr);
    EXPECT_EQ(PVTEXTURE::acquire(nullptr), nullptr);
    EXPECT_EQ(PVTEXTURE::getNumberOfTextures(), 1u);
    EXPECT_EQ(log.text(), "   [!] Unable to open file missing.tga @ PVTEXTURE::loadTGA\n"
                          "   [!] Invalid params @ PVTEXTURE@loadTGA\n");
    delete texture[0];
}

// A name the texture cannot hold whole is refused before any file is read.
TEST_F(TextureFiles, NamesLongerThanTheNameFieldAreRefused)
{
    const std::string folder(150, 'd');
    ASSERT_EQ(system(("mkdir " + folder).c_str()), 0);
    const std::string longest = folder + "/" + std::string(100, 'f') + ".tga";  // 255 characters
    const std::string tooLong = folder + "/" + std::string(101, 'f') + ".tga";
    const std::string file = tgaFile(TGA_RAW, 1, 1, 24, 0, bgr1);
    writeFile(longest, file);
    writeFile(tooLong, file);
    PVTEXTURE texture;
    EXPECT_FALSE(texture.load(tooLong.c_str()));
    EXPECT_FALSE(
        texture.loadTGA(reinterpret_cast<const unsigned char*>(file.data()), file.size(), tooLong.c_str()));
    EXPECT_EQ(texture.getBitmap(), nullptr);
    ASSERT_TRUE(texture.load(longest.c_str()));
    EXPECT_EQ(PVTEXTURE::findByFilename(longest.c_str()), &texture);
    EXPECT_EQ(log.text(),
              "   [!] Invalid params @ PVTEXTURE@loadTGA\n   [!] Invalid params @ PVTEXTURE@loadTGA\n");
}

}  // namespace
