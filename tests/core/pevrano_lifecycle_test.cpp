// Engine start-up and shut-down: the whole log of each, refusals, a failing
// step that unwinds, and the class-wide counters and switches.
#include <gtest/gtest.h>

#include <string>

#include "assets/pvshader.h"
#include "core/pevrano.h"
#include "core/pvopengl.h"
#include "core/pvsettings.h"
#include "displaylog.h"
#include "scene/pvelement.h"
#include "support/glcontext.h"
#include "support/scratch.h"
#include "support/testaccess.h"

using pvtest::exact;
using pvtest::LogLine;

namespace {

std::vector<LogLine> defaultInitLines()
{
    std::vector<LogLine> lines = pvtest::engineStartLines();
    lines.push_back(exact("   [!] Standard configuration used"));
    pvtest::append(lines, pvtest::defaultSettingsRequestLines());
    pvtest::append(lines, pvtest::defaultDisplayLines());
    pvtest::append(lines, pvtest::engineReadyLines());
    return lines;
}

// The start of init up to the display, before the step that is made to fail.
std::vector<LogLine> initLinesUpToTheDisplay()
{
    std::vector<LogLine> lines = pvtest::engineStartLines();
    lines.push_back(exact("   [!] Standard configuration used"));
    pvtest::append(lines, pvtest::defaultSettingsRequestLines());
    return lines;
}

// init and free work again after a failed start-up.
void expectEngineStartsAgain()
{
    EXPECT_FALSE(PEVRANO::isActive());
    EXPECT_FALSE(PVSETTINGS::isActive());
    ASSERT_TRUE(PEVRANO::init(nullptr));
    EXPECT_TRUE(PEVRANO::free());
}

}  // namespace

TEST(Lifecycle, InitAndFreeLogEveryStepInOrder)
{
    pvtest::ScratchDir dir;
    pvtest::LogCapture log;
    ASSERT_FALSE(PEVRANO::isActive());

    ASSERT_TRUE(PEVRANO::init(nullptr)) << log.text();
    EXPECT_TRUE(PEVRANO::isActive());
    EXPECT_TRUE(PVSETTINGS::isActive());
    pvtest::expectLog(log.text(), defaultInitLines());

    const size_t initLength = log.text().size();
    ASSERT_TRUE(PEVRANO::free());
    EXPECT_FALSE(PEVRANO::isActive());
    EXPECT_FALSE(PVSETTINGS::isActive());
    pvtest::expectLog(log.text().substr(initLength), pvtest::engineShutdownLines());
}

TEST(Lifecycle, SecondInitWhileActiveIsRefusedWithOneLine)
{
    pvtest::ScratchDir dir;
    pvtest::LogCapture log;
    ASSERT_TRUE(PEVRANO::init(nullptr));
    const size_t before = log.text().size();

    PVSETTINGS other;
    other.setWindowX(100);
    EXPECT_FALSE(PEVRANO::init(&other));
    EXPECT_EQ(log.text().substr(before), "   [!] PEVRANO already active\n");
    EXPECT_TRUE(PEVRANO::isActive());
    EXPECT_EQ(PVSETTINGS::getSDLWindowX(), 240);
    EXPECT_TRUE(PEVRANO::free());
}

TEST(Lifecycle, FreeWhenInactiveWritesNothing)
{
    pvtest::ScratchDir dir;
    pvtest::LogCapture log;
    EXPECT_FALSE(PEVRANO::free());
    EXPECT_EQ(log.text(), "");

    ASSERT_TRUE(PEVRANO::init(nullptr));
    ASSERT_TRUE(PEVRANO::free());
    const size_t before = log.text().size();
    EXPECT_FALSE(PEVRANO::free());
    EXPECT_EQ(log.text().size(), before);
}

// No surface offers 64 depth bits: the settings step fails after counting the
// configurations, nothing is left active, and the engine can start again.
TEST(Lifecycle, FailingDisplayStepUnwindsAndInitCanBeRetried)
{
    pvtest::ScratchDir dir;
    pvtest::LogCapture log;
    PVSETTINGS impossible;
    impossible.setZetaDepth(64);
    EXPECT_FALSE(PEVRANO::init(&impossible));
    EXPECT_FALSE(PEVRANO::isActive());
    EXPECT_FALSE(PVSETTINGS::isActive());

    std::vector<LogLine> lines = pvtest::engineStartLines();
    std::vector<LogLine> request = pvtest::defaultSettingsRequestLines();
    request[3] = exact("          depth: 16, zeta: 64, stencil: 0");
    pvtest::append(lines, request);
    pvtest::append(lines, {pvtest::like("      OpenGL ES [0-9]+\\.[0-9]+"),
                           exact("      Number of available configs: 0"),
                           exact("   [!] Unable to find enough EGL configurations @ PVSETTINGS::init"),
                           exact("   [!] Unable to init settings @ PEVRANO::init")});
    pvtest::expectLog(log.text(), lines);

    const size_t before = log.text().size();
    ASSERT_TRUE(PEVRANO::init(nullptr));
    std::vector<LogLine> retry = {exact("   SDL initialized"), exact("   Initialize Pevrano"), exact(""),
                                  exact("   [!] Standard configuration used")};
    pvtest::append(retry, pvtest::defaultSettingsRequestLines());
    pvtest::append(retry, pvtest::defaultDisplayLines());
    pvtest::append(retry, pvtest::engineReadyLines());
    pvtest::expectLog(log.text().substr(before), retry);
    EXPECT_TRUE(PEVRANO::isActive());
    EXPECT_TRUE(PEVRANO::free());
}

