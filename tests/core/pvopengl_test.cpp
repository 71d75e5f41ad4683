// PVOPENGL: cached switches, start-up log and GL state, projection set-up,
// background colour on screen.
#include <gtest/gtest.h>

#include <GLES/gl.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "core/pevrano.h"
#include "core/pvgl.h"
#include "core/pvopengl.h"
#include "core/pvsettings.h"
#include "support/glcontext.h"
#include "support/glrecorder.h"
#include "support/scratch.h"
#include "support/testaccess.h"

namespace {

using Calls = std::vector<std::string>;

class OpenGlState : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(context.ok()); }

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
    pvtest::GlContext context;
    pvtest::GlRecorder recorder;
};

std::string glText(GLenum which)
{
    return reinterpret_cast<const char*>(glGetString(which));
}

TEST_F(OpenGlState, CapabilitySwitchesCallGlOnlyOnChange)
{
    Calls calls = record([] {
        PVOPENGL::blendingOn();
        PVOPENGL::blendingOn();
        PVOPENGL::cullingOn();
        PVOPENGL::cullingOn();
        PVOPENGL::scissorOn();
        PVOPENGL::scissorOn();
        PVOPENGL::twoSideOn();
        PVOPENGL::twoSideOn();
    });
    EXPECT_EQ(calls, (Calls{"glEnable(GL_BLEND)", "glEnable(GL_CULL_FACE)", "glEnable(GL_SCISSOR_TEST)",
                            "glLightModelx(GL_LIGHT_MODEL_TWO_SIDE,65536)"}));
    EXPECT_TRUE(PVOPENGL::isBlended());
    EXPECT_TRUE(PVOPENGL::isCulled());
    EXPECT_TRUE(PVOPENGL::isTwoSide());
    EXPECT_TRUE(glIsEnabled(GL_BLEND));
    EXPECT_TRUE(glIsEnabled(GL_SCISSOR_TEST));

    calls = record([] {
        PVOPENGL::blendingOff();
        PVOPENGL::blendingOff();
        PVOPENGL::cullingOff();
        PVOPENGL::cullingOff();
        PVOPENGL::scissorOff();
        PVOPENGL::scissorOff();
        PVOPENGL::twoSideOff();
        PVOPENGL::twoSideOff();
    });
    EXPECT_EQ(calls, (Calls{"glDisable(GL_BLEND)", "glDisable(GL_CULL_FACE)", "glDisable(GL_SCISSOR_TEST)",
                            "glLightModelx(GL_LIGHT_MODEL_TWO_SIDE,0)"}));
    EXPECT_FALSE(PVOPENGL::isBlended());
    EXPECT_FALSE(PVOPENGL::isCulled());
    EXPECT_FALSE(PVOPENGL::isTwoSide());
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
}

TEST_F(OpenGlState, SwitchesStartOffSoTurningOffCostsNothing)
{
    Calls calls = record([] {
        PVOPENGL::blendingOff();
        PVOPENGL::cullingOff();
        PVOPENGL::scissorOff();
        PVOPENGL::twoSideOff();
        PVOPENGL::vertexArrayOff();
        PVOPENGL::normalArrayOff();
        PVOPENGL::colorArrayOff();
        PVOPENGL::textureArrayOff();
    });
    EXPECT_TRUE(calls.empty()) << recorder.text();
}

