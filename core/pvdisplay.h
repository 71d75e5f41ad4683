// The engine's way onto the screen: a back-end makes the EGL display, surface
// and context once SDL has set the video mode, presents the frames and
// releases them again. Each back-end lives in a source file of its own and
// has one line in the table of PVDISPLAY::choose.
#ifndef PEVRANO_CORE_PVDISPLAY_H
#define PEVRANO_CORE_PVDISPLAY_H

#include <EGL/egl.h>

#include <memory>

struct PVEVENT;

class PVDISPLAY {
public:
    virtual ~PVDISPLAY() = default;

    // Before SDL's video starts: without a window system, and unless the
    // application chose a driver, SDL uses its dummy driver.
    static void prepareVideoDriver();
    // After the video mode is set: the first back-end that can draw for the
    // window SDL opened. Never null: the last one draws off-screen.
    static std::unique_ptr<PVDISPLAY> choose();
    // Before the video mode is set: whether a width x height window can be
    // drawn at all, never more than 16384 pixels a side (no GL this engine
    // runs on has a larger viewport), nor more than the off-screen surface
    // allows once SDL's video runs without a window system.
    static bool canOpen(int width, int height);

    // Display, a configuration with zetaDepth depth bits, a width x height
    // surface and a context, made current. False after its log line, keeping
    // the handles made so far.
    bool open(int width, int height, int zetaDepth);
    // Releases the context, the surface and the display; the handles keep
    // their stale values.
    void close();
    // Presents the frame drawn; only while open.
    bool swap();
    // The next event of the back-end's own source (its window's queue);
    // false when none is waiting. Off-screen there is none.
    virtual bool readEvent(PVEVENT*) { return false; }

    // The native window drawn into (0 off-screen).
    EGLNativeWindowType getWindow() const { return window; }

protected:
    PVDISPLAY() = default;

    // The back-end's EGL display (its window placed first, if it has one,
    // and kept in `window`).
    virtual EGLDisplay openDisplay(int width, int height) = 0;
    // EGL_WINDOW_BIT, EGL_PBUFFER_BIT...: what the configuration must draw on.
    virtual EGLint surfaceType() const = 0;
    virtual EGLSurface createSurface(EGLConfig config, int width, int height) = 0;

    EGLNativeWindowType window = 0;
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLSurface surface = EGL_NO_SURFACE;
    EGLContext context = EGL_NO_CONTEXT;
};

#endif
