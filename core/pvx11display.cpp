// X11 back-end: EGL draws into the window SDL opened on the X server, placed
// borderless at the top-left corner above the other windows.
#include "core/pvdisplay.h"
#include "core/pvevent.h"
#include "core/pvsettings.h"

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
        SDL_EnableUNICODE(1);
        placeWindowOnTop(width, height);
        return eglGetDisplay(reinterpret_cast<EGLNativeDisplayType>(info.info.x11.display));
    }

    EGLint surfaceType() const override { return EGL_WINDOW_BIT; }

    EGLSurface createSurface(EGLConfig config, int, int) override
    {
        return eglCreateWindowSurface(display, config, window, nullptr);
    }

public:
    bool readEvent(PVEVENT* event) override
    {
        SDL_Event read;
        while (SDL_PollEvent(&read))
            if (translate(read, event))
                return true;
        return false;
    }

private:
    // SDL's event as the engine's; false for those it does not report.
    static bool translate(const SDL_Event& read, PVEVENT* event)
    {
        *event = PVEVENT();
        switch (read.type) {
        case SDL_KEYDOWN:
        case SDL_KEYUP:
            event->type = read.type == SDL_KEYDOWN ? PV_EVENT_KEY_DOWN : PV_EVENT_KEY_UP;
            event->key = read.key.keysym.sym;
            event->unicode = read.key.keysym.unicode;
            return true;
        case SDL_MOUSEMOTION:
            event->type = PV_EVENT_POINTER_MOVE;
            event->x = read.motion.x;
            event->y = read.motion.y;
            return true;
        case SDL_MOUSEBUTTONDOWN:
        case SDL_MOUSEBUTTONUP:
            return translateButton(read.button, event);
        case SDL_VIDEORESIZE:
            // SDL also reports the screen-sized window of its full-screen
            // mode: only a window the settings made resizable resizes.
            event->type = PV_EVENT_RESIZE;
            event->width = read.resize.w;
            event->height = read.resize.h;
            return PVSETTINGS::isSDLResizable();
        case SDL_QUIT:
            event->type = PV_EVENT_QUIT;
            return true;
        default:
            return false;
        }
    }

    // SDL 1.2 reports the wheel as buttons 4 (up) and 5 (down), pressed and
    // released at once: the press is the wheel event.
    static bool translateButton(const SDL_MouseButtonEvent& read, PVEVENT* event)
    {
        const bool down = read.type == SDL_MOUSEBUTTONDOWN;
        event->x = read.x;
        event->y = read.y;
        if (read.button == SDL_BUTTON_WHEELUP || read.button == SDL_BUTTON_WHEELDOWN) {
            event->type = PV_EVENT_WHEEL;
            event->wheel = read.button == SDL_BUTTON_WHEELUP ? 1 : -1;
            return down;
        }
        event->type = down ? PV_EVENT_POINTER_DOWN : PV_EVENT_POINTER_UP;
        event->button = read.button;
        return true;
    }

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
