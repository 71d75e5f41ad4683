// The engine started once per benchmark process, off-screen, at the size
// the first caller asks for.
#ifndef PEVRANO_BENCH_BENCHENGINE_H
#define PEVRANO_BENCH_BENCHENGINE_H

#include <pevrano.h>

namespace pvbench {

inline bool engineStarted(int width = 640, int height = 480)
{
    static const bool started = [width, height] {
        kvfSetConsoleEcho(false);
        PVSETTINGS settings;
        settings.setWindowX(width);
        settings.setWindowY(height);
        settings.setFullScreen(false);
        // The default configuration gives the largest render list.
        return PEVRANO::init(&settings);
    }();
    return started;
}

}  // namespace pvbench

#endif
