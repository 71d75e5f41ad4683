// The frame functions on the real renderer, in portrait and in landscape: the
// GL calls of clearing, the 2D pass, the wireframe switch, the buffer swap and
// picking, what they leave in the window, the frame stamp and the timer.
#include <chrono>
#include <thread>
#include <tuple>

#include "core/pvopengl.h"
#include "enginefixture.h"
#include "scene/pvlight.h"
#include "support/pixels.h"

using namespace pvtest;

namespace {

using Frame = EngineTest;

const Rgb red = {1, 0, 0};
const Rgb blue = {0, 0, 1};

// Every pixel of the 240 x 320 window has the colour, but those of the GL
// rectangle [left, right) x [bottom, top) that have the other one.
void expectWindow(const Rgb& colour, std::array<int, 4> leftBottomRightTop = {}, const Rgb& other = {})
{
    const auto [left, bottom, right, top] = leftBottomRightTop;
    std::vector<GLubyte> p(240 * 320 * 4);
    glReadPixels(0, 0, 240, 320, GL_RGBA, GL_UNSIGNED_BYTE, p.data());
    int wrong = 0;
    for (int i = 0; i < 240 * 320; ++i) {
        const int x = i % 240, y = i / 240;
        const Rgb want = (x >= left && x < right && y >= bottom && y < top) ? other : colour;
        wrong += !colourNear(want, {p[4 * i] / 255.0, p[4 * i + 1] / 255.0, p[4 * i + 2] / 255.0});
    }
    EXPECT_EQ(wrong, 0);
}

// Draws the red rectangle (10, 20) - (30, 40) in the current (2D) projection.
void drawRectangle()
{
    const GLfixed v[] = {10 << 16, 20 << 16, 30 << 16, 20 << 16, 10 << 16, 40 << 16, 30 << 16, 40 << 16};
    PVOPENGL::colorArrayOff();
    PVOPENGL::textureArrayOff();
    PV_glColor4f(1.0f, 0.0f, 0.0f, 1.0f);
    glVertexPointer(2, GL_FIXED, 0, v);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
}

// Every cached switch that begin2D turns is first put in the other state, so
// that each of them shows up in the recording.
void setEveryTwoDSwitchTheOtherWay()
{
    PVLIGHT::lightingOn();
    PVOPENGL::blendingOn();
    PVOPENGL::twoSideOn();
    PVOPENGL::vertexArrayOff();
    PVOPENGL::normalArrayOn();
    PVOPENGL::colorArrayOff();
    PVOPENGL::textureArrayOff();
}

}  // namespace

// Bloom and depth of field are on, but without the shader capability the
// frame stays on the screen: nothing but one glClear per non-empty mask.
TEST_F(Frame, ClearBuildsOneMaskAndSkipsAnEmptyOne)
{
    start();
    PEVRANO::bloomingOn();
    PEVRANO::DOFOn();
    PVOPENGL::setBackgroundColor(0.25f, 0.5f, 0.75f, 1.0f);
    EXPECT_EQ(record([] { EXPECT_TRUE(PEVRANO::clear(true, true, true)); }),
              Calls {"glClear(GL_COLOR_BUFFER_BIT|GL_DEPTH_BUFFER_BIT|GL_STENCIL_BUFFER_BIT)"});
    expectWindow({0.25, 0.5, 0.75});

    PVOPENGL::setBackgroundColor(1.0f, 1.0f, 1.0f, 1.0f);
    EXPECT_EQ(record([] {
                  EXPECT_TRUE(PEVRANO::clear(false, false, false));
                  EXPECT_TRUE(PEVRANO::clear(false, true, false));
                  EXPECT_TRUE(PEVRANO::clear(false, false, true));
              }),
              (Calls {"glClear(GL_DEPTH_BUFFER_BIT)", "glClear(GL_STENCIL_BUFFER_BIT)"}));
    expectWindow({0.25, 0.5, 0.75});
    EXPECT_EQ(record([] { EXPECT_TRUE(PEVRANO::clear(true, false, false)); }),
              Calls {"glClear(GL_COLOR_BUFFER_BIT)"});
    expectWindow({1, 1, 1});
}

