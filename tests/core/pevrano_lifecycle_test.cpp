// Engine start-up and shut-down: the whole log of each, refusals, a failing
// step that unwinds, and the class-wide counters and switches.
#include <gtest/gtest.h>

#include <string>

#include "assets/pvshader.h"
#include "core/pvopengl.h"
#include "enginefixture.h"
#include "scene/pvelement.h"
#include "support/testaccess.h"

using pvtest::exact;
using pvtest::LogLine;

namespace {

class Lifecycle : public pvtest::EngineTest {
protected:
    // After a failed start-up nothing is left active, and the engine starts
    // again with the whole log of a start-up.
    void expectEngineStartsAgain()
    {
        EXPECT_FALSE(PEVRANO::isActive());
        EXPECT_FALSE(PVSETTINGS::isActive());
        const size_t before = log.text().size();
        ASSERT_TRUE(PEVRANO::init(nullptr));
        pvtest::expectLog(log.text().substr(before), pvtest::initLines());
        EXPECT_TRUE(PEVRANO::free());
    }
};

}  // namespace

// Stopping an engine that does not run writes nothing.
TEST_F(Lifecycle, InitAndFreeLogEveryStepInOrder)
{
    EXPECT_FALSE(PEVRANO::isActive());
    EXPECT_FALSE(PEVRANO::free());
    EXPECT_EQ(log.text(), "");

    ASSERT_TRUE(PEVRANO::init(nullptr)) << log.text();
    EXPECT_TRUE(PEVRANO::isActive());
    EXPECT_TRUE(PVSETTINGS::isActive());
    pvtest::expectLog(log.text(), pvtest::initLines());

    const size_t initLength = log.text().size();
    ASSERT_TRUE(PEVRANO::free());
    EXPECT_FALSE(PEVRANO::isActive());
    EXPECT_FALSE(PVSETTINGS::isActive());
    EXPECT_FALSE(PEVRANO::free());
    pvtest::expectLog(log.text().substr(initLength), pvtest::engineShutdownLines());
}

TEST_F(Lifecycle, SecondInitWhileActiveIsRefusedWithOneLine)
{
    ASSERT_TRUE(PEVRANO::init(nullptr));
    const size_t before = log.text().size();
    PVSETTINGS other;
    other.setWindowX(100);
    EXPECT_FALSE(PEVRANO::init(&other));
    EXPECT_EQ(log.text().substr(before), "   [!] PEVRANO already active\n");
    EXPECT_TRUE(PEVRANO::isActive());
    EXPECT_EQ(PVSETTINGS::getSDLWindowX(), 240);
}

// No surface offers 64 depth bits: the settings step fails after counting the
// configurations, nothing is left active, and the engine can start again.
TEST_F(Lifecycle, FailingDisplayStepUnwindsAndInitCanBeRetried)
{
    PVSETTINGS impossible;
    impossible.setZetaDepth(64);
    EXPECT_FALSE(PEVRANO::init(&impossible));

    std::vector<LogLine> lines =
        pvtest::upTo(pvtest::replacing(pvtest::initLines(false), "          depth: 16, zeta: 16, stencil: 0",
                                       exact("          depth: 16, zeta: 64, stencil: 0")),
                     "          Font path   : ''");
    pvtest::append(lines, {pvtest::like("      OpenGL ES [0-9]+\\.[0-9]+"),
                           exact("      Number of available configs: 0"),
                           exact("   [!] Unable to find enough EGL configurations @ PVSETTINGS::init"),
                           exact("   [!] Unable to init settings @ PEVRANO::init")});
    pvtest::expectLog(log.text(), lines);
    expectEngineStartsAgain();
}

// The GL state class is already active: its step fails and only the settings,
// started before it, are released.
TEST_F(Lifecycle, FailingOpenGLStepReleasesTheSettings)
{
    {
        pvtest::GlContext context;
        ASSERT_TRUE(context.ok());
        ASSERT_TRUE(PVTESTACCESS::openglInit());
    }
    const size_t before = log.text().size();
    EXPECT_FALSE(PEVRANO::init(nullptr));

    std::vector<LogLine> lines = pvtest::upTo(pvtest::initLines(), "   Settings initialized");
    pvtest::append(lines, {exact("   [!] OpenGL already active @ PVOPENGL::init"),
                           exact("   [!] Unable to init OpenGL @ PEVRANO::init"),
                           exact("   Release settings..."), exact("   Settings released")});
    pvtest::expectLog(log.text().substr(before), lines);

    ASSERT_TRUE(PVTESTACCESS::openglFree());
    expectEngineStartsAgain();
}

