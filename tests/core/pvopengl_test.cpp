// PVOPENGL: cached switches, start-up log and GL state, projection set-up,
// background colour on screen.
#include <gtest/gtest.h>

#include <GLES/gl.h>

#include <cmath>
#include <string>
#include <vector>

#include "core/pvgl.h"
#include "core/pvopengl.h"
#include "enginefixture.h"
#include "support/switches.h"
#include "support/testaccess.h"

namespace {

using pvtest::Calls;
using OpenGlState = pvtest::GlContextTest;

std::string glText(GLenum which) { return reinterpret_cast<const char*>(glGetString(which)); }

using pvtest::cachedSwitches;
using pvtest::Switch;

void expectSwitches(bool on)
{
    for (const Switch& s : cachedSwitches) {
        if (s.isOn) {
            EXPECT_EQ(s.isOn(), on) << s.name;
        }
        if (s.capability) {
            EXPECT_EQ(bool(glIsEnabled(s.capability)), on) << s.name;
        }
    }
}

// Every switch starts off, and each one is turned twice in a row: only the
// first turn reaches GL, and no switch turns another.
TEST_F(OpenGlState, SwitchesStartOffAndCallGlOnlyOnChange)
{
    Calls ons, offs;
    for (const Switch& s : cachedSwitches) {
        ons.push_back(s.onCall);
        offs.push_back(s.offCall);
    }
    EXPECT_EQ(record([] {
                  for (const Switch& s : cachedSwitches)
                      s.off();
              }),
              Calls {});
    EXPECT_EQ(record([] {
                  for (const Switch& s : cachedSwitches) {
                      s.on();
                      s.on();
                  }
              }),
              ons);
    expectSwitches(true);
    EXPECT_EQ(record([] {
                  for (const Switch& s : cachedSwitches) {
                      s.off();
                      s.off();
                  }
              }),
              offs);
    expectSwitches(false);
}

TEST_F(OpenGlState, InitSetsTheEngineDefaultsLogsTheDriverAndFreeLogsRelease)
{
    PVOPENGL::setBackgroundColor(0.5f, 0.25f, 0.0f, 1.0f);
    recorder.start();
    ASSERT_TRUE(PVTESTACCESS::openglInit());
    recorder.stop();
    EXPECT_TRUE(PVTESTACCESS::openglIsActive());

    Calls withoutQueries;
    for (const std::string& call : recorder.calls())
        if (pvtest::GlRecorder::functionOf(call) != "glGetString")
            withoutQueries.push_back(call);
    // The engine defaults, then four light slots' spot and attenuation defaults.
    EXPECT_EQ(withoutQueries, pvtest::readCalls(PEVRANO_TEST_DATA "/expected/opengl-init.calls"));
    EXPECT_EQ(recorder.count("glGetString"), 4u);
    EXPECT_TRUE(PVOPENGL::isCulled());

    std::string expectedLog = "   Init OpenGL...\n      Vendor    : " + glText(GL_VENDOR) +
                              "\n      Renderer  : " + glText(GL_RENDERER) +
                              "\n      Version   : " + glText(GL_VERSION) +
                              "\n      Extensions: " + glText(GL_EXTENSIONS) +
                              "\n\n   OpenGL initialized\n   [!] OpenGL already active @ PVOPENGL::init\n";
    EXPECT_FALSE(PVTESTACCESS::openglInit());
    EXPECT_EQ(log.text(), expectedLog);

    EXPECT_TRUE(PVTESTACCESS::openglFree());
    EXPECT_FALSE(PVTESTACCESS::openglIsActive());
    EXPECT_FALSE(PVTESTACCESS::openglFree());
    EXPECT_EQ(log.text(), expectedLog + "   Release OpenGL...\n   OpenGL released\n");
}

void expectFixedNear(const std::vector<long long>& actual, const std::vector<double>& expected)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (size_t i = 0; i < expected.size(); i++)
        EXPECT_NEAR(double(actual[i]), expected[i] * 65536.0, 1.5) << "argument " << i;
}

// The recorded calls of a resize: projection reset, viewport, the quarter
// turn in landscape, the frustum (left, right, bottom, top, near, far to 1.5
// fixed-point units), model-view reset.
void expectResizeCalls(const pvtest::GlRecorder& recorder, const std::string& viewport,
                       const std::vector<double>& frustum, bool landscape = false)
{
    Calls calls = recorder.calls();
    ASSERT_EQ(calls.size(), landscape ? 7u : 6u) << recorder.text();
    const auto frustumCall = calls.end() - 3;
    EXPECT_EQ(pvtest::GlRecorder::functionOf(*frustumCall), "glFrustumx");
    expectFixedNear(pvtest::GlRecorder::numbersOf(*frustumCall), frustum);
    calls.erase(frustumCall);
    Calls expected = {"glMatrixMode(GL_PROJECTION)", "glLoadIdentity()", viewport};
    if (landscape)
        expected.push_back("glRotatex(5898240,0,0,65536)");  // 90 degrees about z
    expected.insert(expected.end(), {"glMatrixMode(GL_MODELVIEW)", "glLoadIdentity()"});
    EXPECT_EQ(calls, expected);
}

