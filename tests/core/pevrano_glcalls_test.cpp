// The GL calls of the frame functions, recorded in order: clearing, the 2D
// pass and its undoing, the wireframe switch, the buffer swap and the whole
// picking sequence, in portrait and in landscape.
#include <gtest/gtest.h>

#include <GLES/gl.h>

#include <string>
#include <vector>

#include "core/pevrano.h"
#include "core/pvopengl.h"
#include "core/pvsettings.h"
#include "scene/pvlight.h"
#include "support/glrecorder.h"
#include "support/scratch.h"

namespace {

using Calls = std::vector<std::string>;

// 16.16 fixed point of the 240 x 320 window's sides, and of 90 and 1.
const std::string W = "15728640";
const std::string H = "20971520";
const std::string ninety = "5898240";

class FrameCalls : public ::testing::Test {
protected:
    void start(bool landscape = false)
    {
        PVSETTINGS settings;
        settings.setLandscape(landscape);
        ASSERT_TRUE(PEVRANO::init(&settings)) << log.text();
    }
    void TearDown() override
    {
        recorder.stop();
        PEVRANO::wireframeOff();
        PEVRANO::free();
    }

    // Calls GL received while action ran.
    template <typename Action>
    Calls record(Action action)
    {
        recorder.start();
        action();
        recorder.stop();
        return recorder.calls();
    }

