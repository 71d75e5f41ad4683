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
    std::string log;  // the file loads when it logs nothing or only the image-ID line
    Bytes bitmap;  // empty: no bitmap kept
    unsigned sizeX, sizeY, format;
};

const Bytes bgr1 = {1, 2, 3}, bgr2 = {4, 5, 6}, bgra = {1, 2, 3, 4};
const Bytes rgb1 = {3, 2, 1}, rgb2 = {6, 5, 4};
const std::string corrupted = "   [!] File corrupted t.tga @ PVTEXTURE::loadTGA\n";
const std::string unsupported = "   [!] Unsupported depth or sizes for t.tga @ PVTEXTURE::loadTGA\n";
const std::string idField = "   [!] Unsupported file header for t.tga @ PVTEXTURE::loadTGA\n";

std::vector<TgaCase> tgaCases()
{
    const Bytes bgr12 = joined({bgr1, bgr2}), rgb12 = joined({rgb1, rgb2}), rgb21 = joined({rgb2, rgb1});
    auto raw = [](unsigned w, unsigned h, unsigned char depth, const Bytes& body,
                  unsigned char descriptor = 0) { return tgaFile(TGA_RAW, w, h, depth, descriptor, body); };
    auto rle = [](unsigned w, unsigned h, unsigned char depth, const Bytes& body) {
        return tgaFile(TGA_RLE, w, h, depth, 0, body);
    };
    return {
        {"raw 24-bit", raw(2, 1, 24, bgr12), "", rgb12, 2, 1, 3},
        {"raw 32-bit", raw(1, 1, 32, bgra), "", {3, 2, 1, 4}, 1, 1, 4},
        {"3x5 is accepted", raw(3, 5, 24, repeated(bgr1, 15)), "", repeated(rgb1, 15), 3, 5, 3},
        {"descriptor 0x20 flips", raw(1, 2, 24, bgr12, 0x20), "", rgb21, 1, 2, 3},
        {"descriptor 0x10 flips", raw(1, 2, 24, bgr12, 0x10), "", rgb21, 1, 2, 3},
        {"descriptor 0x08 keeps", raw(1, 2, 24, bgr12, 0x08), "", rgb12, 1, 2, 3},
        {"repeat 0x80: one", rle(2, 1, 24, joined({{0x80}, bgr1, {0x80}, bgr2})), "", rgb12, 2, 1, 3},
        {"repeat 0xFF: 128", rle(128, 1, 24, joined({{0xFF}, bgr1})), "", repeated(rgb1, 128), 128, 1, 3},
        {"raw 0x7F: 128", rle(128, 1, 32, joined({{0x7F}, repeated(bgra, 128)})), "",
         repeated({3, 2, 1, 4}, 128), 128, 1, 4},
        {"run past the end cut", rle(1, 2, 24, joined({{0x81}, bgr1, {0x80}, bgr2})), "",
         joined({rgb1, rgb1}), 1, 2, 3},
        {"raw past the end cut", rle(1, 1, 24, joined({{0x01}, bgr1})), "", rgb1, 1, 1, 3},
        {"widest file", rle(256, 1, 24, joined({{0xFF}, bgr1, {0xFF}, bgr2})), "",
         joined({repeated(rgb1, 128), repeated(rgb2, 128)}), 256, 1, 3},
        {"image-ID field", tgaFile(TGA_RAW, 2, 1, 24, 0, bgr12, 1), idField, {}, 2, 1, 3},
        {"raw data short", raw(2, 1, 24, joined({bgr1, {4, 5}})), corrupted, {}, 0, 0, 3},
        {"run-length data short", rle(2, 1, 24, joined({{0x80}, bgr1})), corrupted, {}, 0, 0, 3},
        {"repeat pixel short", rle(2, 1, 32, {0x81, 1, 2, 3}), corrupted, {}, 0, 0, 4},
        {"header short", raw(1, 1, 24, {}).substr(0, 17), corrupted, {}, 0, 0, 0},
        {"257 wide", raw(257, 1, 24, {}), unsupported, {}, 0, 0, 0},
        {"16-bit", raw(1, 1, 16, {0, 0}), unsupported, {}, 0, 0, 0},
        {"0 high", raw(1, 0, 24, {}), unsupported, {}, 0, 0, 0},
    };
}

class TgaLoading : public RecordingTest, public ::testing::WithParamInterface<size_t> {};

TEST_P(TgaLoading, BitmapAndLogAsExpected)
{
    const TgaCase c = tgaCases()[GetParam()];
    SCOPED_TRACE(c.what);
    writeFile("t.tga", c.file);
    PVTEXTURE texture;
    const bool loads = c.log.empty() || c.log == idField;
    EXPECT_EQ(texture.load("t.tga"), loads);
    EXPECT_EQ(log.text(), c.log);
    const unsigned char* bitmap = texture.getBitmap();
    EXPECT_EQ(bitmap ? Bytes(bitmap, bitmap + c.bitmap.size()) : Bytes(), c.bitmap);
    EXPECT_EQ(bitmap != nullptr, !c.bitmap.empty());
    const unsigned int bytes = c.sizeX * c.sizeY * 4;
    EXPECT_EQ((std::vector<unsigned int> {texture.getSizeX(), texture.getSizeY(), texture.getFormat(),
                                          texture.getMemorySize(), unsigned(PVTEXTURE::getUsedMemory())}),
              (std::vector<unsigned int> {c.sizeX, c.sizeY, c.format, bytes, bytes}));
    EXPECT_STREQ(texture.getFilename(),
                 loads ? "t.tga" : ("[texture " + std::to_string(texture.getId()) + "]").c_str());
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
    EXPECT_EQ(record([&] {
                  for (int i = 0; i < 2; i++)
                      texture[i] = PVTEXTURE::acquire("a.tga", &loadedNow[i]);
              }),
              Calls {});
    EXPECT_EQ(texture[1], texture[0]);
    EXPECT_TRUE(loadedNow[0] && !loadedNow[1]);
    EXPECT_EQ(texture[0]->getReferences(), 2);
    EXPECT_EQ(Bytes(texture[0]->getBitmap(), texture[0]->getBitmap() + 3), rgb1);
    EXPECT_EQ(PVTEXTURE::acquire("missing.tga"), nullptr);
    EXPECT_EQ(PVTEXTURE::acquire(nullptr), nullptr);
    EXPECT_EQ(PVTEXTURE::getNumberOfTextures(), 1u);
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