TEST_F(OpenGlState, ClientArraySwitchesAreCached)
{
    Calls calls = record([] {
        for (int i = 0; i < 2; i++) {
            PVOPENGL::vertexArrayOn();
            PVOPENGL::normalArrayOn();
            PVOPENGL::colorArrayOn();
            PVOPENGL::textureArrayOn();
        }
        for (int i = 0; i < 2; i++) {
            PVOPENGL::vertexArrayOff();
            PVOPENGL::normalArrayOff();
            PVOPENGL::colorArrayOff();
            PVOPENGL::textureArrayOff();
        }
        PVOPENGL::colorArrayOn();
    });
    EXPECT_EQ(calls, (Calls{"glEnableClientState(GL_VERTEX_ARRAY)", "glEnableClientState(GL_NORMAL_ARRAY)",
                            "glEnableClientState(GL_COLOR_ARRAY)", "glEnableClientState(GL_TEXTURE_COORD_ARRAY)",
                            "glDisableClientState(GL_VERTEX_ARRAY)", "glDisableClientState(GL_NORMAL_ARRAY)",
                            "glDisableClientState(GL_COLOR_ARRAY)",
                            "glDisableClientState(GL_TEXTURE_COORD_ARRAY)",
                            "glEnableClientState(GL_COLOR_ARRAY)"}));
    EXPECT_TRUE(glIsEnabled(GL_COLOR_ARRAY));
    EXPECT_FALSE(glIsEnabled(GL_VERTEX_ARRAY));
}

TEST_F(OpenGlState, InitLogsDriverAndExtensionsAndFreeLogsRelease)
{
    std::string expected = "   Init OpenGL...\n      Vendor    : " + glText(GL_VENDOR) +
                           "\n      Renderer  : " + glText(GL_RENDERER) + "\n      Version   : " +
                           glText(GL_VERSION) + "\n      Extensions: " + glText(GL_EXTENSIONS) +
                           "\n\n   OpenGL initialized\n";
    ASSERT_TRUE(PVTESTACCESS::openglInit());
    EXPECT_TRUE(PVTESTACCESS::openglIsActive());
    EXPECT_EQ(log.text(), expected);

    EXPECT_FALSE(PVTESTACCESS::openglInit());
    expected += "   [!] OpenGL already active @ PVOPENGL::init\n";
    EXPECT_EQ(log.text(), expected);

    EXPECT_TRUE(PVTESTACCESS::openglFree());
    EXPECT_FALSE(PVTESTACCESS::openglIsActive());
    EXPECT_FALSE(PVTESTACCESS::openglFree());
    EXPECT_EQ(log.text(), expected + "   Release OpenGL...\n   OpenGL released\n");
}

TEST_F(OpenGlState, InitSetsTheEngineDefaultsInGl)
{
    PVOPENGL::setBackgroundColor(0.5f, 0.25f, 0.0f, 1.0f);
    recorder.start();
    ASSERT_TRUE(PVTESTACCESS::openglInit());
    recorder.stop();

    Calls expected = {"glClearColorx(32768,16384,0,65536)",
                      "glLightModelxv(GL_LIGHT_MODEL_AMBIENT,{0,0,0,65536})",
                      "glClearDepthx(65536)",
                      "glClearStencil(0)",
                      "glDepthFunc(GL_LESS)",
                      "glEnable(GL_DEPTH_TEST)",
                      "glShadeModel(GL_SMOOTH)",
                      "glHint(GL_PERSPECTIVE_CORRECTION_HINT,GL_NICEST)",
                      "glDisable(GL_DITHER)",
                      "glBlendFunc(GL_SRC_ALPHA,GL_ONE_MINUS_SRC_ALPHA)",
                      "glAlphaFuncx(GL_GEQUAL,32768)",
                      "glEnable(GL_CULL_FACE)"};
    for (const char* light : {"GL_LIGHT0", "GL_LIGHT1", "GL_LIGHT2", "GL_LIGHT3"}) {
        const std::string prefix = std::string("glLightx(") + light + ",";
        expected.push_back(prefix + "GL_SPOT_EXPONENT,0)");
        expected.push_back(prefix + "GL_SPOT_CUTOFF,11796480)");  // 180 * 65536
        expected.push_back(prefix + "GL_CONSTANT_ATTENUATION,65536)");
        expected.push_back(prefix + "GL_LINEAR_ATTENUATION,0)");
        expected.push_back(prefix + "GL_QUADRATIC_ATTENUATION,0)");
    }
    Calls withoutQueries;
    for (const std::string& call : recorder.calls())
        if (pvtest::GlRecorder::functionOf(call) != "glGetString")
            withoutQueries.push_back(call);
    EXPECT_EQ(withoutQueries, expected);
    EXPECT_TRUE(PVOPENGL::isCulled());
    EXPECT_EQ(recorder.count("glGetString"), 4u);
}

