#include "core/pvsettings.h"

#include <cstdlib>
#include <cstring>

#include "assets/pvanim.h"
#include "assets/pvshader.h"
#include "assets/pvtexture.h"
#include "core/pvdisplay.h"
#include "core/pvopengl.h"
#include "core/pvversion.h"
#include "foundation/kvffile.h"
#include "foundation/kvflog.h"
#include "foundation/kvfparser.h"
#include "foundation/kvfstring.h"
#include "gui/pvfont.h"

#include <GLES/gl.h>
#include <SDL/SDL.h>

bool PVSETTINGS::active = false;
char PVSETTINGS::SDLTitle[PV_SETTINGS_STRING_SIZE] = "";
void (*PVSETTINGS::pvePathReceiver)(const char*) = nullptr;
int PVSETTINGS::SDLWindowX = 0;
int PVSETTINGS::SDLWindowY = 0;
int PVSETTINGS::SDLColorDepth = 0;
int PVSETTINGS::SDLZetaDepth = 0;
int PVSETTINGS::SDLStencilDepth = 0;
bool PVSETTINGS::SDLFullScreen = false;
bool PVSETTINGS::SDLResizable = false;
bool PVSETTINGS::SDLLandscape = false;
bool PVSETTINGS::SDLUseShaders = false;
int PVSETTINGS::SDLRenderingElements = 0;
int PVSETTINGS::SDLShadowMapSize = 0;
int PVSETTINGS::SDLFBOSizeX = 0;
int PVSETTINGS::SDLFBOSizeY = 0;
int PVSETTINGS::SDLWaterSize = 0;
bool PVSETTINGS::SDLForceFBO = false;
int PVSETTINGS::KVAAudioChannels = 0;
int PVSETTINGS::KVAAudioBuffers = 0;
int PVSETTINGS::KVAAudioElements = 0;
std::unique_ptr<PVDISPLAY> PVSETTINGS::display;

namespace {

// The video mode is always opened with these flags, whatever the settings ask.
const Uint32 videoModeFlags = SDL_FULLSCREEN | SDL_NOFRAME | SDL_HWSURFACE;

// The colour depths SDL makes whole surfaces for; 0 asks for the display's
// own. With 15 bits or an odd depth SDL sizes the rows of its surface for
// fewer bytes a pixel than it then fills them with.
bool hasPixelFormat(int colorDepth)
{
    static const int depths[] = {0, 8, 16, 24, 32};
    for (int depth : depths)
        if (colorDepth == depth)
            return true;
    return false;
}

}  // namespace

PVSETTINGS::PVSETTINGS() :
    windowX(240),
    windowY(320),
    colorDepth(16),
    zetaDepth(16),
    stencilDepth(0),
    fullScreen(true),
    resizable(false),
    landscape(false),
    CAVESplashScreen(false),
    audioChannels(16),
    audioBuffers(32),
    audioElements(128),
    renderingElements(0),
    useShaders(false),
    shadowMapSize(1024),
    FBOSizeX(1024),
    FBOSizeY(768),
    waterSize(256),
    forceFBO(false)
{
    std::strcpy(title, PEVRANO_VERSION_STRING);
    pvePath[0] = pvaPath[0] = mpgPath[0] = '\0';
    texturePath[0] = shaderPath[0] = fontPath[0] = '\0';
}

void PVSETTINGS::setTitle(const char* value) { kvfCopyIfFits(title, sizeof title, value); }
void PVSETTINGS::setPVEPath(const char* value) { kvfCopyIfFits(pvePath, sizeof pvePath, value); }
void PVSETTINGS::setPVAPath(const char* value) { kvfCopyIfFits(pvaPath, sizeof pvaPath, value); }
void PVSETTINGS::setMPGPath(const char* value) { kvfCopyIfFits(mpgPath, sizeof mpgPath, value); }
void PVSETTINGS::setTexturePath(const char* value) { kvfCopyIfFits(texturePath, sizeof texturePath, value); }
void PVSETTINGS::setShaderPath(const char* value) { kvfCopyIfFits(shaderPath, sizeof shaderPath, value); }
void PVSETTINGS::setFontPath(const char* value) { kvfCopyIfFits(fontPath, sizeof fontPath, value); }

