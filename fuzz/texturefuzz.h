// The texture decoders' fuzz targets: one input decoded twice into the same
// texture (the second load replaces the first bitmap), then the upload with
// its mipmap chain built in place (no GL context: the GL calls do nothing)
// and the release.
#ifndef PEVRANO_FUZZ_TEXTUREFUZZ_H
#define PEVRANO_FUZZ_TEXTUREFUZZ_H

#include <cstddef>
#include <cstdint>

#include "assets/pvtexture.h"
#include "core/pevrano.h"
#include "foundation/kvflog.h"

using PVTEXTURELOADER = bool (PVTEXTURE::*)(const unsigned char*, size_t, const char*);

inline int fuzzTextureLoader(PVTEXTURELOADER loader, const uint8_t* data, size_t size)
{
    // The engine is not started, so its video budget is 0: lend the account
    // a gigabyte once so that uploads never call the garbage collector.
    static const bool budget = (kvfSetConsoleEcho(false), PEVRANO::popVideoMemory(1u << 30), true);
    (void)budget;
    PVTEXTURE texture;
    (texture.*loader)(data, size, "fuzz");
    (texture.*loader)(data, size, "fuzz");
    texture.update();
    texture.unload(true);
    return 0;
}

#endif
