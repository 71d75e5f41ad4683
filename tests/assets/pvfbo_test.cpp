// PVFBO bookkeeping: names, clean-up, and the viewport it sets where frame
// buffers are supported.
#include <gtest/gtest.h>

#include <string>

#include "assets/pvfbo.h"
#include "assets/pvtexture.h"
#include "support/glfixture.h"
#include "support/testaccess.h"

namespace {

using pvtest::Calls;
using FrameBuffers = pvtest::GlContextTest;

// The registry itself is the one the nodes use: only the names and the
// clean-up line are the frame buffer's own.
TEST_F(FrameBuffers, WithoutSupportNothingIsBoundOrDrawn)
{
    PVFBO& fbo = *new PVFBO();
    new PVFBO();
    EXPECT_FALSE(fbo.isOk());
    EXPECT_EQ(record([&fbo] {
                  EXPECT_FALSE(fbo.bindTexture(0, nullptr));
                  PVTEXTURE texture;
                  EXPECT_FALSE(fbo.bindTexture(0, &texture));
                  EXPECT_FALSE(fbo.bindRenderBuffer(0, 128, 64));
                  EXPECT_TRUE(fbo.render(nullptr));
                  PVFBO::unbind();
                  EXPECT_TRUE(fbo.blur(&fbo, nullptr, 2));
                  float luminance = 0.5f;
                  EXPECT_TRUE(fbo.computeLuminance(&luminance));
              }),
              Calls {});
    EXPECT_EQ(fbo.getTexture(), nullptr);
    EXPECT_EQ(fbo.getSizeX(), 0);
    EXPECT_EQ(fbo.getName(), "[fbo " + std::to_string(fbo.getId()) + "]");
    EXPECT_TRUE(PVFBO::cleanUp());
    EXPECT_FALSE(PVFBO::cleanUp());
    EXPECT_EQ(log.text(), "   [!] Invalid params @ PVFBO::bindTexture\n   2 fbo(s) released\n");
}

TEST_F(FrameBuffers, RenderSetsTheViewportOncePerBinding)
{
    PVTESTACCESS::setFBOSupport(true);
    PVFBO fbo;
    PVFBO other;
    EXPECT_TRUE(fbo.isOk());
    EXPECT_TRUE(fbo.bindRenderBuffer(0, 128, 64));
    EXPECT_TRUE(other.bindRenderBuffer(0, 32, 16));

    EXPECT_EQ(record([&] {
                  fbo.render(nullptr);
                  fbo.render(nullptr);
                  PVFBO::unbind();
                  fbo.render(nullptr);
                  other.render(nullptr);
                  fbo.render(nullptr);
              }),
              (Calls {"glViewport(0,0,128,64)", "glViewport(0,0,128,64)", "glViewport(0,0,32,16)",
                      "glViewport(0,0,128,64)"}));

    // A null texture is refused with the message even here.
    EXPECT_FALSE(fbo.bindTexture(0, nullptr));
    // A bound texture gives the frame buffer its size.
    PVTEXTURE texture;
    ASSERT_TRUE(texture.create(32, 8, 4));
    EXPECT_TRUE(fbo.bindTexture(0, &texture));
    EXPECT_EQ(fbo.getTexture(), &texture);
    EXPECT_EQ(fbo.getSizeX(), 32);
    EXPECT_EQ(fbo.getSizeY(), 8);
    EXPECT_EQ(log.text(), "   [!] Invalid params @ PVFBO::bindTexture\n");
    PVTESTACCESS::setFBOSupport(false);
}

}  // namespace
