// A configuration file through the whole start-up: loaded into PVSETTINGS,
// handed to PEVRANO::init (off-screen), one frame drawn, the engine freed.
#include <cstdint>
#include <cstdlib>

#include <pevrano.h>

#include "fuzzinput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool quiet = [] {
        unsetenv("DISPLAY");
        kvfSetConsoleEcho(false);
        return true;
    }();
    (void)quiet;

    const char* path = "fuzz-config.cfg";
    if (!writeFuzzInput(path, data, size))
        return 0;

    PVSETTINGS settings;
    if (!settings.load(path) || !PEVRANO::init(&settings))
        return 0;
    PVCAMERA* camera = new PVCAMERA();
    PEVRANO::clear(true, true, false);
    PEVRANO::begin3D(camera);
    PEVRANO::end3D(false);
    PEVRANO::begin2D();
    PEVRANO::end2D();
    PEVRANO::swap();
    // Frees the camera with every other node.
    PEVRANO::free();
    return 0;
}
