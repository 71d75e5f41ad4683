// Off-screen EGL + OpenGL ES 1.1 context for tests that need a current GL
// context without starting the whole engine: a pbuffer surface on the
// surfaceless platform, 5-6-5 (default) or 8-8-8 colour, 16-bit depth.
#ifndef PEVRANO_TESTS_GLCONTEXT_H
#define PEVRANO_TESTS_GLCONTEXT_H

#include <EGL/egl.h>

#include <cstdint>

namespace pvtest {

class GlContext {
public:
    enum Format { RGB565, RGB888 };

    // Creates the surface and context and makes them current; ok() tells
    // whether it worked.
    explicit GlContext(int width = 64, int height = 64, Format format = RGB565);
    // Releases the context and the surface.
    ~GlContext();
    GlContext(const GlContext&) = delete;
    GlContext& operator=(const GlContext&) = delete;

    bool ok() const { return context_ != EGL_NO_CONTEXT; }
    int width() const { return width_; }
    int height() const { return height_; }
    // Colour channel bits of the chosen configuration (red, green, blue).
    int redBits() const { return redBits_; }
    int greenBits() const { return greenBits_; }
    int blueBits() const { return blueBits_; }

    // RGBA bytes of one pixel of the colour buffer (origin bottom left),
    // packed R in the lowest byte.
    uint32_t readPixel(int x, int y) const;

private:
    bool chooseConfig(Format format, EGLConfig* config);

    EGLDisplay display_ = EGL_NO_DISPLAY;
    EGLSurface surface_ = EGL_NO_SURFACE;
    EGLContext context_ = EGL_NO_CONTEXT;
    int width_;
    int height_;
    int redBits_ = 0;
    int greenBits_ = 0;
    int blueBits_ = 0;
};

}  // namespace pvtest

#endif