TEST_F(OpenGlState, BackgroundColourClearsTheSurface)
{
    PVOPENGL::setBackgroundColor(1.0f, 0.5f, 0.25f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    uint32_t pixel = context.readPixel(10, 20);
    // 5-6-5 surface: a few levels of quantisation per channel.
    EXPECT_NEAR(int(pixel & 0xFF), 255, 8);
    EXPECT_NEAR(int((pixel >> 8) & 0xFF), 128, 5);
    EXPECT_NEAR(int((pixel >> 16) & 0xFF), 64, 8);

    K3MVECTOR4D stored = PVOPENGL::getBackgroundColor();
    EXPECT_EQ(stored, K3MVECTOR4D(1.0f, 0.5f, 0.25f, 1.0f));
}

TEST(OpenGlColour, BackgroundColourOnEightBitChannels)
{
    pvtest::GlContext context(32, 32, pvtest::GlContext::RGB888);
    ASSERT_TRUE(context.ok());
    PVOPENGL::setBackgroundColor(K3MVECTOR4D(0.2f, 0.6f, 1.0f, 1.0f));
    glClear(GL_COLOR_BUFFER_BIT);
    uint32_t pixel = context.readPixel(31, 31);
    EXPECT_NEAR(int(pixel & 0xFF), 51, 1);
    EXPECT_NEAR(int((pixel >> 8) & 0xFF), 153, 1);
    EXPECT_NEAR(int((pixel >> 16) & 0xFF), 255, 1);
}

TEST_F(OpenGlState, GlobalAmbientLightIsStoredAndApplied)
{
    Calls calls = record([] { PVOPENGL::setGlobalAmbientLight(0.25f, 0.5f, 1.0f, 0.75f); });
    EXPECT_EQ(calls, (Calls{"glLightModelxv(GL_LIGHT_MODEL_AMBIENT,{16384,32768,65536,49152})"}));
    EXPECT_EQ(PVOPENGL::getGlobalAmbientLight(), K3MVECTOR4D(0.25f, 0.5f, 1.0f, 0.75f));
    GLfloat ambient[4] = {};
    glGetFloatv(GL_LIGHT_MODEL_AMBIENT, ambient);
    EXPECT_FLOAT_EQ(ambient[1], 0.5f);
    EXPECT_FLOAT_EQ(ambient[3], 0.75f);
}

// Fixed-point arguments of the one glFrustumx call in calls.
std::vector<long long> frustumArguments(const pvtest::GlRecorder& recorder)
{
    Calls frustums = recorder.filter("glFrustumx");
    EXPECT_EQ(frustums.size(), 1u) << recorder.text();
    return frustums.empty() ? std::vector<long long>() : pvtest::GlRecorder::numbersOf(frustums[0]);
}

void expectFixedNear(const std::vector<long long>& actual, const std::vector<double>& expected)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (size_t i = 0; i < expected.size(); i++)
        EXPECT_NEAR(double(actual[i]), expected[i] * 65536.0, 1.5) << "argument " << i;
}