TEST_F(OpenGlState, ResizeSetsTheViewportAndAPerspectiveOfTheStoredPlanesAndAngle)
{
    EXPECT_EQ(PVOPENGL::getNearPlane(), 1.0f);
    EXPECT_EQ(PVOPENGL::getFarPlane(), 1024.0f);
    EXPECT_EQ(PVOPENGL::getAngleOfView(), 45.0f);
    // The viewport's y is counted from the bottom of the window.
    const int windowY = PVSETTINGS::getSDLWindowY();
    record([] { EXPECT_TRUE(PVOPENGL::resize(4, 6, 64, 48)); });
    // Vertical angle 45 degrees, near 1, far 1024, aspect 64/48.
    const double h = tan(22.5 * M_PI / 180.0), aspect = 64.0 / 48.0;
    expectResizeCalls(recorder, "glViewport(4," + std::to_string(windowY - 6 - 48) + ",64,48)",
                      {-h * aspect, h * aspect, -h, h, 1.0, 1024.0});

    // The model-view shadow is the identity again.
    float modelView[16];
    PV_glGetFloatv(PV_GL_MODELVIEW_STACK, modelView);
    for (int i = 0; i < 16; i++)
        EXPECT_EQ(modelView[i], i % 5 == 0 ? 1.0f : 0.0f) << i;

    PVOPENGL::setNearPlane(2.0f);
    PVOPENGL::setFarPlane(50.0f);
    PVOPENGL::setAngleOfView(90.0f);
    record([] { PVOPENGL::resize(0, 0, 100, 100); });
    // tan(45 degrees) = 1, so h = near.
    expectResizeCalls(recorder, "glViewport(0," + std::to_string(windowY - 100) + ",100,100)",
                      {-2.0, 2.0, -2.0, 2.0, 2.0, 50.0});
    EXPECT_EQ(log.text(), "");

    // An empty size warns and carries on.
    record([] { EXPECT_TRUE(PVOPENGL::resize(0, 0, 0, 0)); });
    EXPECT_EQ(log.text(), "   [!] invalid params @ PVOPENGL::resize\n");
    EXPECT_EQ(recorder.filter("glViewport"), Calls {"glViewport(0," + std::to_string(windowY) + ",0,0)"});
    EXPECT_EQ(recorder.count("glFrustumx"), 1u);
}

// Landscape display: the projection is turned by 90 degrees about z before the
// frustum, whose aspect is height / width.
using OpenGlLandscape = pvtest::EngineTest;

TEST_F(OpenGlLandscape, ResizeTurnsTheProjectionAndSwapsTheAspect)
{
    PVSETTINGS settings = pvtest::landscapeSettings();
    settings.setWindowX(160);
    settings.setWindowY(120);
    start(settings);
    const size_t initLength = log.text().size();

    record([] { EXPECT_TRUE(PVOPENGL::resize(10, 20, 80, 40)); });
    // Viewport y = 120 - 20 - 40; aspect 40 / 80 with the default 45 degrees,
    // near 1 and far 1024.
    const double h = tan(22.5 * M_PI / 180.0);
    expectResizeCalls(recorder, "glViewport(10,60,80,40)", {-h * 0.5, h * 0.5, -h, h, 1.0, 1024.0}, true);

    // Shadow: F * R with F = (2/(r-l), 2/(t-b) = 1/h on the diagonal, no
    // factor n) and R the quarter turn, so column 0 of R (0, 1) is scaled by
    // 2/h and column 1 (-1, 0) by 1/h; the depth rows are F's.
    float projection[16];
    PV_glGetFloatv(PV_GL_PROJECTION_STACK, projection);
    const double expected[16] = {0, 2 / h, 0,  0, -1 / h, 0, 0, 0, 0, 0, -1025.0 / 1023.0, -2048.0 / 1023.0,
                                 0, 0,     -1, 0};
    for (int i = 0; i < 16; i++)
        EXPECT_NEAR(projection[i], expected[i], 1e-5) << "shadow element " << i;
    EXPECT_EQ(log.text().substr(initLength), "");
}

TEST_F(OpenGlState, SetFrustumLoadsProjectionAndIdentityModelView)
{
    bool ok = false;
    Calls calls = record([&ok] { ok = PVOPENGL::setFrustum(-1.0f, 1.0f, -0.5f, 0.5f, 1.0f, 9.0f, true); });
    EXPECT_TRUE(ok);
    EXPECT_EQ(calls, (Calls {"glMatrixMode(GL_PROJECTION)", "glLoadIdentity()",
                             "glFrustumx(-65536,65536,-32768,32768,65536,589824)",
                             "glMatrixMode(GL_MODELVIEW)", "glLoadIdentity()"}));
}

}  // namespace
