// Off-screen EGL context on Mesa's surfaceless platform.
#include "support/glcontext.h"

#include <EGL/eglext.h>
#include <GLES/gl.h>

namespace pvtest {

namespace {

    EGLDisplay surfacelessDisplay()
    {
        auto getPlatformDisplay =
            reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(eglGetProcAddress("eglGetPlatformDisplayEXT"));
        if (!getPlatformDisplay)
            return EGL_NO_DISPLAY;
        return getPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    }

    EGLint configValue(EGLDisplay display, EGLConfig config, EGLint attribute)
    {
        EGLint value = 0;
        eglGetConfigAttrib(display, config, attribute, &value);
        return value;
    }

}  // namespace

GlContext::GlContext(int width, int height)
{
    display_ = surfacelessDisplay();
    if (display_ == EGL_NO_DISPLAY || !eglInitialize(display_, nullptr, nullptr))
        return;
    EGLConfig config;
    if (!eglBindAPI(EGL_OPENGL_ES_API) || !chooseConfig(&config))
        return;
    const EGLint surfaceAttributes[] = {EGL_WIDTH, width, EGL_HEIGHT, height, EGL_NONE};
    surface_ = eglCreatePbufferSurface(display_, config, surfaceAttributes);
    if (surface_ == EGL_NO_SURFACE)
        return;
    const EGLint contextAttributes[] = {EGL_CONTEXT_CLIENT_VERSION, 1, EGL_NONE};
    EGLContext context = eglCreateContext(display_, config, EGL_NO_CONTEXT, contextAttributes);
    if (context == EGL_NO_CONTEXT)
        return;
    if (!eglMakeCurrent(display_, surface_, surface_, context)) {
        eglDestroyContext(display_, context);
        return;
    }
    context_ = context;
    glViewport(0, 0, width, height);
}

GlContext::~GlContext()
{
    if (display_ == EGL_NO_DISPLAY)
        return;
    eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    if (context_ != EGL_NO_CONTEXT)
        eglDestroyContext(display_, context_);
    if (surface_ != EGL_NO_SURFACE)
        eglDestroySurface(display_, surface_);
    // The display stays initialised: terminating it unloads the driver, whose
    // leaks would then no longer be attributable to it.
}

// The first pbuffer configuration with exactly 5-6-5 colour.
bool GlContext::chooseConfig(EGLConfig* config)
{
    const EGLint red = 5;
    const EGLint green = 6;
    const EGLint attributes[] = {EGL_SURFACE_TYPE,
                                 EGL_PBUFFER_BIT,
                                 EGL_RENDERABLE_TYPE,
                                 EGL_OPENGL_ES_BIT,
                                 EGL_RED_SIZE,
                                 red,
                                 EGL_GREEN_SIZE,
                                 green,
                                 EGL_BLUE_SIZE,
                                 red,
                                 EGL_DEPTH_SIZE,
                                 16,
                                 EGL_NONE};
    EGLConfig configs[64];
    EGLint count = 0;
    if (!eglChooseConfig(display_, attributes, configs, 64, &count))
        return false;
    for (EGLint i = 0; i < count; i++) {
        if (configValue(display_, configs[i], EGL_RED_SIZE) != red ||
            configValue(display_, configs[i], EGL_GREEN_SIZE) != green ||
            configValue(display_, configs[i], EGL_BLUE_SIZE) != red)
            continue;
        *config = configs[i];
        return true;
    }
    return false;
}

}  // namespace pvtest
