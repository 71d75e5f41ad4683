// The picture decoders (PNG and JPEG, recognised by their first bytes, and
// the dispatch to TGA) on arbitrary file contents, twice into the same
// texture (the second load replaces the first bitmap), then the upload with
// its mipmap chain built in place (no GL context: the GL calls do nothing)
// and the release.
#include <cstddef>
#include <cstdint>

#include "assets/pvtexture.h"
#include "core/pevrano.h"
#include "foundation/kvflog.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    // The engine is not started, so its video budget is 0: lend the account
    // a gigabyte once so that uploads never call the garbage collector.
    static const bool budget = (kvfSetConsoleEcho(false), PEVRANO::popVideoMemory(1u << 30), true);
    (void)budget;
    PVTEXTURE texture;
    texture.loadImage(data, size, "fuzz.png");
    texture.loadImage(data, size, "fuzz.png");
    texture.update();
    texture.unload(true);
    return 0;
}
