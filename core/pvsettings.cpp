#include "core/pvsettings.h"

#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "assets/pvanim.h"
#include "assets/pvshader.h"
#include "assets/pvtexture.h"
#include "core/pevrano.h"
#include "core/pvopengl.h"
#include "foundation/kvffile.h"
#include "foundation/kvflog.h"
#include "foundation/kvfparser.h"

// Xlib last: its macros (None, Bool, Status...) stay out of the engine headers.
#include <EGL/eglext.h>
#include <GLES/gl.h>
#include <SDL/SDL.h>
#include <SDL/SDL_syswm.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>

bool PVSETTINGS::active = false;
char PVSETTINGS::SDLTitle[PV_SETTINGS_STRING_SIZE] = "";
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
EGLNativeWindowType PVSETTINGS::window = 0;
EGLDisplay PVSETTINGS::glesDisplay = EGL_NO_DISPLAY;
EGLSurface PVSETTINGS::glesSurface = EGL_NO_SURFACE;
EGLContext PVSETTINGS::glesContext = EGL_NO_CONTEXT;
bool PVSETTINGS::offscreen = false;

namespace {

// The video mode is always opened with these flags, whatever the settings ask.
const Uint32 videoModeFlags = SDL_FULLSCREEN | SDL_NOFRAME | SDL_HWSURFACE;
// Room for this many EGL configurations.
const int maxConfigs = 32;

// Copies a non-null string shorter than the field; otherwise the field stays.
void copyIfFits(char* field, const char* value)
{
    if (value && std::strlen(value) < PV_SETTINGS_STRING_SIZE)
        std::strcpy(field, value);
}

// Borderless at the top-left corner, above the other windows: the window is
// moved into the corner of its parent and both the window-manager frame and
// the full-screen window are raised and flagged "above" for the window manager.
void placeWindowOnTop(const SDL_SysWMinfo& info, int width, int height)
{
    Display* display = info.info.x11.display;
    info.info.x11.lock_func();
    XMoveResizeWindow(display, info.info.x11.window, 0, 0, width, height);
    Atom state = XInternAtom(display, "_NET_WM_STATE", False);
    Atom above = XInternAtom(display, "_NET_WM_STATE_ABOVE", False);
    for (Window top : {info.info.x11.wmwindow, info.info.x11.fswindow}) {
        XChangeProperty(display, top, state, XA_ATOM, 32, PropModeReplace,
                        reinterpret_cast<unsigned char*>(&above), 1);
        XEvent event = {};
        event.xclient.type = ClientMessage;
        event.xclient.window = top;
        event.xclient.message_type = state;
        event.xclient.format = 32;
        event.xclient.data.l[0] = 1;  // add the state
        event.xclient.data.l[1] = static_cast<long>(above);
        XSendEvent(display, DefaultRootWindow(display), False,
                   SubstructureRedirectMask | SubstructureNotifyMask, &event);
        XRaiseWindow(display, top);
    }
    XSync(display, False);
    info.info.x11.unlock_func();
}

}  // namespace

PVSETTINGS::PVSETTINGS()
    : windowX(240),
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

void PVSETTINGS::setTitle(const char* value) { copyIfFits(title, value); }
void PVSETTINGS::setPVEPath(const char* value) { copyIfFits(pvePath, value); }
void PVSETTINGS::setPVAPath(const char* value) { copyIfFits(pvaPath, value); }
void PVSETTINGS::setMPGPath(const char* value) { copyIfFits(mpgPath, value); }
void PVSETTINGS::setTexturePath(const char* value) { copyIfFits(texturePath, value); }
void PVSETTINGS::setShaderPath(const char* value) { copyIfFits(shaderPath, value); }
void PVSETTINGS::setFontPath(const char* value) { copyIfFits(fontPath, value); }

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
    if (!openWindow() || !openEGL())
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
    PEVRANO::setPVEPath(pvePath);
    kvfLog("          PVE path    : '%s'\n", pvePath);
    PVANIM::setPVAPath(pvaPath);
    kvfLog("          PVA path    : '%s'\n", pvaPath);
    PVTEXTURE::setPath(texturePath);
    kvfLog("          Texture path: '%s'\n", texturePath);
    PVSHADER::setPath(shaderPath);
    kvfLog("          Shader path : '%s'\n", shaderPath);
    // Font class step: PVFONT::setPath(fontPath).
    kvfLog("          Font path   : '%s'\n", fontPath);
}