TEST_F(OpenGlState, ResizeSetsViewportAndPerspective)
{
    const int windowY = PVSETTINGS::getSDLWindowY();
    recorder.start();
    EXPECT_TRUE(PVOPENGL::resize(4, 6, 64, 48));
    recorder.stop();
    EXPECT_EQ(recorder.filter({"glMatrixMode", "glLoadIdentity", "glViewport"}),
              (Calls{"glMatrixMode(GL_PROJECTION)", "glLoadIdentity()",
                     "glViewport(4," + std::to_string(windowY - 6 - 48) + ",64,48)", "glMatrixMode(GL_MODELVIEW)",
                     "glLoadIdentity()"}));
    EXPECT_EQ(pvtest::GlRecorder::functionOf(recorder.calls()[3]), "glFrustumx");

    // Vertical angle 45 degrees, near 1, far 1024, aspect 64/48.
    double h = tan(22.5 * M_PI / 180.0), aspect = 64.0 / 48.0;
    expectFixedNear(frustumArguments(recorder), {-h * aspect, h * aspect, -h, h, 1.0, 1024.0});

    // GL's perspective matrix: cot(half angle) / aspect and cot(half angle).
    GLfloat projection[16];
    glGetFloatv(GL_PROJECTION_MATRIX, projection);
    EXPECT_NEAR(projection[0], 1.0 / (h * aspect), 1e-3);
    EXPECT_NEAR(projection[5], 1.0 / h, 1e-3);
    EXPECT_FLOAT_EQ(projection[11], -1.0f);
    // The model-view shadow is the identity again.
    float modelView[16];
    PV_glGetFloatv(PV_GL_MODELVIEW_STACK, modelView);
    for (int i = 0; i < 16; i++)
        EXPECT_EQ(modelView[i], i % 5 == 0 ? 1.0f : 0.0f) << i;
    EXPECT_EQ(log.text(), "");
}

TEST_F(OpenGlState, ResizeUsesTheStoredPlanesAndAngle)
{
    EXPECT_EQ(PVOPENGL::getNearPlane(), 1.0f);
    EXPECT_EQ(PVOPENGL::getFarPlane(), 1024.0f);
    EXPECT_EQ(PVOPENGL::getAngleOfView(), 45.0f);
    PVOPENGL::setNearPlane(2.0f);
    PVOPENGL::setFarPlane(50.0f);
    PVOPENGL::setAngleOfView(90.0f);
    recorder.start();
    PVOPENGL::resize(0, 0, 100, 100);
    recorder.stop();
    // tan(45 degrees) = 1, so h = near.
    expectFixedNear(frustumArguments(recorder), {-2.0, 2.0, -2.0, 2.0, 2.0, 50.0});
}

TEST_F(OpenGlState, ResizeWithEmptySizeWarnsAndCarriesOn)
{
    recorder.start();
    EXPECT_TRUE(PVOPENGL::resize(0, 0, 0, 0));
    recorder.stop();
    EXPECT_EQ(log.text(), "   [!] invalid params @ PVOPENGL::resize\n");
    EXPECT_EQ(recorder.filter("glViewport"),
              (Calls{"glViewport(0," + std::to_string(PVSETTINGS::getSDLWindowY()) + ",0,0)"}));
    EXPECT_EQ(recorder.count("glFrustumx"), 1u);
}

// Landscape display: the projection is turned by 90 degrees about z before the
// frustum, whose aspect is height / width.
TEST(OpenGlLandscape, ResizeTurnsTheProjectionAndSwapsTheAspect)
{
    pvtest::ScratchDir dir;
    pvtest::LogCapture log;
    PVSETTINGS settings;
    settings.setWindowX(160);
    settings.setWindowY(120);
    settings.setLandscape(true);
    ASSERT_TRUE(PEVRANO::init(&settings)) << log.text();
    const size_t initLength = log.text().size();

    pvtest::GlRecorder recorder;
    recorder.start();
    EXPECT_TRUE(PVOPENGL::resize(10, 20, 80, 40));
    recorder.stop();
    // Viewport y = 120 - 20 - 40; the rotation is 90 * 65536 about (0, 0, 65536).
    Calls calls = recorder.calls();
    ASSERT_EQ(calls.size(), 7u) << recorder.text();
    EXPECT_EQ(pvtest::GlRecorder::functionOf(calls[4]), "glFrustumx");
    calls.erase(calls.begin() + 4);
    EXPECT_EQ(calls, (Calls{"glMatrixMode(GL_PROJECTION)", "glLoadIdentity()", "glViewport(10,60,80,40)",
                            "glRotatex(5898240,0,0,65536)", "glMatrixMode(GL_MODELVIEW)", "glLoadIdentity()"}));
    // Aspect 40 / 80 with the default 45 degrees, near 1 and far 1024.
    const double h = tan(22.5 * M_PI / 180.0);
    expectFixedNear(frustumArguments(recorder), {-h * 0.5, h * 0.5, -h, h, 1.0, 1024.0});

    // Shadow: F * R with F = (2/(r-l), 2/(t-b) = 1/h on the diagonal, no
    // factor n) and R the quarter turn, so column 0 of R (0, 1) is scaled by
    // 2/h and column 1 (-1, 0) by 1/h; the depth rows are F's.
    float projection[16];
    PV_glGetFloatv(PV_GL_PROJECTION_STACK, projection);
    const double expected[16] = {0, 2 / h, 0, 0, -1 / h, 0, 0, 0, 0, 0, -1025.0 / 1023.0, -2048.0 / 1023.0,
                                 0, 0, -1, 0};
    for (int i = 0; i < 16; i++)
        EXPECT_NEAR(projection[i], expected[i], 1e-5) << "shadow element " << i;
    // GL's own R . F puts the same terms in elements 1 and 4.
    GLfloat glProjection[16];
    glGetFloatv(GL_PROJECTION_MATRIX, glProjection);
    EXPECT_NEAR(glProjection[0], 0.0, 1e-3);
    EXPECT_NEAR(glProjection[1], 2 / h, 1e-3);
    EXPECT_NEAR(glProjection[4], -1 / h, 1e-3);
    EXPECT_NEAR(glProjection[5], 0.0, 1e-3);
    EXPECT_EQ(log.text().substr(initLength), "");
    EXPECT_TRUE(PEVRANO::free());
}

