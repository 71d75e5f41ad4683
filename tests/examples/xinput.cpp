// Sends input to the X display's windows as a user would: a key press to the
// window listening for keys, or a pointer move and click to the one listening
// for the pointer, or to the window given first. Exits with 0 once sent, 1
// when no window listens (yet), 2 on bad arguments.
//     xinput [window <id>] key <keysym name>        e.g. xinput key Escape
//     xinput [window <id>] click <x> <y>
#include <X11/Xlib.h>

#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <utility>

namespace {

// The first window, depth first from the root, that some client listens to
// for the events of mask: where a user's key presses or clicks would go.
Window listeningWindow(Display* display, Window window, long mask)
{
    XWindowAttributes attributes;
    if (XGetWindowAttributes(display, window, &attributes) && attributes.map_state == IsViewable &&
        (attributes.all_event_masks & mask))
        return window;
    Window root, parent, *children = nullptr;
    unsigned int count = 0;
    Window found = 0;
    if (XQueryTree(display, window, &root, &parent, &children, &count)) {
        for (unsigned int i = 0; i < count && !found; ++i)
            found = listeningWindow(display, children[i], mask);
        XFree(children);
    }
    return found;
}

// Sends events of each type (with its mask) to window at (x, y). Key, button
// and motion events share the fields set here; detail is the key code or the
// button.
void send(Display* display, Window window, std::initializer_list<std::pair<int, long>> steps, int x, int y,
          unsigned int detail)
{
    for (const auto& [type, mask] : steps) {
        XEvent event {};
        XButtonEvent& common = event.xbutton;
        common.type = type;
        common.display = display;
        common.window = window;
        common.root = DefaultRootWindow(display);
        common.same_screen = True;
        common.x = x;
        common.y = y;
        common.button = type == MotionNotify ? 0 : detail;
        XSendEvent(display, window, True, mask, &event);
        XFlush(display);
    }
}

}  // namespace

int main(int argc, char** argv)
{
    Window given = 0;
    if (argc > 2 && std::strcmp(argv[1], "window") == 0) {
        given = std::strtoul(argv[2], nullptr, 0);
        argc -= 2;
        argv += 2;
    }
    const bool key = argc == 3 && std::strcmp(argv[1], "key") == 0;
    const bool click = argc == 4 && std::strcmp(argv[1], "click") == 0;
    if (!key && !click)
        return 2;
    Display* display = XOpenDisplay(nullptr);
    if (!display)
        return 1;
    const Window target =
        given ? given
              : listeningWindow(display, DefaultRootWindow(display), key ? KeyPressMask : ButtonPressMask);
    if (target && key)
        send(display, target, {{KeyPress, KeyPressMask}, {KeyRelease, KeyReleaseMask}}, 0, 0,
             XKeysymToKeycode(display, XStringToKeysym(argv[2])));
    else if (target)
        send(display, target,
             {{MotionNotify, PointerMotionMask},
              {ButtonPress, ButtonPressMask},
              {ButtonRelease, ButtonReleaseMask}},
             std::atoi(argv[2]), std::atoi(argv[3]), Button1);
    XCloseDisplay(display);
    return target ? 0 : 1;
}
