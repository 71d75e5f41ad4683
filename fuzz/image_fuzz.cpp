// The picture decoders on arbitrary file contents: PNG and JPEG, recognised
// by their first bytes, and the hand-over of anything else to TGA.
#include "texturefuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    return fuzzTextureLoader(&PVTEXTURE::loadImage, data, size);
}