// Picking at window point (50, 100) clears only the pixel under it (to colour
// code 0), reads it back and restores the rest, the background colour
// included. Portrait reads GL row 320 - 100 = 220; landscape exchanges the
// axes: x' = 320 - 100 = 220, y' = 50, GL row 320 - 50 = 270.
// begin2D then sets the interface state and a projection of one unit per
// pixel from the top left; in landscape the interface turns by 90 degrees, so
// that interface point (u, v) lands on window column v, GL row u. end2D gives
// the 3D pass its projection, culling and depth test back.
TEST_F(Frame, SelectAndThe2DPassMapTheWindowInPortraitAndLandscape)
{
    // The picked pixel, and the red rectangle (10, 20) - (30, 40) in GL's
    // window rectangles: portrait GL rows are counted up (319 - y), landscape
    // columns are v and rows u.
    const std::tuple<std::string, PVSETTINGS, std::array<int, 4>, std::array<int, 4>> cases[] = {
        {"portrait", PVSETTINGS(), {50, 220, 51, 221}, {10, 280, 30, 300}},
        {"landscape", landscapeSettings(), {220, 270, 221, 271}, {20, 10, 40, 30}}};
    for (const auto& [name, settings, picked, rectangle] : cases) {
        SCOPED_TRACE(name);
        start(settings);
        PVOPENGL::setBackgroundColor(0.0f, 0.0f, 1.0f, 1.0f);
        PEVRANO::clear(true, true, false);
        PEVRANO::begin3D(nullptr);
        PEVRANO::end3D(false);
        EXPECT_EQ(PEVRANO::select(50, 100), 0u);
        EXPECT_EQ(PVOPENGL::getProfile(), PV_OPENGL_PROFILE_NORMAL);
        EXPECT_FALSE(glIsEnabled(GL_SCISSOR_TEST));
        EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST));
        GLint depthFunc = 0;
        glGetIntegerv(GL_DEPTH_FUNC, &depthFunc);
        EXPECT_EQ(depthFunc, GL_LESS);
        expectWindow(blue, picked);

        PEVRANO::clear(true, true, false);
        setEveryTwoDSwitchTheOtherWay();
        const Matrix perspective = shadowMatrix(PV_GL_PROJECTION_STACK);
        // Every switch begin2D turns, then the projection of one unit per pixel.
        EXPECT_EQ(record([] { EXPECT_TRUE(PEVRANO::begin2D()); }),
                  readCalls(PEVRANO_TEST_DATA "/expected/begin2d-" + name + ".calls"));
        // The shadow projection holds what GL holds (true of an orthographic one).
        expectMatrixNear(shadowMatrix(PV_GL_PROJECTION_STACK),
                         Mat4::fromGl(glMatrix(GL_PROJECTION_MATRIX).data()), 1e-5, "2D");
        drawRectangle();
        EXPECT_EQ(record([] { EXPECT_TRUE(PEVRANO::end2D()); }),
                  (Calls {"glMatrixMode(GL_PROJECTION)", "glPopMatrix()", "glMatrixMode(GL_MODELVIEW)",
                          "glEnable(GL_CULL_FACE)", "glEnable(GL_DEPTH_TEST)"}));
        EXPECT_EQ(shadowMatrix(PV_GL_PROJECTION_STACK), perspective);
        expectWindow(blue, rectangle, red);
        PEVRANO::free();
    }
}

