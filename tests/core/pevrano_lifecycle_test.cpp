// Engine start-up and shut-down: the whole log of each, refusals, a failing
// step that unwinds, and the class-wide counters and switches.
#include <algorithm>
#include <functional>

#include "assets/pvshader.h"
#include "enginefixture.h"
#include "scene/pvelement.h"
#include "support/testaccess.h"

using namespace pvtest;

namespace {

class Lifecycle : public EngineTest {
protected:
    // init fails, logging the start-up up to the line reading last, then the
    // failure lines; once release ran, nothing is left active and the engine
    // starts again with the whole log of a start-up.
    void expectInitFails(
        PVSETTINGS* settings, const std::string& last, const std::vector<LogLine>& failure,
        const std::function<void()>& release = [] {})
    {
        std::vector<LogLine> lines = initLines(settings);
        auto kept =
            std::find_if(lines.begin(), lines.end(), [&](const LogLine& line) { return line.text == last; });
        lines.erase(kept + (kept != lines.end()), lines.end());
        append(lines, failure);
        const size_t before = log.text().size();
        EXPECT_FALSE(PEVRANO::init(settings));
        expectLog(log.text().substr(before), lines);
        release();
        EXPECT_FALSE(PEVRANO::isActive());
        EXPECT_FALSE(PVSETTINGS::isActive());
        const size_t after = log.text().size();
        ASSERT_TRUE(PEVRANO::init(nullptr));
        expectLog(log.text().substr(after), initLines());
        EXPECT_TRUE(PEVRANO::free());
    }
};

}  // namespace

// Stopping an engine that does not run writes nothing; a second start-up is
// refused with one line and leaves the running engine as it was. Shadows need
// the shader capability, which this target lacks: that switch alone does not
// turn on.
TEST_F(Lifecycle, InitAndFreeLogEveryStepInOrder)
{
    EXPECT_FALSE(PEVRANO::free());
    EXPECT_EQ(log.text(), "");
    EXPECT_EQ(PEVRANO::getVideoMemory(), 0u);
    ASSERT_TRUE(PEVRANO::init(nullptr)) << log.text();
    EXPECT_TRUE(PEVRANO::isActive());
    EXPECT_TRUE(PVSETTINGS::isActive());
    expectLog(log.fresh(), initLines());

    PVSETTINGS other;
    other.setWindowX(100);
    EXPECT_FALSE(PEVRANO::init(&other));
    EXPECT_EQ(log.fresh(), "   [!] PEVRANO already active\n");
    EXPECT_TRUE(PEVRANO::isActive());
    EXPECT_EQ(PVSETTINGS::getSDLWindowX(), 240);
    ASSERT_FALSE(PVSHADER::useShadows());
    PEVRANO::shadowingOn();
    EXPECT_FALSE(PEVRANO::isShadowed());
    PEVRANO::wireframeOn();
    EXPECT_TRUE(PEVRANO::isWireframed());

    // The video memory budget is 16 MB; nothing checks the counter, so popping
    // more than was pushed wraps around.
    EXPECT_EQ(PEVRANO::getVideoMemory(), 16777216u);
    EXPECT_EQ(PEVRANO::getUsedVideoMemory(), 0u);
    EXPECT_EQ(PEVRANO::pushVideoMemory(1000u), 1000u);
    EXPECT_EQ(PEVRANO::popVideoMemory(1001u), 4294967295u);
    EXPECT_EQ(PEVRANO::getFreeVideoMemory(), 16777217u);
    EXPECT_EQ(PEVRANO::pushVideoMemory(16777217u), 16777216u);
    EXPECT_EQ(PEVRANO::getFreeVideoMemory(), 0u);
    EXPECT_EQ(PEVRANO::pushVideoMemory(1u), 16777217u);
    EXPECT_EQ(PEVRANO::getFreeVideoMemory(), 4294967295u);

    ASSERT_TRUE(PEVRANO::free());
    EXPECT_FALSE(PVSETTINGS::isActive());
    EXPECT_FALSE(PEVRANO::free());
    expectLog(log.fresh(), readLogLines(PEVRANO_TEST_DATA "/expected/shutdown.log"));
    // The counters outlive the engine.
    EXPECT_EQ(PEVRANO::getVideoMemory(), 16777216u);
    EXPECT_EQ(PEVRANO::getUsedVideoMemory(), 16777217u);
}