// The GL state class is already active: its step fails and only the settings,
// started before it, are released.
TEST(Lifecycle, FailingOpenGLStepReleasesTheSettings)
{
    pvtest::ScratchDir dir;
    pvtest::LogCapture log;
    {
        pvtest::GlContext context;
        ASSERT_TRUE(context.ok());
        ASSERT_TRUE(PVTESTACCESS::openglInit());
    }
    const size_t before = log.text().size();
    EXPECT_FALSE(PEVRANO::init(nullptr));

    std::vector<LogLine> lines = initLinesUpToTheDisplay();
    std::vector<LogLine> display = pvtest::defaultDisplayLines();
    display.resize(display.size() - 7);  // up to "Settings initialized"
    pvtest::append(lines, display);
    pvtest::append(lines, {exact("   [!] OpenGL already active @ PVOPENGL::init"),
                           exact("   [!] Unable to init OpenGL @ PEVRANO::init"), exact("   Release settings..."),
                           exact("   Settings released")});
    pvtest::expectLog(log.text().substr(before), lines);

    ASSERT_TRUE(PVTESTACCESS::openglFree());
    expectEngineStartsAgain();
}

// The render list is already allocated: its step fails and the steps before
// it are released last first (shaders, GL state, settings).
TEST(Lifecycle, FailingRenderListStepReleasesTheEarlierStepsInReverse)
{
    pvtest::ScratchDir dir;
    pvtest::LogCapture log;
    ASSERT_TRUE(PVELEMENT::init(16));
    const size_t before = log.text().size();
    EXPECT_FALSE(PEVRANO::init(nullptr));

    std::vector<LogLine> lines = initLinesUpToTheDisplay();
    pvtest::append(lines, pvtest::defaultDisplayLines());
    pvtest::append(lines, {exact("   [!] Already active @ PVELEMENT::init"),
                           exact("   [!] Rendering elements failed to initialize @ PEVRANO::init"),
                           exact("   Release OpenGL..."), exact("   OpenGL released"),
                           exact("   Release settings..."), exact("   Settings released")});
    pvtest::expectLog(log.text().substr(before), lines);
    EXPECT_TRUE(PVELEMENT::isActive());

    PVELEMENT::free();
    expectEngineStartsAgain();
}

// An X server refuses a full-screen mode larger than its screen (the
// off-screen driver accepts every size, so there is nothing to refuse).
TEST(Lifecycle, IncompatibleVideoModeIsRefusedBeforeAnyWindow)
{
    if (!pvtest::onX11())
        GTEST_SKIP() << "needs an X server";
    pvtest::ScratchDir dir;
    pvtest::LogCapture log;
    PVSETTINGS tooLarge;
    tooLarge.setWindowX(8000);
    tooLarge.setWindowY(8000);
    EXPECT_FALSE(PEVRANO::init(&tooLarge));
    EXPECT_FALSE(tooLarge.isOk());
    EXPECT_TRUE(PVSETTINGS().isOk());
    const std::string text = log.text();
    const std::string tail = "          Water map size : 256\n"
                             "   [!] Incompatible config @ PVSETTINGS::init\n"
                             "   [!] Unable to init settings @ PEVRANO::init\n";
    ASSERT_GE(text.size(), tail.size());
    EXPECT_EQ(text.substr(text.size() - tail.size()), tail);
    EXPECT_NE(text.find("          X: 8000, Y: 8000\n"), std::string::npos);
    EXPECT_FALSE(PEVRANO::isActive());
    EXPECT_TRUE(PEVRANO::init(nullptr));
    EXPECT_TRUE(PEVRANO::free());
}