// The per-frame resets (the mesh class's client arrays, blending, two-sided
// lighting) come before the camera loads its view. Wireframe shows the back
// faces of the 3D pass; the 2D pass ends with culling back on because the
// switch itself was never turned off, and leaves it off once the switch is.
TEST_F(Frame, Begin3DResetsAndWireframeDisablesCullingForThe3DPassOnly)
{
    start();
    // Depth of field has no shader capability here: end3D makes no pre-pass.
    PEVRANO::DOFOn();
    PVOPENGL::blendingOn();
    PVOPENGL::twoSideOn();
    Calls calls = record([] { EXPECT_TRUE(PEVRANO::begin3D(nullptr)); });
    calls.resize(4);
    EXPECT_EQ(calls, (Calls {"glDisableClientState(GL_TEXTURE_COORD_ARRAY)",
                             "glDisableClientState(GL_TEXTURE_COORD_ARRAY)", "glDisable(GL_BLEND)",
                             "glLightModelx(GL_LIGHT_MODEL_TWO_SIDE,0)"}))
        << recorder.text();
    EXPECT_EQ(recorder.count("glDisable"), 1u);
    EXPECT_EQ(recorder.count("glLightModelx"), 1u);
    EXPECT_EQ(record([] { EXPECT_TRUE(PEVRANO::end3D(false)); }), Calls {});

    PEVRANO::wireframeOn();
    for (bool swapNow : {false, true}) {
        PEVRANO::begin3D(nullptr);
        EXPECT_EQ(record([swapNow] { EXPECT_TRUE(PEVRANO::end3D(swapNow)); }),
                  Calls {"glDisable(GL_CULL_FACE)"});
    }
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    EXPECT_TRUE(PVOPENGL::isCulled());

    PEVRANO::begin2D();
    PEVRANO::end2D();
    EXPECT_TRUE(glIsEnabled(GL_CULL_FACE));

    // Culling that was switched off stays off after the 2D pass.
    PVOPENGL::cullingOff();
    PEVRANO::begin2D();
    PEVRANO::end2D();
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
}

// The frame stamp starts at 65536, begin3D adds one, begin2D none; without an engine
// timer the rates read -1. The first of updateTimer, begin3D and begin2D
// measures the frame; the others in the same frame leave the measure alone
// until swap ends the frame.
TEST_F(Frame, Begin3DStampsTheFrameAndTheTimerIsAdjournedOncePerFrame)
{
    using std::chrono::milliseconds;
    EXPECT_EQ(PEVRANO::getFPS(), -1.0f);
    EXPECT_EQ(PEVRANO::getFPSfactor(), -1.0f);
    start();
    EXPECT_EQ(PEVRANO::getTimeStamp(), 65536);
    std::this_thread::sleep_for(milliseconds(60));
    ASSERT_TRUE(PEVRANO::begin3D(nullptr));
    EXPECT_EQ(PEVRANO::getTimeStamp(), 65537);
    const float first = PEVRANO::getFPSfactor();
    EXPECT_GE(first, 0.06f);
    EXPECT_LT(first, 10.0f);  // seconds, not a smaller unit
    EXPECT_NEAR(PEVRANO::getFPS(), 1.0f / first, 0.01f / first);

    std::this_thread::sleep_for(milliseconds(30));
    EXPECT_TRUE(PEVRANO::end3D(false));
    EXPECT_TRUE(PEVRANO::begin2D());
    PEVRANO::updateTimer();
    EXPECT_TRUE(PEVRANO::end2D());
    EXPECT_EQ(PEVRANO::getFPSfactor(), first);
    EXPECT_EQ(PEVRANO::getTimeStamp(), 65537);

    ASSERT_TRUE(PEVRANO::swap());
    std::this_thread::sleep_for(milliseconds(20));
    PEVRANO::updateTimer();
    const float second = PEVRANO::getFPSfactor();
    // From the first adjourn: 30 ms + 20 ms at least.
    EXPECT_GE(second, 0.05f);
    EXPECT_NE(second, first);
    ASSERT_TRUE(PEVRANO::begin3D(nullptr));
    EXPECT_EQ(PEVRANO::getFPSfactor(), second);
}
