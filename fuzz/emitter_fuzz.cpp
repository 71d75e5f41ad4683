// Emitter descriptions from arbitrary bytes: read from a file, and when one
// is accepted, a few frames simulated out of a small pool.
#include <cstdint>
#include <cstdio>
#include <initializer_list>

#include "assets/pvemitter.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool poolReady = PVEMITTER::init(256);
    const char* path = "fuzz-input.xml";
    FILE* file = std::fopen(path, "wb");
    if (file == nullptr || !poolReady)
        return 0;
    std::fwrite(data, 1, size, file);
    std::fclose(file);

    PVEMITTER emitter;
    if (emitter.load(path)) {
        for (float seconds : {0.016f, 0.5f, 0.001f, 3.0f, 0.1f})
            emitter.update(seconds);
        emitter.getRadius();
    }
    return 0;
}
