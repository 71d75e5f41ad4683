// X11 back-end: EGL draws into the window SDL opened on the X server, placed
// borderless at the top-left corner above the other windows.
#include "core/pvdisplay.h"

#include <initializer_list>

// Xlib last: its macros (None, Bool, Status...) stay out of the engine headers.
#include <SDL/SDL.h>
#include <SDL/SDL_syswm.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>

namespace {

class PVX11DISPLAY : public PVDISPLAY {
public:
    explicit PVX11DISPLAY(const SDL_SysWMinfo& info) : info(info) {}

protected:
    EGLDisplay openDisplay(int width, int height) override
    {
        window = static_cast<EGLNativeWindowType>(info.info.x11.window);
        placeWindowOnTop(width, height);
        return eglGetDisplay(reinterpret_cast<EGLNativeDisplayType>(info.info.x11.display));
    }

    EGLint surfaceType() const override { return EGL_WINDOW_BIT; }

    EGLSurface createSurface(EGLConfig config, int, int) override
    {
        return eglCreateWindowSurface(display, config, window, nullptr);
    }

private:
    // The window is moved into the corner of its parent, and both the
    // window-manager frame and the full-screen window are raised and flagged
    // "above" for the window manager.
    void placeWindowOnTop(int width, int height) const
    {
        Display* server = info.info.x11.display;
        info.info.x11.lock_func();
        XMoveResizeWindow(server, info.info.x11.window, 0, 0, width, height);
        Atom state = XInternAtom(server, "_NET_WM_STATE", False);
        Atom above = XInternAtom(server, "_NET_WM_STATE_ABOVE", False);
        for (Window top : {info.info.x11.wmwindow, info.info.x11.fswindow}) {
            XChangeProperty(server, top, state, XA_ATOM, 32, PropModeReplace,
                            reinterpret_cast<unsigned char*>(&above), 1);
            XEvent event = {};
            event.xclient.type = ClientMessage;
            event.xclient.window = top;
            event.xclient.message_type = state;
            event.xclient.format = 32;
            event.xclient.data.l[0] = 1;  // add the state
            event.xclient.data.l[1] = static_cast<long>(above);
            XSendEvent(server, DefaultRootWindow(server), False,
                       SubstructureRedirectMask | SubstructureNotifyMask, &event);
            XRaiseWindow(server, top);
        }
        XSync(server, False);
        info.info.x11.unlock_func();
    }

    const SDL_SysWMinfo info;
};

}  // namespace

std::unique_ptr<PVDISPLAY> pvCreateX11Display(const SDL_SysWMinfo* info)
{
    if (!info || info->subsystem != SDL_SYSWM_X11)
        return nullptr;
    return std::make_unique<PVX11DISPLAY>(*info);
}
