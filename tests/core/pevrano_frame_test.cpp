// The frame on the real renderer: clearing, the frame stamp and timer, the
// 2D projection, and colour picking read back at 16 and 24 bits.
#include <gtest/gtest.h>

#include <GLES/gl.h>

#include <chrono>
#include <cstdlib>
#include <thread>
#include <vector>

#include "core/pevrano.h"
#include "core/pvgl.h"
#include "core/pvopengl.h"
#include "core/pvsettings.h"
#include "displaylog.h"
#include "support/scratch.h"

// Reaches the pixel-code read-back of the picking code.
struct PEVRANOTESTACCESS {
    static unsigned int readPixelCode(int x, int y) { return PEVRANO::readPixelCode(x, y); }
};

namespace {

struct Rgba {
    int r, g, b, a;
};

Rgba pixelAt(int x, int y)
{
    GLubyte p[4] = {0, 0, 0, 0};
    glReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, p);
    return {p[0], p[1], p[2], p[3]};
}

// A 5-6-5 surface keeps 5 or 6 bits per channel: a few levels of tolerance.
void expectColour(const Rgba& got, int r, int g, int b, int tolerance = 8)
{
    EXPECT_NEAR(got.r, r, tolerance);
    EXPECT_NEAR(got.g, g, tolerance);
    EXPECT_NEAR(got.b, b, tolerance);
}

// Starts the engine; off-screen the surface is 5-6-5 whatever depth is asked.
class Frame : public ::testing::Test {
protected:
    void start(int colorDepth = 16, bool landscape = false)
    {
        PVSETTINGS settings;
        settings.setColorDepth(colorDepth);
        settings.setLandscape(landscape);
        ASSERT_TRUE(PEVRANO::init(&settings)) << log.text();
        if (!pvtest::onX11()) {
            ASSERT_EQ(PVSETTINGS::getSDLColorDepth(), 16);
        }
    }
    void TearDown() override { PEVRANO::free(); }

    pvtest::ScratchDir dir;
    pvtest::LogCapture log;
};

// Draws an axis-aligned rectangle in the current (2D) projection.
void drawRectangle(float left, float top, float right, float bottom)
{
    const GLfixed v[] = {PV_floatToFixed(left),  PV_floatToFixed(top),    PV_floatToFixed(right),
                         PV_floatToFixed(top),   PV_floatToFixed(left),   PV_floatToFixed(bottom),
                         PV_floatToFixed(right), PV_floatToFixed(bottom)};
    PVOPENGL::colorArrayOff();
    PVOPENGL::textureArrayOff();
    PV_glColor4f(1.0f, 0.0f, 0.0f, 1.0f);
    glVertexPointer(2, GL_FIXED, 0, v);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
}

}  // namespace

