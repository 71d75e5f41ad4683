// The engine started once per benchmark process, 640x480 off-screen, by
// whichever benchmark runs first; every benchmark that needs GL or the
// registries starts it through here.
#ifndef PEVRANO_BENCH_BENCHENGINE_H
#define PEVRANO_BENCH_BENCHENGINE_H

#include <pevrano.h>

namespace pvbench {

inline bool engineStarted()
{
    static const bool started = [] {
        kvfSetConsoleEcho(false);
        PVSETTINGS settings;
        settings.setWindowX(640);
        settings.setWindowY(480);
        settings.setFullScreen(false);
        // The default configuration gives the largest render list.
        return PEVRANO::isActive() || PEVRANO::init(&settings);
    }();
    return started;
}

}  // namespace pvbench

#endif
