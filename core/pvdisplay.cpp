#include "core/pvdisplay.h"

#include <cstdlib>
#include <cstring>

#include <SDL/SDL.h>
#include <SDL/SDL_syswm.h>

#include "foundation/kvflog.h"

// A back-end's factory returns null when SDL's window (info, null when SDL
// has no window information) is not of its kind.
using PVDISPLAYFACTORY = std::unique_ptr<PVDISPLAY> (*)(const SDL_SysWMinfo* info);
std::unique_ptr<PVDISPLAY> pvCreateX11Display(const SDL_SysWMinfo* info);
std::unique_ptr<PVDISPLAY> pvCreateSurfacelessDisplay(const SDL_SysWMinfo* info);

// Whether the off-screen surface can be width x height pixels.
bool pvSurfacelessDisplayFits(int width, int height);

namespace {

// Room for this many EGL configurations.
const int maxConfigs = 32;
// The largest window side any back-end opens.
const int largestSide = 16384;

// Every back-end, most wanted first; the last one takes any window.
const PVDISPLAYFACTORY backEnds[] = {pvCreateX11Display, pvCreateSurfacelessDisplay};

// SDL's video runs on its dummy driver: there is no window system.
bool videoWithoutWindowSystem()
{
    char driver[16];
    return SDL_VideoDriverName(driver, sizeof driver) && std::strcmp(driver, "dummy") == 0;
}

}  // namespace

void PVDISPLAY::prepareVideoDriver()
{
    const char* display = std::getenv("DISPLAY");
    if ((!display || !*display) && !std::getenv("SDL_VIDEODRIVER"))
        setenv("SDL_VIDEODRIVER", "dummy", 0);
}

bool PVDISPLAY::canOpen(int width, int height)
{
    if (width < 1 || height < 1 || width > largestSide || height > largestSide)
        return false;
    return !videoWithoutWindowSystem() || pvSurfacelessDisplayFits(width, height);
}

std::unique_ptr<PVDISPLAY> PVDISPLAY::choose()
{
    SDL_SysWMinfo info;
    info.version.major = 1;
    info.version.minor = 2;
    info.version.patch = 12;
    const SDL_SysWMinfo* window = SDL_GetWMInfo(&info) == 1 ? &info : nullptr;
    for (PVDISPLAYFACTORY create : backEnds)
        if (std::unique_ptr<PVDISPLAY> display = create(window))
            return display;
    return nullptr;
}

bool PVDISPLAY::open(int width, int height, int zetaDepth)
{
    display = openDisplay(width, height);
    EGLint major = 0;
    EGLint minor = 0;
    if (!eglInitialize(display, &major, &minor)) {
        kvfLog("   [!] Unable to initialize EGL @ PVSETTINGS::init\n");
        return false;
    }
    kvfLog("      OpenGL ES %d.%d\n", major, minor);

    const EGLint attributes[] = {EGL_LEVEL,     0,       EGL_DEPTH_SIZE, zetaDepth, EGL_SURFACE_TYPE,
                                 surfaceType(), EGL_NONE};
    EGLConfig configs[maxConfigs];
    EGLint count = 0;
    if (!eglChooseConfig(display, attributes, configs, maxConfigs, &count)) {
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

    surface = createSurface(config, width, height);
    if (surface == EGL_NO_SURFACE) {
        kvfLog("   [!] Unable to create EGL surface @ PVSETTINGS::init\n");
        return false;
    }
    context = eglCreateContext(display, config, EGL_NO_CONTEXT, nullptr);
    if (context == EGL_NO_CONTEXT) {
        kvfLog("   [!] Unable to create EGL rendering context\n");
        return false;
    }
    eglMakeCurrent(display, surface, surface, context);
    return true;
}

void PVDISPLAY::close()
{
    if (display == EGL_NO_DISPLAY)
        return;
    eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    if (context != EGL_NO_CONTEXT)
        eglDestroyContext(display, context);
    if (surface != EGL_NO_SURFACE)
        eglDestroySurface(display, surface);
    eglTerminate(display);
}

bool PVDISPLAY::swap() { return eglSwapBuffers(display, surface) == EGL_TRUE; }
