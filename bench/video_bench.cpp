// Video playback of a 256 x 192 MPEG-1 clip, in frames per second: libmpeg2's
// own decoding and RGB conversion of the clip (the floor), then the engine's
// update, which adds the file handling, its parse loop and the upload into a
// 256 x 256 texture. Each iteration of the engine's benchmark plays the clip
// once through libmpeg2 alone and once through the engine, so that both see
// the same load on the machine; "vs_floor" is the engine's processor time
// over the floor's (1.10 = 10% more), without a texture (nothing reaches
// GL), into an RGB texture and into an RGBA one.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <string>

extern "C" {
#include <mpeg2dec/mpeg2.h>
#include <mpeg2dec/mpeg2convert.h>
}

#include <pevrano.h>

#include "benchengine.h"

namespace {

using pvbench::processSeconds;

const char* const clipFolder = PEVRANO_VIDEO_DATA;
const char* const clipName = "film256.mpg";

// Decodes and converts the whole clip once; returns the pictures shown.
int64_t decodeClipWithLibrary(const char* path)
{
    FILE* file = std::fopen(path, "rb");
    if (!file)
        return 0;
    mpeg2dec_t* decoder = mpeg2_init();
    const mpeg2_info_t* info = mpeg2_info(decoder);
    uint8_t buffer[4096];
    int64_t pictures = 0;
    for (;;) {
        const mpeg2_state_t state = mpeg2_parse(decoder);
        if (state == STATE_BUFFER) {
            const size_t count = std::fread(buffer, 1, sizeof(buffer), file);
            if (count == 0)
                break;
            mpeg2_buffer(decoder, buffer, buffer + count);
        } else if (state == STATE_SEQUENCE) {
            mpeg2_convert(decoder, mpeg2convert_rgb24, nullptr);
        } else if ((state == STATE_SLICE || state == STATE_END) && info->display_fbuf) {
            benchmark::DoNotOptimize(info->display_fbuf->buf[0][0]);
            pictures++;
        }
    }
    mpeg2_close(decoder);
    std::fclose(file);
    return pictures;
}

void BM_VideoFloorLibraryDecode256x192(benchmark::State& state)
{
    const std::string path = std::string(clipFolder) + clipName;
    int64_t pictures = 0;
    for (auto _ : state)
        pictures += decodeClipWithLibrary(path.c_str());
    if (pictures == 0) {
        state.SkipWithError("clip not decoded");
        return;
    }
    state.counters["fps"] = benchmark::Counter(double(pictures), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_VideoFloorLibraryDecode256x192)->Unit(benchmark::kMillisecond);

// One play of the clip from its start: single steps until the end of the
// file reopens it and stops it.
void playClipOnce(PVVIDEO& video)
{
    video.play();
    while (video.update(1)) {}
}

void BM_VideoEngineUpdate256x192(benchmark::State& state)
{
    // The engine started off-screen for a GL context to upload into.
    if (!pvbench::engineStarted()) {
        state.SkipWithError("engine did not start");
        return;
    }
    // Argument 0 plays without a texture (the engine's own overhead alone),
    // 3 into an RGB texture, 4 into an RGBA one.
    const unsigned int format = unsigned(state.range(0));
    PVTEXTURE* texture = new PVTEXTURE();
    texture->create(256, 256, format ? format : 3);
    texture->setFilter(false, false, true);
    PVVIDEO::setMPGPath(clipFolder);
    PVVIDEO* video = new PVVIDEO();
    if (!video->load(clipName)) {
        state.SkipWithError("clip not loaded");
        return;
    }
    video->setTexture(format ? texture : nullptr);
    const std::string path = std::string(clipFolder) + clipName;
    int64_t pictures = 0;
    double floorSeconds = 0.0;
    double engineSeconds = 0.0;
    for (auto _ : state) {
        const double floorStart = processSeconds();
        pictures += decodeClipWithLibrary(path.c_str());
        const double engineStart = processSeconds();
        playClipOnce(*video);
        glFinish();
        engineSeconds += processSeconds() - engineStart;
        floorSeconds += engineStart - floorStart;
    }
    if (engineSeconds > 0.0 && floorSeconds > 0.0) {
        state.counters["fps"] = double(pictures) / engineSeconds;
        state.counters["vs_floor"] = engineSeconds / floorSeconds;
    }
    PVVIDEO::cleanUp();
    delete texture;
}
BENCHMARK(BM_VideoEngineUpdate256x192)
    ->ArgName("texture")
    ->Arg(0)
    ->Arg(3)
    ->Arg(4)
    ->Unit(benchmark::kMillisecond);

}  // namespace
