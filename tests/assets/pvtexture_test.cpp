// Textures on a GL context: the upload's calls and video account, the
// garbage collector's report and evictions, the per-unit bind cache and the
// texturing switches.
#include <gtest/gtest.h>

#include <string>

#include "assets/pvtexture.h"
#include "core/pevrano.h"
#include "support/glfixture.h"
#include "support/testaccess.h"
#include "tgafile.h"

using namespace pvtest;

namespace {

class Textures : public GlContextTest {
protected:
    void SetUp() override
    {
        GlContextTest::SetUp();
        PVTESTACCESS::setVideoMemory(16 * 1024 * 1024);
    }
    void TearDown() override
    {
        PVTEXTURE::cleanUp();
        PVTEXTURE::texturingOff(16);
    }

    // A texture loaded from a w x h file of these pixels (32-bit, one colour by default), named name.
    static PVTEXTURE* loaded(const char* name, unsigned w, unsigned h, Bytes pixels = {},
                             unsigned char depth = 32)
    {
        PVTEXTURE* texture = new PVTEXTURE();
        const std::string file =
            tgaFile(TGA_RAW, w, h, depth, 0, pixels.empty() ? repeated({1, 2, 3, 4}, w * h) : pixels);
        EXPECT_TRUE(texture->loadTGA(reinterpret_cast<const unsigned char*>(file.data()), file.size(), name));
        return texture;
    }
    // Resident without mipmaps: charged its memory size once.
    static PVTEXTURE* resident(const char* name, long stamp)
    {
        PVTEXTURE* texture = loaded(name, 4, 4);
        texture->setFilter(false, false, false);
        texture->update();
        PVTESTACCESS::setTimeStamp(stamp);
        texture->render(nullptr);
        return texture;
    }
    static std::string bound(PVTEXTURE* texture)
    {
        return "glBindTexture(GL_TEXTURE_2D," + std::to_string(texture->getGLId()) + ")";
    }
};

TEST_F(Textures, UploadBuildsMipmapsAndChargesTwiceTheDoubledSize)
{
    PVTEXTURE& texture = *loaded("t", 2, 2, {10, 20, 30, 40, 20, 30, 40, 50, 30, 40, 50, 60, 41, 51, 61, 71});
    const Calls calls = record([&] { EXPECT_TRUE(texture.update()); });
    // The texture's name is the context's first.
    EXPECT_EQ(calls, readCalls(PEVRANO_TEST_DATA "/expected/texture-upload.calls"));
    // Level 1 overwrites the start of the bitmap: (a+b+c+d) >> 2 per channel.
    EXPECT_EQ(Bytes(texture.getBitmap(), texture.getBitmap() + 4), (Bytes {45, 35, 25, 55}));
    EXPECT_EQ(PEVRANO::getUsedVideoMemory(), 64u);

    texture.update();  // pops 32 once, doubles to 64, charges 128
    EXPECT_EQ(PEVRANO::getUsedVideoMemory(), 160u);
    EXPECT_TRUE(texture.unload(false));
    EXPECT_EQ(PEVRANO::getUsedVideoMemory(), 32u);
    EXPECT_FALSE(texture.unload(false));
    EXPECT_EQ(log.text(), "   t unloaded\n");
    PEVRANO::popVideoMemory(32);
    PVTEXTURE empty;  // no pixels, no levels (a 0-wide chain would read outside)
    EXPECT_TRUE(empty.create(0, 5, 3));
}

TEST_F(Textures, MipmapRowsAreTwiceTheLevelWidthLong)
{
    // 4x2 grey: level 1 is (0, 150); level 2 reads its 2-pixel rows over
    // level 1 and the old level-0 pixels 2 and 3: (0 + 150 + 200 + 200) >> 2.
    const Bytes row0 = joined({repeated({0, 0, 0}, 2), repeated({200, 200, 200}, 2)});
    const Bytes row1 = joined({repeated({0, 0, 0}, 2), repeated({100, 100, 100}, 2)});
    PVTEXTURE* texture = loaded("t", 4, 2, joined({row0, row1}), 24);
    ASSERT_TRUE(texture->update());
    EXPECT_EQ(Bytes(texture->getBitmap(), texture->getBitmap() + 3), (Bytes {137, 137, 137}));
    // A one-pixel-wide chain stays inside its bitmap.
    PVTEXTURE* column = loaded("c", 1, 8, repeated({9, 9, 9}, 8), 24);
    ASSERT_TRUE(column->update());
    EXPECT_EQ(Bytes(column->getBitmap(), column->getBitmap() + 3), (Bytes {9, 9, 9}));
}

TEST_F(Textures, CollectorEvictsNewestFirstAndDeletesTheUnreferenced)
{
    EXPECT_FALSE(PVTEXTURE::garbageCollect(100));  // no texture, no report
    resident("a.tga", 5);
    resident("b.tga", 3)->incReferences();
    resident("c.tga", 7);
    EXPECT_TRUE(PVTEXTURE::garbageCollect(100));
    EXPECT_EQ(log.text(), readFile(PEVRANO_TEST_DATA "/expected/collector.log"));
    EXPECT_EQ(PVTEXTURE::getNumberOfTextures(), 1u);
    EXPECT_STREQ(PVTEXTURE::getFirst()->getFilename(), "b.tga");
    EXPECT_TRUE(PVTEXTURE::getFirst()->isLoaded());
}

// An evicted texture is read again from its file at its next render and
// keeps its name for the collections after.
TEST_F(Textures, EvictedTextureIsReadAgainUnderItsName)
{
    writeFile("brick.tga", tgaFile(TGA_RAW, 1, 1, 32, 0, {1, 2, 3, 4}));
    PVTEXTURE* texture = new PVTEXTURE();
    texture->incReferences();
    ASSERT_TRUE(texture->load("brick.tga"));
    texture->setFilter(false, false, false);
    PVTESTACCESS::setTimeStamp(5);
    for (int collection = 0; collection < 2; collection++) {
        PVTEXTURE::texturingOff(16);
        ASSERT_TRUE(texture->render(nullptr));
        ASSERT_TRUE(texture->isLoaded());
        EXPECT_EQ(Bytes(texture->getBitmap(), texture->getBitmap() + 4), (Bytes {3, 2, 1, 4}));
        EXPECT_TRUE(PVTEXTURE::garbageCollect(0));
        EXPECT_FALSE(texture->isLoaded());  // the report is the collector case's business
    }
}

TEST_F(Textures, ShortBudgetRunsTheCollectorBeforeUpload)
{
    PVTESTACCESS::setVideoMemory(100);
    resident("old.tga", 2);
    PVTEXTURE* fresh = loaded("new.tga", 4, 4);
    fresh->setFilter(false, false, false);
    PVTESTACCESS::setTimeStamp(9);
    EXPECT_TRUE(fresh->update());
    // The report's layout is the collector case's business.
    EXPECT_EQ(log.text().substr(0, 26), "   Garbage collector at 9\n");
    EXPECT_NE(log.text().find("   Memory max. to keep: 36\n"), std::string::npos);
    // The texture being uploaded survives with its pixels.
    EXPECT_EQ(PVTEXTURE::getFirst(), fresh);
    EXPECT_NE(fresh->getBitmap(), nullptr);
    EXPECT_EQ(PEVRANO::getUsedVideoMemory(), 64u);
}

TEST_F(Textures, BindCacheAndTexturingSwitches)
{
    PVTEXTURE* first = resident("a", 1);
    PVTEXTURE* second = resident("b", 1);
    PVTEXTURE::texturingOff(16);
    unsigned int unit3 = 3, unit16 = 16;
    const Calls calls = record([&] {
        first->render(nullptr);
        first->render(nullptr);  // cached: nothing
        second->render(&unit3);
        second->render(&unit3);
        EXPECT_FALSE(second->render(&unit16));
        PVTEXTURE::texturingOff(3);  // the cache entry stays
        second->render(&unit3);
        PVTEXTURE::texturingOff(16);
        first->render(nullptr);
    });
    EXPECT_EQ(calls, (Calls {"glEnable(GL_TEXTURE_2D)", bound(first), "glEnable(GL_TEXTURE_2D)",
                             bound(second), "glDisable(GL_TEXTURE_2D)", "glDisable(GL_TEXTURE_2D)",
                             "glEnable(GL_TEXTURE_2D)", bound(first)}));
    // Unloading keeps the cache entry: the texture stays non-resident until
    // the cache is emptied.
    const Calls deleted = {"glDeleteTextures(1,{" + std::to_string(first->getGLId()) + "})"};
    EXPECT_EQ(record([&] { first->unload(false), first->render(nullptr); }), deleted);
    EXPECT_EQ(log.text(), "   [!] Invalid params @ PVTEXTURE::render\n   a unloaded\n");
}

}  // namespace
