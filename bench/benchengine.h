// The engine started once per benchmark process, 640x480 off-screen, by
// whichever benchmark runs first; every benchmark that needs GL or the
// registries starts it through here.
#ifndef PEVRANO_BENCH_BENCHENGINE_H
#define PEVRANO_BENCH_BENCHENGINE_H

#include <time.h>

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

// Processor time of the whole process, every thread (llvmpipe's included).
inline double processSeconds()
{
    timespec now;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

}  // namespace pvbench

#endif