TEST(Lifecycle, VideoMemoryBudgetIsSixteenMegabytesAndCountersWrap)
{
    pvtest::ScratchDir dir;
    pvtest::LogCapture log;
    EXPECT_EQ(PEVRANO::getVideoMemory(), 0u);
    ASSERT_TRUE(PEVRANO::init(nullptr));
    EXPECT_EQ(PEVRANO::getVideoMemory(), 16777216u);
    EXPECT_EQ(PEVRANO::getUsedVideoMemory(), 0u);

    EXPECT_EQ(PEVRANO::pushVideoMemory(1000u), 1000u);
    EXPECT_EQ(PEVRANO::pushVideoMemory(24u), 1024u);
    EXPECT_EQ(PEVRANO::getFreeVideoMemory(), 16777216u - 1024u);
    EXPECT_EQ(PEVRANO::popVideoMemory(24u), 1000u);
    // Nothing checks the counter: popping more than was pushed wraps around.
    EXPECT_EQ(PEVRANO::popVideoMemory(1001u), 4294967295u);
    EXPECT_EQ(PEVRANO::getFreeVideoMemory(), 16777217u);
    EXPECT_EQ(PEVRANO::pushVideoMemory(16777217u), 16777216u);
    EXPECT_EQ(PEVRANO::getFreeVideoMemory(), 0u);
    EXPECT_EQ(PEVRANO::pushVideoMemory(1u), 16777217u);
    EXPECT_EQ(PEVRANO::getFreeVideoMemory(), 4294967295u);

    ASSERT_TRUE(PEVRANO::free());
    // The counters outlive the engine.
    EXPECT_EQ(PEVRANO::getVideoMemory(), 16777216u);
    EXPECT_EQ(PEVRANO::getUsedVideoMemory(), 16777217u);
    PEVRANO::popVideoMemory(16777217u);
}

TEST(Lifecycle, EffectSwitchesKeepTheirValuesWithoutShaderCapabilities)
{
    EXPECT_FALSE(PEVRANO::isWireframed());
    PEVRANO::wireframeOn();
    EXPECT_TRUE(PEVRANO::isWireframed());
    PEVRANO::wireframeOff();
    EXPECT_FALSE(PEVRANO::isWireframed());

    ASSERT_FALSE(PVSHADER::useShadows());
    PEVRANO::shadowingOn();
    EXPECT_FALSE(PEVRANO::isShadowed());
    PEVRANO::shadowingOff();
    EXPECT_FALSE(PEVRANO::isShadowed());

    EXPECT_FALSE(PEVRANO::isBlooming());
    PEVRANO::bloomingOn();
    EXPECT_TRUE(PEVRANO::isBlooming());
    PEVRANO::bloomingOff();
    EXPECT_FALSE(PEVRANO::isBlooming());
    EXPECT_FLOAT_EQ(PEVRANO::getBloomingIntensity(), 1.0f);
    PEVRANO::setBloomingIntensity(2.5f);
    EXPECT_FLOAT_EQ(PEVRANO::getBloomingIntensity(), 2.5f);

    EXPECT_FALSE(PEVRANO::isHDR());
    PEVRANO::HDROn();
    EXPECT_TRUE(PEVRANO::isHDR());
    PEVRANO::HDROff();
    EXPECT_FALSE(PEVRANO::isHDR());
    EXPECT_FLOAT_EQ(PEVRANO::getHDRExposure(), 1.0f);
    PEVRANO::setHDRExposure(0.25f);
    EXPECT_FLOAT_EQ(PEVRANO::getHDRExposure(), 0.25f);

    EXPECT_FLOAT_EQ(PEVRANO::getDOFFocus(), 1.0f);
    EXPECT_FLOAT_EQ(PEVRANO::getDOFRange(), 2.0f);
    PEVRANO::setDOFFocus(3.0f);
    PEVRANO::setDOFRange(4.0f);
    EXPECT_FLOAT_EQ(PEVRANO::getDOFFocus(), 3.0f);
    EXPECT_FLOAT_EQ(PEVRANO::getDOFRange(), 4.0f);
}

TEST(Lifecycle, PVEPathAndSkybox)
{
    EXPECT_STREQ(PEVRANO::getPVEPath(), "");
    PEVRANO::setPVEPath("models/");
    EXPECT_STREQ(PEVRANO::getPVEPath(), "models/");
    PEVRANO::setPVEPath(nullptr);
    EXPECT_STREQ(PEVRANO::getPVEPath(), "");

    EXPECT_EQ(PEVRANO::getSkybox(), nullptr);
    PVNODE* fake = reinterpret_cast<PVNODE*>(0x10);
    PEVRANO::setSkybox(fake);
    EXPECT_EQ(PEVRANO::getSkybox(), fake);
    PEVRANO::setSkybox(nullptr);
    EXPECT_EQ(PEVRANO::getSkybox(), nullptr);
}

// The settings hand the scene-file folder to the engine during start-up.
TEST(Lifecycle, SettingsHandThePVEPathOn)
{
    pvtest::ScratchDir dir;
    pvtest::LogCapture log;
    PVSETTINGS settings;
    settings.setPVEPath("scenes/");
    settings.setShaderPath("shaders/");
    ASSERT_TRUE(PEVRANO::init(&settings));
    EXPECT_STREQ(PEVRANO::getPVEPath(), "scenes/");
    EXPECT_STREQ(PVSHADER::getPath(), "shaders/");
    const std::string text = log.text();
    EXPECT_NE(text.find("          PVE path    : 'scenes/'\n          PVA path    : ''\n"
                        "          Texture path: ''\n          Shader path : 'shaders/'\n"),
              std::string::npos);
    EXPECT_TRUE(PEVRANO::free());
}