bool PVSETTINGS::load(const char* fileName)
{
    if (!fileName) {
        kvfLog("   [!] Invalid params @ PVSETTINGS::load\n");
        return false;
    }
    if (!kvfFileExists(fileName)) {
        kvfLog("   [!] File not found (%s) @ PVSETTINGS::load\n", fileName);
        return false;
    }
    kvfParser parser;
    if (!kvfOpenParser(&parser, fileName))
        return true;
    kvfStripComments(&parser, '#');

    struct NumberKey {
        const char* key;
        int* number;
        bool* flag;
    };
    const NumberKey numbers[] = {
        {"PEVRANO_windowX", &windowX, nullptr},
        {"PEVRANO_windowY", &windowY, nullptr},
        {"PEVRANO_colorDepth", &colorDepth, nullptr},
        {"PEVRANO_zetaDepth", &zetaDepth, nullptr},
        {"PEVRANO_stencilDepth", &stencilDepth, nullptr},
        {"PEVRANO_fullScreen", nullptr, &fullScreen},
        {"PEVRANO_resizable", nullptr, &resizable},
        {"PEVRANO_landscape", nullptr, &landscape},
        {"PEVRANO_CAVESplashScreen", nullptr, &CAVESplashScreen},
        {"PEVRANO_renderingElements", &renderingElements, nullptr},
        {"PEVRANO_useShaders", nullptr, &useShaders},
        {"PEVRANO_shadowMapSize", &shadowMapSize, nullptr},
        {"PEVRANO_FBOSizeX", &FBOSizeX, nullptr},
        {"PEVRANO_FBOSizeY", &FBOSizeY, nullptr},
        {"PEVRANO_waterSize", &waterSize, nullptr},
        {"PEVRANO_audioChannels", &audioChannels, nullptr},
        {"PEVRANO_audioBuffers", &audioBuffers, nullptr},
        {"PEVRANO_audioElements", &audioElements, nullptr},
    };
    for (const NumberKey& entry : numbers) {
        int value = 0;
        if (!kvfGetInt(&parser, entry.key, &value))
            continue;
        if (entry.number)
            *entry.number = value;
        else
            *entry.flag = value != 0;
    }

    struct StringKey {
        const char* key;
        char* field;
    };
    const StringKey strings[] = {
        {"PEVRANO_title", title},
        {"PEVRANO_pvePath", pvePath},
        {"PEVRANO_pvaPath", pvaPath},
        {"PEVRANO_mpgPath", mpgPath},
        {"PEVRANO_texturePath", texturePath},
        {"PEVRANO_shaderPath", shaderPath},
        {"PEVRANO_fontPath", fontPath},
    };
    for (const StringKey& entry : strings) {
        // A missing key leaves the buffer untouched; a value without a pair of
        // quotes is stored raw.
        char value[PV_SETTINGS_STRING_SIZE];
        std::strcpy(value, entry.field);
        kvfGetString(&parser, entry.key, value);
        std::strcpy(entry.field, value);
    }

    kvfCloseParser(&parser);
    return true;
}

bool PVSETTINGS::isOk()
{
    // Before SDL's video starts there is no driver to ask.
    if (!SDL_WasInit(SDL_INIT_VIDEO))
        return false;
    // Negative buffer sizes, colour depths SDL overruns its own surface with
    // and windows no display can open never reach SDL.
    if (zetaDepth < 0 || stencilDepth < 0 || !hasPixelFormat(colorDepth) ||
        !PVDISPLAY::canOpen(windowX, windowY))
        return false;
    return SDL_VideoModeOK(windowX, windowY, colorDepth,
                           SDL_FULLSCREEN | SDL_DOUBLEBUF | SDL_NOFRAME | SDL_HWSURFACE) != 0;
}

bool PVSETTINGS::init()
{
    if (active) {
        kvfLog("   [!] Settings already active\n");
        return false;
    }
    kvfLog("   Init settings...\n");
    logRequestedConfiguration();
    if (!isOk()) {
        kvfLog("   [!] Incompatible config @ PVSETTINGS::init\n");
        return false;
    }
    handPathsOn();
    if (!openWindow())
        return false;

    std::strcpy(SDLTitle, title);
    SDLWindowX = windowX;
    SDLWindowY = windowY;
    readBackBitDepths();
    SDLFullScreen = fullScreen;
    SDLResizable = resizable;
    SDLLandscape = landscape;
    SDLUseShaders = useShaders;
    logConfigurationInUse();
    active = true;
    return true;
}

