// Off-screen back-end, for machines without a window system (SDL's dummy
// driver gives no window): Mesa's surfaceless platform draws into a pbuffer
// of the window's size, and nothing is shown.
#include "core/pvdisplay.h"

#include <EGL/eglext.h>

namespace {

class PVSURFACELESSDISPLAY : public PVDISPLAY {
public:
    explicit PVSURFACELESSDISPLAY(const PVDISPLAYHANDLES& handles) : PVDISPLAY(handles) {}

protected:
    EGLDisplay openDisplay(int, int) override
    {
        handles.window = 0;
        return eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    }

    EGLint surfaceType() const override { return EGL_PBUFFER_BIT; }

    EGLSurface createSurface(EGLConfig config, int width, int height) override
    {
        const EGLint size[] = {EGL_WIDTH, width, EGL_HEIGHT, height, EGL_NONE};
        return eglCreatePbufferSurface(handles.display, config, size);
    }
};

}  // namespace

// Takes any video mode: the last resort.
PVDISPLAY* pvCreateSurfacelessDisplay(const SDL_SysWMinfo*, const PVDISPLAYHANDLES& handles)
{
    return new PVSURFACELESSDISPLAY(handles);
}