TEST_F(Frame, ClearFillsTheWindowWithTheBackgroundColour)
{
    start();
    PVOPENGL::setBackgroundColor(0.25f, 0.5f, 0.75f, 1.0f);
    ASSERT_TRUE(PEVRANO::clear(true, true, false));
    std::vector<GLubyte> pixels(240 * 320 * 4);
    glReadPixels(0, 0, 240, 320, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    int wrong = 0;
    for (size_t i = 0; i < pixels.size(); i += 4) {
        if (std::abs(pixels[i] - 64) > 8 || std::abs(pixels[i + 1] - 128) > 8 || std::abs(pixels[i + 2] - 191) > 8)
            ++wrong;
    }
    EXPECT_EQ(wrong, 0);

    // Nothing to clear: the colour stays.
    PVOPENGL::setBackgroundColor(1.0f, 1.0f, 1.0f, 1.0f);
    ASSERT_TRUE(PEVRANO::clear(false, false, false));
    expectColour(pixelAt(120, 160), 64, 128, 191);
    ASSERT_TRUE(PEVRANO::clear(false, true, true));
    expectColour(pixelAt(0, 0), 64, 128, 191);
    ASSERT_TRUE(PEVRANO::clear(true, false, false));
    expectColour(pixelAt(239, 319), 255, 255, 255);
    EXPECT_TRUE(PEVRANO::swap());
}

TEST_F(Frame, TimeStampStartsAt65536AndBegin3DAddsOne)
{
    EXPECT_EQ(PEVRANO::getTimeStamp(), 65536);
    start();
    EXPECT_EQ(PEVRANO::getTimeStamp(), 65536);
    ASSERT_TRUE(PEVRANO::begin3D(nullptr));
    EXPECT_EQ(PEVRANO::getTimeStamp(), 65537);
    EXPECT_TRUE(PEVRANO::end3D(true));
    EXPECT_TRUE(PEVRANO::begin2D());
    EXPECT_TRUE(PEVRANO::end2D());
    EXPECT_EQ(PEVRANO::getTimeStamp(), 65537);
    EXPECT_TRUE(PEVRANO::swap());
    ASSERT_TRUE(PEVRANO::begin3D(nullptr));
    EXPECT_TRUE(PEVRANO::end3D(false));
    EXPECT_EQ(PEVRANO::getTimeStamp(), 65538);
}

// The first of updateTimer, begin3D and begin2D measures the frame; the others
// in the same frame leave the measure alone until swap ends the frame.
TEST_F(Frame, TimerIsAdjournedOncePerFrame)
{
    using std::chrono::milliseconds;
    start();
    std::this_thread::sleep_for(milliseconds(60));
    ASSERT_TRUE(PEVRANO::begin3D(nullptr));
    const float first = PEVRANO::getFPSfactor();
    EXPECT_GE(first, 0.06f);
    EXPECT_NEAR(PEVRANO::getFPS(), 1.0f / first, 0.01f / first);

    std::this_thread::sleep_for(milliseconds(30));
    PEVRANO::end3D(false);
    PEVRANO::begin2D();
    PEVRANO::updateTimer();
    PEVRANO::end2D();
    EXPECT_EQ(PEVRANO::getFPSfactor(), first);

    ASSERT_TRUE(PEVRANO::swap());
    std::this_thread::sleep_for(milliseconds(20));
    PEVRANO::updateTimer();
    const float second = PEVRANO::getFPSfactor();
    // From the first adjourn: 30 ms + 20 ms at least.
    EXPECT_GE(second, 0.05f);
    EXPECT_NE(second, first);
    PEVRANO::begin3D(nullptr);
    EXPECT_EQ(PEVRANO::getFPSfactor(), second);
}

TEST(FrameTimer, ReadsMinusOneWithoutAnEngineTimer)
{
    pvtest::ScratchDir dir;
    pvtest::LogCapture log;
    EXPECT_EQ(PEVRANO::getFPS(), -1.0f);
    EXPECT_EQ(PEVRANO::getFPSfactor(), -1.0f);
}

// Screen y grows downwards and one unit is one pixel.
TEST_F(Frame, Begin2DMapsOneUnitToOnePixelFromTheTopLeft)
{
    start();
    PVOPENGL::setBackgroundColor(0.0f, 0.0f, 1.0f, 1.0f);
    PEVRANO::clear(true, true, false);
    ASSERT_TRUE(PEVRANO::begin2D());
    float projection[16];
    PV_glGetFloatv(PV_GL_PROJECTION_STACK, projection);
    const float ortho[16] = {2.0f / 240, 0, 0, 0, 0, -2.0f / 320, 0, 0, 0, 0, -1, 0, -1, 1, 0, 1};
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(projection[i], ortho[i], 1e-6f) << i;
    drawRectangle(10, 20, 30, 40);
    ASSERT_TRUE(PEVRANO::end2D());

    // Window rows counted from the top: GL row = 320 - 1 - y.
    expectColour(pixelAt(20, 319 - 30), 255, 0, 0);
    expectColour(pixelAt(11, 319 - 21), 255, 0, 0);
    expectColour(pixelAt(8, 319 - 30), 0, 0, 255);
    expectColour(pixelAt(20, 319 - 42), 0, 0, 255);
    expectColour(pixelAt(20, 30), 0, 0, 255);

    // end2D puts the perspective of the viewport back.
    float restored[16];
    PV_glGetFloatv(PV_GL_PROJECTION_STACK, restored);
    EXPECT_NE(restored[0], ortho[0]);
}

// In landscape the interface turns by 90 degrees: interface point (u, v)
// lands on window column v, GL row u.
TEST_F(Frame, Begin2DTurnsTheInterfaceInLandscape)
{
    start(16, true);
    PVOPENGL::setBackgroundColor(0.0f, 0.0f, 1.0f, 1.0f);
    PEVRANO::clear(true, true, false);
    ASSERT_TRUE(PEVRANO::begin2D());
    drawRectangle(10, 20, 30, 40);
    ASSERT_TRUE(PEVRANO::end2D());
    expectColour(pixelAt(30, 20), 255, 0, 0);
    expectColour(pixelAt(21, 11), 255, 0, 0);
    expectColour(pixelAt(20, 5), 0, 0, 255);
    expectColour(pixelAt(45, 20), 0, 0, 255);
}

// Picking clears only the pixel under the point (to colour code 0) and reads
// it back; the rest of the frame is untouched.
TEST_F(Frame, SelectOnEmptyBackgroundReturnsZeroAndTouchesOnePixel)
{
    start();
    PVOPENGL::setBackgroundColor(1.0f, 1.0f, 0.0f, 1.0f);
    PEVRANO::clear(true, true, false);
    PEVRANO::begin3D(nullptr);
    PEVRANO::end3D(false);
    EXPECT_EQ(PEVRANO::select(50, 100), 0u);
    expectColour(pixelAt(50, 320 - 100), 0, 0, 0);
    expectColour(pixelAt(51, 320 - 100), 255, 255, 0);
    expectColour(pixelAt(50, 320 - 101), 255, 255, 0);
    expectColour(pixelAt(50, 100), 255, 255, 0);
    // The background colour is restored for the next frame.
    PEVRANO::clear(true, false, false);
    expectColour(pixelAt(50, 320 - 100), 255, 255, 0);
}

TEST_F(Frame, SelectInLandscapeExchangesTheAxes)
{
    start(16, true);
    PVOPENGL::setBackgroundColor(1.0f, 1.0f, 0.0f, 1.0f);
    PEVRANO::clear(true, true, false);
    EXPECT_EQ(PEVRANO::select(50, 100), 0u);
    // x' = 320 - 100 = 220, y' = 50: GL row 320 - 50.
    expectColour(pixelAt(220, 270), 0, 0, 0);
    expectColour(pixelAt(50, 220), 255, 255, 0);
}

// The code is the 5-6-5 packing of the pixel at 16 bits (off-screen), and
// R | G << 8 | B << 16 without the alpha byte at 24 bits (an X server's
// surface). Colours on exact 5-6-5 levels: red 31/31, green 21/63, blue 10/31,
// read back as 255, 85 (21 << 2 | 21 >> 4) and 82 (10 << 3 | 10 >> 2).
TEST_F(Frame, PixelCodeFollowsTheColourDepthInForce)
{
    start();
    PVOPENGL::setBackgroundColor(1.0f, 21.0f / 63.0f, 10.0f / 31.0f, 1.0f);
    PEVRANO::clear(true, false, false);
    const unsigned int code = PEVRANOTESTACCESS::readPixelCode(5, 5);
    switch (PVSETTINGS::getSDLColorDepth()) {
    case 16:
        EXPECT_EQ(code, (31u << 11) | (21u << 5) | 10u);
        break;
    case 24:
        EXPECT_EQ(code, 0xFFu | (85u << 8) | (82u << 16));
        break;
    default:
        ADD_FAILURE() << "unexpected colour depth " << PVSETTINGS::getSDLColorDepth();
    }
}

// 24 bits: an X server's first configuration (the pbuffer's is 5-6-5).
TEST_F(Frame, PixelCodeAt24BitsHasNoAlphaByte)
{
    if (!pvtest::onX11())
        GTEST_SKIP() << "the off-screen surface is 5-6-5";
    start(24);
    ASSERT_EQ(PVSETTINGS::getSDLColorDepth(), 24);
    PVOPENGL::setBackgroundColor(0x12 / 255.0f, 0x34 / 255.0f, 0x56 / 255.0f, 1.0f);
    PEVRANO::clear(true, false, false);
    EXPECT_EQ(PEVRANOTESTACCESS::readPixelCode(100, 200), 0x563412u);
    EXPECT_EQ(PEVRANO::select(100, 120), 0u);
}
