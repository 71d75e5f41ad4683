#include "core/pvdisplay.h"

#include <cstdlib>

#include <SDL/SDL.h>
#include <SDL/SDL_syswm.h>

#include "foundation/kvflog.h"

// Every back-end, most wanted first. Each source file defines a factory
// pvCreate<name>Display, which returns null when SDL's window (info, null
// when SDL has no window information) is not of its kind.
#define PV_DISPLAY_BACKENDS(BACKEND)                                                                         \
    BACKEND(X11)                                                                                             \
    BACKEND(Surfaceless)

#define PV_DECLARE_DISPLAY_FACTORY(name)                                                                     \
    PVDISPLAY* pvCreate##name##Display(const SDL_SysWMinfo* info, const PVDISPLAYHANDLES& handles);
PV_DISPLAY_BACKENDS(PV_DECLARE_DISPLAY_FACTORY)

namespace {

// Room for this many EGL configurations.
const int maxConfigs = 32;

}  // namespace

void PVDISPLAY::prepareVideoDriver()
{
    const char* display = std::getenv("DISPLAY");
    if ((!display || !*display) && !std::getenv("SDL_VIDEODRIVER"))
        setenv("SDL_VIDEODRIVER", "dummy", 0);
}

PVDISPLAY* PVDISPLAY::choose(const PVDISPLAYHANDLES& handles)
{
    SDL_SysWMinfo info;
    info.version.major = 1;
    info.version.minor = 2;
    info.version.patch = 12;
    const SDL_SysWMinfo* window = SDL_GetWMInfo(&info) == 1 ? &info : nullptr;
#define PV_TRY_DISPLAY_FACTORY(name)                                                                         \
    if (PVDISPLAY* display = pvCreate##name##Display(window, handles))                                       \
        return display;
    PV_DISPLAY_BACKENDS(PV_TRY_DISPLAY_FACTORY)
#undef PV_TRY_DISPLAY_FACTORY
    return nullptr;
}

bool PVDISPLAY::open(int width, int height, int zetaDepth)
{
    handles.display = openDisplay(width, height);
    EGLint major = 0;
    EGLint minor = 0;
    if (!eglInitialize(handles.display, &major, &minor)) {
        kvfLog("   [!] Unable to initialize EGL @ PVSETTINGS::init\n");
        return false;
    }
    kvfLog("      OpenGL ES %d.%d\n", major, minor);

    const EGLint attributes[] = {EGL_LEVEL,     0,       EGL_DEPTH_SIZE, zetaDepth, EGL_SURFACE_TYPE,
                                 surfaceType(), EGL_NONE};
    EGLConfig configs[maxConfigs];
    EGLint count = 0;
    if (!eglChooseConfig(handles.display, attributes, configs, maxConfigs, &count)) {
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

    handles.surface = createSurface(config, width, height);
    if (handles.surface == EGL_NO_SURFACE) {
        kvfLog("   [!] Unable to create EGL surface @ PVSETTINGS::init\n");
        return false;
    }
    handles.context = eglCreateContext(handles.display, config, EGL_NO_CONTEXT, nullptr);
    if (handles.context == EGL_NO_CONTEXT) {
        kvfLog("   [!] Unable to create EGL rendering context\n");
        return false;
    }
    eglMakeCurrent(handles.display, handles.surface, handles.surface, handles.context);
    return true;
}

void PVDISPLAY::close()
{
    if (handles.display == EGL_NO_DISPLAY)
        return;
    eglMakeCurrent(handles.display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    if (handles.context != EGL_NO_CONTEXT)
        eglDestroyContext(handles.display, handles.context);
    if (handles.surface != EGL_NO_SURFACE)
        eglDestroySurface(handles.display, handles.surface);
    eglTerminate(handles.display);
}

bool PVDISPLAY::swap() { return eglSwapBuffers(handles.display, handles.surface) == EGL_TRUE; }
