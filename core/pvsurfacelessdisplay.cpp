// Off-screen back-end, for machines without a window system (SDL's dummy
// driver gives no window): Mesa's surfaceless platform draws into a pbuffer
// of the window's size, and nothing is shown.
#include "core/pvdisplay.h"

struct SDL_SysWMinfo;

#include <EGL/eglext.h>

#include <memory>
#include <vector>

namespace {

EGLDisplay surfacelessDisplay()
{
    return eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
}

class PVSURFACELESSDISPLAY : public PVDISPLAY {
public:
protected:
    EGLDisplay openDisplay(int, int) override
    {
        window = 0;
        return surfacelessDisplay();
    }

    EGLint surfaceType() const override { return EGL_PBUFFER_BIT; }

    EGLSurface createSurface(EGLConfig config, int width, int height) override
    {
        const EGLint size[] = {EGL_WIDTH, width, EGL_HEIGHT, height, EGL_NONE};
        return eglCreatePbufferSurface(display, config, size);
    }
};

}  // namespace

// The largest pbuffer of any configuration bounds the size. The display is
// left initialised: it may be the one in use, and opening it again is harmless.
bool pvSurfacelessDisplayFits(int width, int height)
{
    const EGLDisplay display = surfacelessDisplay();
    if (!eglInitialize(display, nullptr, nullptr))
        return false;
    EGLint count = 0;
    if (!eglGetConfigs(display, nullptr, 0, &count) || count < 1)
        return false;
    std::vector<EGLConfig> configs(count);
    eglGetConfigs(display, configs.data(), count, &count);
    for (EGLConfig config : configs) {
        EGLint largestWidth = 0, largestHeight = 0;
        eglGetConfigAttrib(display, config, EGL_MAX_PBUFFER_WIDTH, &largestWidth);
        eglGetConfigAttrib(display, config, EGL_MAX_PBUFFER_HEIGHT, &largestHeight);
        if (width <= largestWidth && height <= largestHeight)
            return true;
    }
    return false;
}

// Takes any video mode: the last resort.
std::unique_ptr<PVDISPLAY> pvCreateSurfacelessDisplay(const SDL_SysWMinfo*)
{
    return std::make_unique<PVSURFACELESSDISPLAY>();
}