// No surface offers 64 depth bits: the settings step fails after counting the
// configurations.
TEST_F(Lifecycle, FailingDisplayStepUnwindsAndInitCanBeRetried)
{
    PVSETTINGS impossible;
    impossible.setZetaDepth(64);
    expectInitFails(&impossible, "          Font path   : ''",
                    {like("      OpenGL ES [0-9]+\\.[0-9]+"), exact("      Number of available configs: 0"),
                     exact("   [!] Unable to find enough EGL configurations @ PVSETTINGS::init"),
                     exact("   [!] Unable to init settings @ PEVRANO::init")});
}

// The GL state class is already active: its step fails and only the settings,
// started before it, are released.
TEST_F(Lifecycle, FailingOpenGLStepReleasesTheSettings)
{
    {
        GlContext context;
        ASSERT_TRUE(PVTESTACCESS::openglInit());
    }
    expectInitFails(nullptr, "   Settings initialized",
                    {exact("   [!] OpenGL already active @ PVOPENGL::init"),
                     exact("   [!] Unable to init OpenGL @ PEVRANO::init"), exact("   Release settings..."),
                     exact("   Settings released")},
                    [] { EXPECT_TRUE(PVTESTACCESS::openglFree()); });
}

// The render list is already allocated: its step fails, the steps before it
// are released last first (shaders, GL state, settings), and the list the
// engine did not allocate is left alone.
TEST_F(Lifecycle, FailingRenderListStepReleasesTheEarlierStepsInReverse)
{
    ASSERT_TRUE(PVELEMENT::init(16));
    expectInitFails(nullptr, "   OpenGL initialized",
                    {exact("   [!] Already active @ PVELEMENT::init"),
                     exact("   [!] Rendering elements failed to initialize @ PEVRANO::init"),
                     exact("   Release OpenGL..."), exact("   OpenGL released"),
                     exact("   Release settings..."), exact("   Settings released")},
                    [] {
                        EXPECT_TRUE(PVELEMENT::isActive());
                        PVELEMENT::free();
                    });
}

// Windows no display can open (over 16384 a side, over the off-screen
// surface's largest, empty, and under X larger than the screen) and negative
// buffer sizes never reach SDL.
TEST_F(Lifecycle, UnopenableSizesAndDepthsAreRefusedBeforeSDL)
{
    // Width, height, colour, depth and stencil bits.
    std::vector<std::array<int, 5>> cases = {
        {2147483647, 320, 16, 16, 0}, {240, 2147483647, 16, 16, 0}, {16385, 16, 16, 16, 0},
        {5000, 16, 16, 16, 0},        {0, 320, 16, 16, 0},          {240, 320, 16, -1, 0},
        {240, 320, 16, 16, -8},       {507, 240, 17, 24, 8},        {507, 240, 15, 24, 0}};
    if (onX11())
        cases.push_back({8000, 8000, 16, 16, 0});
    for (const auto& [x, y, colour, zeta, stencil] : cases) {
        PVSETTINGS settings;
        settings.setWindowX(x);
        settings.setWindowY(y);
        settings.setColorDepth(colour);
        settings.setZetaDepth(zeta);
        settings.setStencilDepth(stencil);
        expectInitFails(&settings, "          Water map size : 256",
                        {exact("   [!] Incompatible config @ PVSETTINGS::init"),
                         exact("   [!] Unable to init settings @ PEVRANO::init")},
                        [&settings] {
                            EXPECT_FALSE(settings.isOk());
                            EXPECT_TRUE(PVSETTINGS().isOk());
                        });
    }
}