    pvtest::ScratchDir dir;
    pvtest::LogCapture log;
    pvtest::GlRecorder recorder;
};

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

const Calls twoDStateCalls = {"glDisable(GL_LIGHTING)",
                              "glDisable(GL_BLEND)",
                              "glDisable(GL_CULL_FACE)",
                              "glDisable(GL_DEPTH_TEST)",
                              "glLightModelx(GL_LIGHT_MODEL_TWO_SIDE,0)",
                              "glEnableClientState(GL_VERTEX_ARRAY)",
                              "glDisableClientState(GL_NORMAL_ARRAY)",
                              "glEnableClientState(GL_COLOR_ARRAY)",
                              "glEnableClientState(GL_TEXTURE_COORD_ARRAY)"};

Calls concat(Calls first, const Calls& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

}  // namespace

TEST_F(FrameCalls, ClearBuildsOneMaskAndSkipsAnEmptyOne)
{
    start();
    PEVRANO::bloomingOn();
    PEVRANO::DOFOn();
    const Calls calls = record([] {
        EXPECT_TRUE(PEVRANO::clear(true, true, true));
        EXPECT_TRUE(PEVRANO::clear(true, false, false));
        EXPECT_TRUE(PEVRANO::clear(false, true, false));
        EXPECT_TRUE(PEVRANO::clear(false, false, true));
        EXPECT_TRUE(PEVRANO::clear(false, false, false));
    });
    PEVRANO::bloomingOff();
    PEVRANO::DOFOff();
    // Bloom and depth of field are on, but without the shader capability
    // the frame stays on the screen: nothing but the clears.
    EXPECT_EQ(calls, (Calls{"glClear(GL_COLOR_BUFFER_BIT|GL_DEPTH_BUFFER_BIT|GL_STENCIL_BUFFER_BIT)",
                            "glClear(GL_COLOR_BUFFER_BIT)", "glClear(GL_DEPTH_BUFFER_BIT)",
                            "glClear(GL_STENCIL_BUFFER_BIT)"}));
}

TEST_F(FrameCalls, Begin2DSetsTheInterfaceStateAndAPixelProjection)
{
    start();
    setEveryTwoDSwitchTheOtherWay();
    const Calls calls = record([] { EXPECT_TRUE(PEVRANO::begin2D()); });
    const Calls projection = {"glMatrixMode(GL_PROJECTION)", "glPushMatrix()", "glLoadIdentity()",
                              "glOrthox(0," + W + "," + H + ",0,-65536,65536)", "glMatrixMode(GL_MODELVIEW)",
                              "glLoadIdentity()"};
    EXPECT_EQ(calls, concat(twoDStateCalls, projection)) << recorder.text();

    // end2D gives the 3D pass its projection, culling and depth test back.
    EXPECT_EQ(record([] { EXPECT_TRUE(PEVRANO::end2D()); }),
              (Calls{"glMatrixMode(GL_PROJECTION)", "glPopMatrix()", "glMatrixMode(GL_MODELVIEW)",
                     "glEnable(GL_CULL_FACE)", "glEnable(GL_DEPTH_TEST)"}));
}

TEST_F(FrameCalls, Begin2DTurnsTheProjectionInLandscape)
{
    start(true);
    setEveryTwoDSwitchTheOtherWay();
    const Calls calls = record([] { EXPECT_TRUE(PEVRANO::begin2D()); });
    const Calls projection = {"glMatrixMode(GL_PROJECTION)",
                              "glPushMatrix()",
                              "glLoadIdentity()",
                              "glRotatex(" + ninety + ",0,0,65536)",
                              "glOrthox(0," + H + "," + W + ",0,-65536,65536)",
                              "glMatrixMode(GL_MODELVIEW)",
                              "glLoadIdentity()"};
    EXPECT_EQ(calls, concat(twoDStateCalls, projection)) << recorder.text();
    EXPECT_TRUE(PEVRANO::end2D());
}

// Culling that was switched off stays off after the 2D pass.
TEST_F(FrameCalls, End2DLeavesCullingOffWhenTheSwitchIsOff)
{
    start();
    PVOPENGL::cullingOff();
    PEVRANO::begin2D();
    EXPECT_EQ(record([] { PEVRANO::end2D(); }),
              (Calls{"glMatrixMode(GL_PROJECTION)", "glPopMatrix()", "glMatrixMode(GL_MODELVIEW)",
                     "glEnable(GL_DEPTH_TEST)"}));
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
}

// Wireframe shows the back faces of the 3D pass; the 2D pass ends with
// culling back on because the switch itself was never turned off.
TEST_F(FrameCalls, WireframeDisablesCullingForThe3DPassOnly)
{
    start();
    // Depth of field has no shader capability here: no pre-pass either.
    PEVRANO::DOFOn();
    PEVRANO::begin3D(nullptr);
    EXPECT_EQ(record([] { EXPECT_TRUE(PEVRANO::end3D(false)); }), Calls{});
    PEVRANO::DOFOff();

    PEVRANO::wireframeOn();
    PEVRANO::begin3D(nullptr);
    EXPECT_EQ(record([] { EXPECT_TRUE(PEVRANO::end3D(false)); }), Calls{"glDisable(GL_CULL_FACE)"});
    PEVRANO::begin3D(nullptr);
    EXPECT_EQ(record([] { EXPECT_TRUE(PEVRANO::end3D(true)); }), Calls{"glDisable(GL_CULL_FACE)"});
    EXPECT_FALSE(glIsEnabled(GL_CULL_FACE));
    EXPECT_TRUE(PVOPENGL::isCulled());

    PEVRANO::begin2D();
    PEVRANO::end2D();
    EXPECT_TRUE(glIsEnabled(GL_CULL_FACE));
}

// The per-frame resets come before the camera loads its view.
TEST_F(FrameCalls, Begin3DResetsBlendingAndTwoSideBeforeTheCamera)
{
    start();
    PVOPENGL::blendingOn();
    PVOPENGL::twoSideOn();
    const Calls calls = record([] { EXPECT_TRUE(PEVRANO::begin3D(nullptr)); });
    ASSERT_GT(calls.size(), 2u);
    EXPECT_EQ(Calls(calls.begin(), calls.begin() + 2),
              (Calls{"glDisable(GL_BLEND)", "glLightModelx(GL_LIGHT_MODEL_TWO_SIDE,0)"}))
        << recorder.text();
    EXPECT_EQ(recorder.count("glDisable"), 1u);
    EXPECT_EQ(recorder.count("glLightModelx"), 1u);
}

TEST_F(FrameCalls, SwapFlushesAndFinishesBeforeSwapping)
{
    start();
    EXPECT_EQ(record([] { EXPECT_TRUE(PEVRANO::swap()); }), (Calls{"glFlush()", "glFinish()"}));
}

// Picking at window point (50, 100) of a 240 x 320 portrait window reads GL
// row 320 - 100 = 220; with nothing passed only the cleared pixel is read.
TEST_F(FrameCalls, SelectRunsItsWholeSequence)
{
    start();
    PVOPENGL::setBackgroundColor(0.5f, 0.25f, 1.0f, 1.0f);
    PEVRANO::clear(true, true, false);
    PEVRANO::begin3D(nullptr);
    PEVRANO::end3D(false);
    unsigned int code = 1;
    const Calls calls = record([&code] { code = PEVRANO::select(50, 100); });
    EXPECT_EQ(code, 0u);
    const Calls expected = {"glReadPixels(50,220,1,1,GL_RGBA,GL_UNSIGNED_BYTE)",
                            "glMatrixMode(GL_PROJECTION)",
                            "glPushMatrix()",
                            "glMatrixMode(GL_MODELVIEW)",
                            "glPushMatrix()",
                            "glClearColorx(0,0,0,0)",
                            "glScissor(50,220,1,1)",
                            "glEnable(GL_SCISSOR_TEST)",
                            "glClear(GL_COLOR_BUFFER_BIT|GL_DEPTH_BUFFER_BIT)",
                            "glDepthFunc(GL_LEQUAL)",
                            "glClearColorx(32768,16384,65536,65536)",
                            "glReadPixels(50,220,1,1,GL_RGBA,GL_UNSIGNED_BYTE)",
                            "glDisable(GL_DEPTH_TEST)",
                            "glMatrixMode(GL_PROJECTION)",
                            "glLoadIdentity()",
                            "glViewport(0,0,240,320)",
                            "glOrthox(0," + W + "," + H + ",0,-65536,65536)",
                            "glMatrixMode(GL_MODELVIEW)",
                            "glLoadIdentity()",
                            "glMatrixMode(GL_PROJECTION)",
                            "glPopMatrix()",
                            "glViewport(0,0,240,320)",
                            "glMatrixMode(GL_MODELVIEW)",
                            "glPopMatrix()",
                            "glDisable(GL_SCISSOR_TEST)",
                            "glEnable(GL_DEPTH_TEST)",
                            "glDepthFunc(GL_LESS)"};
    EXPECT_EQ(calls, expected) << recorder.text();
    EXPECT_EQ(PVOPENGL::getProfile(), PV_OPENGL_PROFILE_NORMAL);
    EXPECT_FALSE(glIsEnabled(GL_SCISSOR_TEST));
}

// In landscape the point's axes are exchanged: x' = 320 - 100 = 220, y' = 50,
// GL row 320 - 50 = 270; the restored projection is the portrait one.
TEST_F(FrameCalls, SelectInLandscapeReadsTheExchangedPoint)
{
    start(true);
    const Calls calls = record([] { PEVRANO::select(50, 100); });
    EXPECT_EQ(recorder.filter({"glReadPixels", "glScissor", "glOrthox", "glViewport"}),
              (Calls{"glReadPixels(220,270,1,1,GL_RGBA,GL_UNSIGNED_BYTE)", "glScissor(220,270,1,1)",
                     "glReadPixels(220,270,1,1,GL_RGBA,GL_UNSIGNED_BYTE)", "glViewport(0,0,240,320)",
                     "glOrthox(0," + W + "," + H + ",0,-65536,65536)", "glViewport(0,0,240,320)"}))
        << recorder.text();
    EXPECT_EQ(calls.size(), 27u);
}
