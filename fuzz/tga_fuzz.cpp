// The TGA decoder on arbitrary file contents.
#include "texturefuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    return fuzzTextureLoader(&PVTEXTURE::loadTGA, data, size);
}
