// The settings record: defaults (what loading no key leaves), setters, the
// PEVRANO_* configuration file with its parser quirks, and the configuration in force after start-up.
#include "assets/pvshader.h"
#include "enginefixture.h"

using namespace pvtest;

namespace {

// Every field of a settings record, for whole-record comparisons.
std::string describe(PVSETTINGS& s)
{
    char text[4096];
    snprintf(text, sizeof text,
             "title=%s\nx=%d\ny=%d\ndepth=%d\nzeta=%d\nstencil=%d\nfull=%d\nresizable=%d\nlandscape=%d\n"
             "cave=%d\naudio=%d,%d,%d\nelems=%d\nshaders=%d\nshadow=%d\nfbo=%d,%d\nwater=%d\nforceFBO=%d\n"
             "pve=%s\npva=%s\nmpg=%s\ntexture=%s\nshader=%s\nfont=%s\n",
             s.getTitle(), s.getWindowX(), s.getWindowY(), s.getColorDepth(), s.getZetaDepth(),
             s.getStencilDepth(), s.isFullScreen(), s.isResizable(), s.isLandscape(), s.isCAVESplashScreen(),
             s.getAudioChannels(), s.getAudioBuffers(), s.getAudioElements(), s.getRenderingElements(),
             s.getShaders(), s.getShadowMapSize(), s.getFBOSizeX(), s.getFBOSizeY(), s.getWaterSize(),
             s.getForceFBO(), s.getPVEPath(), s.getPVAPath(), s.getMPGPath(), s.getTexturePath(),
             s.getShaderPath(), s.getFontPath());
    return text;
}

using SettingsFile = EngineTest;

}  // namespace

TEST_F(SettingsFile, FilesWithoutKeysChangeNothing)
{
    writeFile("comments.cfg", "# PEVRANO_windowX=480\n   # PEVRANO_title=\"x\"\n");
    writeFile("empty.cfg", "");
    PVSETTINGS s;
    EXPECT_FALSE(s.load(nullptr));
    EXPECT_FALSE(s.load("absent.cfg"));
    EXPECT_TRUE(s.load("comments.cfg"));
    EXPECT_TRUE(s.load("empty.cfg"));
    EXPECT_EQ(log.text(), "   [!] Invalid params @ PVSETTINGS::load\n"
                          "   [!] File not found (absent.cfg) @ PVSETTINGS::load\n"
                          "kvfOpenParser: file 'empty.cfg' is empty\n");
    EXPECT_EQ(describe(s), readFile(PEVRANO_TEST_DATA "/expected/settings-defaults.txt"));
}

// data/settings/game.cfg: blanks go before the search, the first line holding
// a key wins, keys match inside longer text, and the character after the key
// is skipped whatever it is.
TEST_F(SettingsFile, KeysFollowTheParserRules)
{
    writeFile("game.cfg", readFile(PEVRANO_TEST_DATA "/settings/game.cfg"));
    PVSETTINGS s;
    s.setRenderingElements(77);
    ASSERT_TRUE(s.load("game.cfg"));
    EXPECT_EQ(log.text(), "");
    EXPECT_EQ(describe(s), readFile(PEVRANO_TEST_DATA "/expected/settings-game.txt"));
}

// The file's values reach the display; what is in force comes from GL, not
// from the request: no colour sizes go to EGL, the first configuration is used
// (5-6-5 off-screen) whatever depth is asked. The folders are handed on to the
// engine and shaders, the values with no consumer on this target stay zero,
// and a resize changes the size and the viewport.
TEST_F(SettingsFile, LoadedValuesOpenTheDisplayWithWhatGlGives)
{
    EXPECT_EQ(PVSETTINGS::getSDLWindowX(), 0);
    EXPECT_EQ(PVSETTINGS::getSDLColorDepth(), 0);
    writeFile("small.cfg", "PEVRANO_windowX=160\nPEVRANO_windowY=120\nPEVRANO_title=\"Small\"\n"
                           "PEVRANO_colorDepth=24\nPEVRANO_landscape=1\nPEVRANO_renderingElements=64\n"
                           "PEVRANO_fullScreen=0\nPEVRANO_resizable=1\nPEVRANO_useShaders=1\n"
                           "PEVRANO_pvePath=scenes/\nPEVRANO_shaderPath=shaders/\n");
    PVSETTINGS s;
    ASSERT_TRUE(s.load("small.cfg"));
    s.setForceFBO(true);
    start(s);

    GLint red = 0, green = 0, blue = 0, alpha = 0, depth = 0, stencil = 0;
    glGetIntegerv(GL_RED_BITS, &red);
    glGetIntegerv(GL_GREEN_BITS, &green);
    glGetIntegerv(GL_BLUE_BITS, &blue);
    glGetIntegerv(GL_ALPHA_BITS, &alpha);
    glGetIntegerv(GL_DEPTH_BITS, &depth);
    glGetIntegerv(GL_STENCIL_BITS, &stencil);
    EXPECT_EQ(PVSETTINGS::getSDLColorDepth(), red + green + blue + alpha);
    EXPECT_EQ(PVSETTINGS::getSDLZetaDepth(), depth);
    EXPECT_EQ(PVSETTINGS::getSDLStencilDepth(), stencil);
    EXPECT_GE(depth, 16);
    EXPECT_EQ(PVSETTINGS::getSDLWindow() != EGLNativeWindowType(0), onX11());
    if (!onX11()) {
        EXPECT_EQ(red * 100 + green * 10 + blue, 565);
    }
    // Full screen, resizable, landscape, shaders, forced frame buffers.
    EXPECT_EQ((std::vector<bool> {PVSETTINGS::isSDLFullScreen(), PVSETTINGS::isSDLResizable(),
                                  PVSETTINGS::isSDLLandscape(), PVSETTINGS::getSDLShaders(),
                                  PVSETTINGS::getSDLForceFBO()}),
              (std::vector<bool> {false, true, true, true, false}));
    EXPECT_STREQ(PVSETTINGS::getSDLTitle(), "Small");
    EXPECT_STREQ(PEVRANO::getPVEPath(), "scenes/");
    EXPECT_STREQ(PVSHADER::getPath(), "shaders/");
    EXPECT_EQ(viewportInForce(), (std::array<GLint, 4> {0, 0, 160, 120}));

    ASSERT_TRUE(PVSETTINGS::resize(0, 0, 200, 100));
    EXPECT_EQ(PVSETTINGS::getSDLWindowX(), 200);
    EXPECT_EQ(PVSETTINGS::getSDLWindowY(), 100);
    EXPECT_EQ(viewportInForce(), (std::array<GLint, 4> {0, 0, 200, 100}));
}