void PVSETTINGS::logRequestedConfiguration()
{
    kvfLog("      Configuration to set:\n");
    kvfLog("          X: %u, Y: %u\n", unsigned(windowX), unsigned(windowY));
    kvfLog("          depth: %u, zeta: %u, stencil: %u\n", unsigned(colorDepth), unsigned(zetaDepth),
           unsigned(stencilDepth));
    kvfLog("          title: '%s'\n", title);
    kvfLog("          fullscreen: %d\n", fullScreen);
    kvfLog("          resizable : %d\n", resizable);
    kvfLog("          landscape : %d\n", landscape);
    kvfLog("          shaders: %d\n", useShaders);
    kvfLog("          max elems: %d\n", renderingElements);
    kvfLog("          audio: c: %d, b: %d, e: %d\n", audioChannels, audioBuffers, audioElements);
    kvfLog("          shadow map size: %d\n", shadowMapSize);
    kvfLog("          FBO map sizes  : %d, %d\n", FBOSizeX, FBOSizeY);
    kvfLog("          Water map size : %d\n", waterSize);
}

// Each folder goes to the class that loads files from it (the video folder stays here).
void PVSETTINGS::handPathsOn()
{
    if (pvePathReceiver)
        pvePathReceiver(pvePath);
    kvfLog("          PVE path    : '%s'\n", pvePath);
    PVANIM::setPVAPath(pvaPath);
    kvfLog("          PVA path    : '%s'\n", pvaPath);
    PVTEXTURE::setPath(texturePath);
    kvfLog("          Texture path: '%s'\n", texturePath);
    PVSHADER::setPath(shaderPath);
    kvfLog("          Shader path : '%s'\n", shaderPath);
    PVFONT::setPath(fontPath);
    kvfLog("          Font path   : '%s'\n", fontPath);
}

// Opens the borderless video mode, then the display through the back-end
// that suits the window SDL opened.
bool PVSETTINGS::openWindow()
{
    // Windowed modes open at the top-left corner unless the application asked otherwise.
    setenv("SDL_VIDEO_WINDOW_POS", "0,0", 0);
    SDL_WM_SetCaption(nullptr, nullptr);
    if (!SDL_SetVideoMode(windowX, windowY, colorDepth, videoModeFlags)) {
        kvfLog("   [!] Unsupported video config (%s) @ PVSETTINGS::init\n", SDL_GetError());
        return false;
    }
    display = PVDISPLAY::choose();
    return display->open(windowX, windowY, zetaDepth);
}

// Colour, depth and stencil bits as GL reports them for the surface in use.
void PVSETTINGS::readBackBitDepths()
{
    GLint red = 0, green = 0, blue = 0, alpha = 0;
    glGetIntegerv(GL_RED_BITS, &red);
    glGetIntegerv(GL_GREEN_BITS, &green);
    glGetIntegerv(GL_BLUE_BITS, &blue);
    glGetIntegerv(GL_ALPHA_BITS, &alpha);
    SDLColorDepth = red + green + blue + alpha;
    glGetIntegerv(GL_DEPTH_BITS, &SDLZetaDepth);
    glGetIntegerv(GL_STENCIL_BITS, &SDLStencilDepth);
}

void PVSETTINGS::logConfigurationInUse()
{
    kvfLog("      Configuration used:\n");
    kvfLog("          SizeX: %u, SizeY: %u\n", unsigned(SDLWindowX), unsigned(SDLWindowY));
    kvfLog("          depth: %u, zeta: %u, stencil: %u\n", unsigned(SDLColorDepth), unsigned(SDLZetaDepth),
           unsigned(SDLStencilDepth));
    kvfLog("          title: '%s'\n", title);
    kvfLog("          fullscreen: %d\n", SDLFullScreen);
    kvfLog("          landscape : %d\n", SDLLandscape);
    kvfLog("          shaders: %d\n", SDLUseShaders);
    kvfLog("          audio: c: %d, b: %d, e: %d\n", KVAAudioChannels, KVAAudioBuffers, KVAAudioElements);
    kvfLog("   Settings initialized\n");
}

bool PVSETTINGS::free()
{
    if (!active)
        return false;
    kvfLog("   Release settings...\n");
    display->close();
    kvfLog("   Settings released\n");
    active = false;
    return true;
}

bool PVSETTINGS::swapBuffers() { return active && display->swap(); }

bool PVSETTINGS::readDisplayEvent(PVEVENT* event) { return active && display->readEvent(event); }

EGLNativeWindowType PVSETTINGS::getSDLWindow() { return display ? display->getWindow() : 0; }

bool PVSETTINGS::resize(int x, int y, int width, int height)
{
    const int oldX = SDLWindowX;
    const int oldY = SDLWindowY;
    SDLWindowX = width;
    SDLWindowY = height;
    if (PVOPENGL::resize(x, y, width, height))
        return true;
    SDLWindowX = oldX;
    SDLWindowY = oldY;
    return false;
}