// The render list is already allocated: its step fails and the steps before
// it are released last first (shaders, GL state, settings).
TEST_F(Lifecycle, FailingRenderListStepReleasesTheEarlierStepsInReverse)
{
    ASSERT_TRUE(PVELEMENT::init(16));
    const size_t before = log.text().size();
    EXPECT_FALSE(PEVRANO::init(nullptr));

    std::vector<LogLine> lines = pvtest::upTo(pvtest::initLines(), "   OpenGL initialized");
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
TEST_F(Lifecycle, IncompatibleVideoModeIsRefusedBeforeAnyWindow)
{
    if (!pvtest::onX11())
        GTEST_SKIP() << "needs an X server";
    PVSETTINGS tooLarge;
    tooLarge.setWindowX(8000);
    tooLarge.setWindowY(8000);
    EXPECT_FALSE(PEVRANO::init(&tooLarge));
    EXPECT_FALSE(tooLarge.isOk());
    EXPECT_TRUE(PVSETTINGS().isOk());
    EXPECT_NE(log.text().find("          X: 8000, Y: 8000\n"), std::string::npos);
    EXPECT_NE(log.text().find("   [!] Incompatible config @ PVSETTINGS::init\n"), std::string::npos);
    expectEngineStartsAgain();
}

// Windows no display can open (over 16384 a side, over the off-screen
// surface's largest, empty) and negative buffer sizes never reach SDL.
TEST_F(Lifecycle, UnopenableSizesAndDepthsAreRefusedBeforeSDL)
{
    struct Case {
        int x, y, colour, zeta, stencil;
        const char* sizes;
    };
    const Case cases[] = {
        {2147483647, 320, 16, 16, 0, "X: 2147483647, Y: 320\n          depth: 16, zeta: 16, stencil: 0"},
        {240, 2147483647, 16, 16, 0, "X: 240, Y: 2147483647\n          depth: 16, zeta: 16, stencil: 0"},
        {16385, 16, 16, 16, 0, "X: 16385, Y: 16\n          depth: 16, zeta: 16, stencil: 0"},
        {5000, 16, 16, 16, 0, "X: 5000, Y: 16\n          depth: 16, zeta: 16, stencil: 0"},
        {0, 320, 16, 16, 0, "X: 0, Y: 320\n          depth: 16, zeta: 16, stencil: 0"},
        {240, 320, 16, -1, 0, "X: 240, Y: 320\n          depth: 16, zeta: 4294967295, stencil: 0"},
        {240, 320, 16, 16, -8, "X: 240, Y: 320\n          depth: 16, zeta: 16, stencil: 4294967288"},
        {507, 240, 17, 24, 8, "X: 507, Y: 240\n          depth: 17, zeta: 24, stencil: 8"},
        {507, 240, 15, 24, 0, "X: 507, Y: 240\n          depth: 15, zeta: 24, stencil: 0"},
    };
    const std::string refusal = "          Water map size : 256\n"
                                "   [!] Incompatible config @ PVSETTINGS::init\n"
                                "   [!] Unable to init settings @ PEVRANO::init\n";
    for (const Case& c : cases) {
        PVSETTINGS settings;
        settings.setWindowX(c.x);
        settings.setWindowY(c.y);
        settings.setColorDepth(c.colour);
        settings.setZetaDepth(c.zeta);
        settings.setStencilDepth(c.stencil);
        const size_t before = log.text().size();
        EXPECT_FALSE(PEVRANO::init(&settings));
        const std::string text = log.text().substr(before);
        EXPECT_NE(text.find("      Configuration to set:\n          " + std::string(c.sizes) + "\n"),
                  std::string::npos)
            << text;
        EXPECT_EQ(text.substr(text.find("          Water map size")), refusal) << c.sizes;
    }
    expectEngineStartsAgain();
}

TEST_F(Lifecycle, VideoMemoryBudgetIsSixteenMegabytesAndCountersWrap)
{
    EXPECT_EQ(PEVRANO::getVideoMemory(), 0u);
    ASSERT_TRUE(PEVRANO::init(nullptr));
    EXPECT_EQ(PEVRANO::getVideoMemory(), 16777216u);
    EXPECT_EQ(PEVRANO::getUsedVideoMemory(), 0u);

    EXPECT_EQ(PEVRANO::pushVideoMemory(1000u), 1000u);
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

// Shadows need the shader capability, which this target lacks: that switch
// alone does not turn on.
TEST_F(Lifecycle, ShadowsStayOffWithoutShaderCapabilities)
{
    ASSERT_FALSE(PVSHADER::useShadows());
    PEVRANO::shadowingOn();
    EXPECT_FALSE(PEVRANO::isShadowed());
    PEVRANO::wireframeOn();
    EXPECT_TRUE(PEVRANO::isWireframed());
}
