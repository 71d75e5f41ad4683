// An arbitrary byte stream played as a video file: load, play through to the
// end of the file (where the video reopens itself and stops), then a rewind.
// No texture is set, so decoding and colour conversion run without GL.
#include <cstdint>

#include "foundation/kvflog.h"
#include "fuzzinput.h"
#include "video/pvvideo.h"

namespace {
// Enough steps for any input of a few hundred kilobytes to reach its end; the
// bound keeps a decoder that stopped asking for data from running forever.
// Few steps per update: a playing video that reaches the end of a tiny file
// reopens it again and again for the rest of the update's steps.
const int maxUpdates = 32768;
const unsigned int stepsPerUpdate = 8;
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    kvfSetConsoleEcho(false);
    const char* path = "fuzz-input.mpg";
    if (!writeFuzzInput(path, data, size))
        return 0;

    PVVIDEO video;
    if (!video.load(path))
        return 0;
    video.play();
    for (int round = 0; round < maxUpdates && video.update(stepsPerUpdate); round++) {}
    video.rewind();
    video.update(stepsPerUpdate);
    return 0;
}