TEST_F(OpenGlState, SetFrustumLoadsProjectionAndIdentityModelView)
{
    bool ok = false;
    Calls calls = record([&ok] { ok = PVOPENGL::setFrustum(-1.0f, 1.0f, -0.5f, 0.5f, 1.0f, 9.0f, true); });
    EXPECT_TRUE(ok);
    EXPECT_EQ(calls, (Calls{"glMatrixMode(GL_PROJECTION)", "glLoadIdentity()",
                            "glFrustumx(-65536,65536,-32768,32768,65536,589824)", "glMatrixMode(GL_MODELVIEW)",
                            "glLoadIdentity()"}));
    float projection[16];
    PV_glGetFloatv(PV_GL_PROJECTION_STACK, projection);
    // Shadow frustum: 2/(r-l), 2/(t-b), -(f+n)/(f-n), -2fn/(f-n), -1 in element 14.
    EXPECT_FLOAT_EQ(projection[0], 1.0f);
    EXPECT_FLOAT_EQ(projection[5], 2.0f);
    EXPECT_FLOAT_EQ(projection[10], -1.25f);
    EXPECT_FLOAT_EQ(projection[11], -2.25f);
    EXPECT_FLOAT_EQ(projection[14], -1.0f);
    EXPECT_FLOAT_EQ(projection[15], 0.0f);
}

TEST_F(OpenGlState, ProfilesAndCapabilitiesOfThisTarget)
{
    EXPECT_EQ(PVOPENGL::getProfile(), PV_OPENGL_PROFILE_NORMAL);
    PVOPENGL::setProfile(2);
    EXPECT_EQ(PVOPENGL::getProfile(), PV_OPENGL_PROFILE_SELECTION);
    PVOPENGL::setProfile(PV_OPENGL_PROFILE_DOF);
    EXPECT_EQ(int(PVOPENGL::getProfile()), 3);

    ASSERT_TRUE(PVTESTACCESS::openglInit());
    EXPECT_FALSE(PVOPENGL::useVBO());
    EXPECT_FALSE(PVOPENGL::useAnisotropic());
    EXPECT_FALSE(PVOPENGL::useFBO());
    EXPECT_FALSE(PVOPENGL::useMultitexturing());
    EXPECT_FALSE(PVOPENGL::useShaders());
    EXPECT_FALSE(PVOPENGL::useOcclusionQuery());
    EXPECT_EQ(PVOPENGL::getAnisotropicLevel(), 0.0f);
    for (int slot : {-1, 0, 1, PV_OPENGL_FBO_SLOTS})
        EXPECT_EQ(PVOPENGL::getFbo(slot), nullptr) << slot;
}

}  // namespace
