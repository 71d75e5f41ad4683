// PVOPENGL: cached switches, start-up log and GL state, projection set-up,
// background colour on screen.
#include <cmath>

#include "core/pvopengl.h"
#include "enginefixture.h"
#include "support/switches.h"
#include "support/testaccess.h"

using namespace pvtest;

namespace {

using OpenGlState = GlContextTest;

std::string glText(GLenum which) { return reinterpret_cast<const char*>(glGetString(which)); }

void expectSwitches(bool on)
{
    for (const Switch& s : cachedSwitches) {
        EXPECT_TRUE(!s.isOn || s.isOn() == on) << s.name;
        EXPECT_TRUE(!s.capability || bool(glIsEnabled(s.capability)) == on) << s.name;
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
    const auto turnEachTwice = [this](bool on) {
        return record([on] {
            for (const Switch& s : cachedSwitches)
                for (int turn = 0; turn < 2; turn++)
                    (on ? s.on : s.off)();
        });
    };
    EXPECT_EQ(turnEachTwice(false), Calls {});
    EXPECT_EQ(turnEachTwice(true), ons);
    expectSwitches(true);
    EXPECT_EQ(turnEachTwice(false), offs);
    expectSwitches(false);
}

TEST_F(OpenGlState, InitSetsTheEngineDefaultsLogsTheDriverAndFreeLogsRelease)
{
    PVOPENGL::setBackgroundColor(0.5f, 0.25f, 0.0f, 1.0f);
    // The driver's strings, the engine defaults, then four light slots' spot
    // and attenuation defaults.
    EXPECT_EQ(record([] { ASSERT_TRUE(PVTESTACCESS::openglInit()); }),
              readCalls(PEVRANO_TEST_DATA "/expected/opengl-init.calls"));

    std::string expectedLog = "   Init OpenGL...\n      Vendor    : " + glText(GL_VENDOR) +
                              "\n      Renderer  : " + glText(GL_RENDERER) +
                              "\n      Version   : " + glText(GL_VERSION) +
                              "\n      Extensions: " + glText(GL_EXTENSIONS) +
                              "\n\n   OpenGL initialized\n   [!] OpenGL already active @ PVOPENGL::init\n";
    EXPECT_FALSE(PVTESTACCESS::openglInit());
    EXPECT_EQ(log.text(), expectedLog);

    EXPECT_TRUE(PVTESTACCESS::openglFree());
    EXPECT_FALSE(PVTESTACCESS::openglFree());
    EXPECT_EQ(log.text(), expectedLog + "   Release OpenGL...\n   OpenGL released\n");
}

// The recorded calls of a resize: projection reset, viewport, the quarter
// turn in landscape, the frustum (left, right, bottom, top, near, far to 1.5
// fixed-point units), model-view reset.
void expectResizeCalls(Calls calls, const std::string& viewport, const std::vector<double>& frustum,
                       bool landscape = false)
{
    ASSERT_EQ(calls.size(), landscape ? 7u : 6u);
    std::string& frustumCall = calls[calls.size() - 3];
    const std::vector<long long> fixed = GlRecorder::numbersOf(frustumCall);
    ASSERT_EQ(fixed.size(), frustum.size());
    for (size_t i = 0; i < frustum.size(); i++)
        EXPECT_NEAR(double(fixed[i]), frustum[i] * 65536.0, 1.5) << "argument " << i;
    frustumCall = GlRecorder::functionOf(frustumCall);
    Calls expected = {"glMatrixMode(GL_PROJECTION)", "glLoadIdentity()", viewport};
    if (landscape)
        expected.push_back("glRotatex(5898240,0,0,65536)");  // 90 degrees about z
    expected.insert(expected.end(), {"glFrustumx", "glMatrixMode(GL_MODELVIEW)", "glLoadIdentity()"});
    EXPECT_EQ(calls, expected);
}

TEST_F(OpenGlState, ResizeSetsTheViewportAndAPerspectiveOfTheStoredPlanesAndAngle)
{
    EXPECT_EQ(PVOPENGL::getNearPlane(), 1.0f);
    EXPECT_EQ(PVOPENGL::getFarPlane(), 1024.0f);
    EXPECT_EQ(PVOPENGL::getAngleOfView(), 45.0f);
    // The viewport's y is counted from the bottom of the window.
    const int windowY = PVSETTINGS::getSDLWindowY();
    // Vertical angle 45 degrees, near 1, far 1024, aspect 64/48.
    const double h = tan(22.5 * M_PI / 180.0), aspect = 64.0 / 48.0;
    expectResizeCalls(record([] { EXPECT_TRUE(PVOPENGL::resize(4, 6, 64, 48)); }),
                      "glViewport(4," + std::to_string(windowY - 6 - 48) + ",64,48)",
                      {-h * aspect, h * aspect, -h, h, 1.0, 1024.0});

    // The model-view shadow is the identity again.
    expectMatrixNear(shadowMatrix(PV_GL_MODELVIEW_STACK), Mat4::identity(), 0, "model-view");

    PVOPENGL::setNearPlane(2.0f);
    PVOPENGL::setFarPlane(50.0f);
    PVOPENGL::setAngleOfView(90.0f);
    // tan(45 degrees) = 1, so h = near.
    expectResizeCalls(record([] { PVOPENGL::resize(0, 0, 100, 100); }),
                      "glViewport(0," + std::to_string(windowY - 100) + ",100,100)",
                      {-2.0, 2.0, -2.0, 2.0, 2.0, 50.0});
    EXPECT_EQ(log.text(), "");

    // An empty size warns and carries on.
    record([] { EXPECT_TRUE(PVOPENGL::resize(0, 0, 0, 0)); });
    EXPECT_EQ(log.text(), "   [!] invalid params @ PVOPENGL::resize\n");
    EXPECT_EQ(recorder.filter("glViewport"), Calls {"glViewport(0," + std::to_string(windowY) + ",0,0)"});
    EXPECT_EQ(recorder.count("glFrustumx"), 1u);

    // setFrustum loads the projection it is given and an identity model-view.
    EXPECT_EQ(record([] { EXPECT_TRUE(PVOPENGL::setFrustum(-1.0f, 1.0f, -0.5f, 0.5f, 1.0f, 9.0f, true)); }),
              (Calls {"glMatrixMode(GL_PROJECTION)", "glLoadIdentity()",
                      "glFrustumx(-65536,65536,-32768,32768,65536,589824)", "glMatrixMode(GL_MODELVIEW)",
                      "glLoadIdentity()"}));
}

// Landscape display: the projection is turned by 90 degrees about z before the
// frustum, whose aspect is height / width.
using OpenGlLandscape = EngineTest;

TEST_F(OpenGlLandscape, ResizeTurnsTheProjectionAndSwapsTheAspect)
{
    PVSETTINGS settings = landscapeSettings();
    settings.setWindowX(160);
    settings.setWindowY(120);
    start(settings);
    const size_t initLength = log.text().size();

    // Viewport y = 120 - 20 - 40; aspect 40 / 80 with the default 45 degrees,
    // near 1 and far 1024.
    const double h = tan(22.5 * M_PI / 180.0);
    expectResizeCalls(record([] { EXPECT_TRUE(PVOPENGL::resize(10, 20, 80, 40)); }),
                      "glViewport(10,60,80,40)", {-h * 0.5, h * 0.5, -h, h, 1.0, 1024.0}, true);

    // Shadow: F * R with F = (2/(r-l), 2/(t-b) = 1/h on the diagonal, no
    // factor n) and R the quarter turn, so column 0 of R (0, 1) is scaled by
    // 2/h and column 1 (-1, 0) by 1/h; the depth rows are F's.
    const float expected[16] = {
        0, float(2 / h), 0, 0, float(-1 / h), 0, 0, 0, 0, 0, -1025.0f / 1023.0f, -2048.0f / 1023.0f, 0,
        0, -1,           0};
    expectMatrixNear(shadowMatrix(PV_GL_PROJECTION_STACK), Mat4::fromGl(expected), 1e-5, "shadow");
    EXPECT_EQ(log.text().substr(initLength), "");
}

}  // namespace
