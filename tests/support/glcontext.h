// Off-screen EGL + OpenGL ES 1.1 context for tests that need a current GL
// context without starting the whole engine: a pbuffer surface on the
// surfaceless platform, 5-6-5 colour, 16-bit depth.
#ifndef PEVRANO_TESTS_SUPPORT_GLCONTEXT_H
#define PEVRANO_TESTS_SUPPORT_GLCONTEXT_H

#include <EGL/egl.h>

namespace pvtest {

class GlContext {
public:
    // Creates the surface and context and makes them current; ok() tells
    // whether it worked.
    explicit GlContext(int width = 64, int height = 64);
    // Releases the context and the surface.
    ~GlContext();
    GlContext(const GlContext&) = delete;
    GlContext& operator=(const GlContext&) = delete;

    bool ok() const { return context_ != EGL_NO_CONTEXT; }

private:
    bool chooseConfig(EGLConfig* config);

    EGLDisplay display_ = EGL_NO_DISPLAY;
    EGLSurface surface_ = EGL_NO_SURFACE;
    EGLContext context_ = EGL_NO_CONTEXT;
};

}  // namespace pvtest

#endif