// Opens the borderless video mode. Under X11 the window is kept for EGL and
// placed on top; without a window system (SDL's dummy driver gives no window
// information) the display is drawn off-screen.
bool PVSETTINGS::openWindow()
{
    // Windowed modes open at the top-left corner unless the application asked otherwise.
    setenv("SDL_VIDEO_WINDOW_POS", "0,0", 0);
    SDL_WM_SetCaption(nullptr, nullptr);
    if (!SDL_SetVideoMode(windowX, windowY, colorDepth, videoModeFlags)) {
        kvfLog("   [!] Unsupported video config (%s) @ PVSETTINGS::init\n", SDL_GetError());
        return false;
    }
    SDL_SysWMinfo info;
    info.version.major = 1;
    info.version.minor = 2;
    info.version.patch = 12;
    offscreen = SDL_GetWMInfo(&info) != 1 || info.subsystem != SDL_SYSWM_X11;
    if (offscreen) {
        window = 0;
        glesDisplay = eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
        return true;
    }
    window = static_cast<EGLNativeWindowType>(info.info.x11.window);
    placeWindowOnTop(info, windowX, windowY);
    glesDisplay = eglGetDisplay(reinterpret_cast<EGLNativeDisplayType>(info.info.x11.display));
    return true;
}

// Display, configuration, surface and context. The configuration must be
// drawable through the surface kind in use: a window, or a pbuffer of the
// window's size off-screen.
bool PVSETTINGS::openEGL()
{
    EGLint major = 0;
    EGLint minor = 0;
    if (!eglInitialize(glesDisplay, &major, &minor)) {
        kvfLog("   [!] Unable to initialize EGL @ PVSETTINGS::init\n");
        return false;
    }
    kvfLog("      OpenGL ES %d.%d\n", major, minor);

    const EGLint attributes[] = {EGL_LEVEL, 0, EGL_DEPTH_SIZE, zetaDepth, EGL_SURFACE_TYPE,
                                 offscreen ? EGL_PBUFFER_BIT : EGL_WINDOW_BIT, EGL_NONE};
    EGLConfig configs[maxConfigs];
    EGLint count = 0;
    if (!eglChooseConfig(glesDisplay, attributes, configs, maxConfigs, &count)) {
        kvfLog("   [!] Unable to find correct EGL configurations @ PVSETTINGS::init\n");
        return false;
    }
    kvfLog("      Number of available configs: %d\n", count);
    if (count < 1) {
        kvfLog("   [!] Unable to find enough EGL configurations @ PVSETTINGS::init\n");
        return false;
    }
    // No colour sizes are asked for: the first configuration is used, and the
    // colour depth in force is whatever GL then reports for it.
    const EGLConfig config = configs[0];

    if (offscreen) {
        const EGLint size[] = {EGL_WIDTH, windowX, EGL_HEIGHT, windowY, EGL_NONE};
        glesSurface = eglCreatePbufferSurface(glesDisplay, config, size);
    } else {
        glesSurface = eglCreateWindowSurface(glesDisplay, config, window, nullptr);
    }
    if (glesSurface == EGL_NO_SURFACE) {
        kvfLog("   [!] Unable to create EGL surface @ PVSETTINGS::init\n");
        return false;
    }
    glesContext = eglCreateContext(glesDisplay, config, EGL_NO_CONTEXT, nullptr);
    if (glesContext == EGL_NO_CONTEXT) {
        kvfLog("   [!] Unable to create EGL rendering context\n");
        return false;
    }
    eglMakeCurrent(glesDisplay, glesSurface, glesSurface, glesContext);
    return true;
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
    if (glesDisplay != EGL_NO_DISPLAY) {
        eglMakeCurrent(glesDisplay, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        if (glesContext != EGL_NO_CONTEXT)
            eglDestroyContext(glesDisplay, glesContext);
        if (glesSurface != EGL_NO_SURFACE)
            eglDestroySurface(glesDisplay, glesSurface);
        eglTerminate(glesDisplay);
    }
    kvfLog("   Settings released\n");
    active = false;
    return true;
}

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
