// Texture costs: TGA and PNG decoding from memory (256x256, 24-bit; TGA raw
// and run-length) in bytes of file per second, against stb_image decoding the
// same bytes in the same run; and the upload of a 256x256 RGBA texture with
// its CPU-built mipmap chain against the same upload without mipmaps.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#define STB_IMAGE_IMPLEMENTATION
#define STBI_ONLY_TGA
#define STBI_ONLY_PNG
// A private copy: the model benchmarks link the tools' full build of stb_image.
#define STB_IMAGE_STATIC
#include <stb/stb_image.h>

#include <pevrano.h>
#include <png.h>

#include "benchengine.h"

namespace {

const unsigned int side = 256;

std::string tgaHeader(unsigned char type, unsigned char depth)
{
    const unsigned char header[18] = {0, 0, type, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 1, depth, 0};
    return std::string(reinterpret_cast<const char*>(header), sizeof(header));
}

// A picture with some structure: a gradient crossed by bands.
unsigned char sample(unsigned int x, unsigned int y, unsigned int channel)
{
    return static_cast<unsigned char>((x * (channel + 1) + y * 3 + ((x / 16 + y / 8) % 3) * 40) & 255);
}

const std::string& rawFile()
{
    static const std::string file = [] {
        std::string bytes = tgaHeader(2, 24);
        for (unsigned int y = 0; y < side; y++)
            for (unsigned int x = 0; x < side; x++)
                for (unsigned int c = 0; c < 3; c++)
                    bytes += char(sample(x, y, c));
        return bytes;
    }();
    return file;
}

// Rows of runs of 1 to 24 equal pixels: short runs go in raw packets, longer
// ones in repeat packets, as an encoder would write them.
const std::string& runLengthFile()
{
    static const std::string file = [] {
        std::string bytes = tgaHeader(10, 24);
        unsigned int seed = 12345;
        std::string pending;  // pixels of the raw packet being gathered
        auto flushRaw = [&] {
            if (!pending.empty()) {
                bytes += char(pending.size() / 3 - 1);
                bytes += pending;
                pending.clear();
            }
        };
        for (unsigned int y = 0; y < side; y++) {
            for (unsigned int x = 0; x < side;) {
                seed = seed * 1103515245u + 12345u;
                const unsigned int run = std::min(1 + (seed >> 16) % 24, side - x);
                const char pixel[3] = {char(sample(x, y, 0)), char(sample(x, y, 1)), char(sample(x, y, 2))};
                if (run < 3) {
                    for (unsigned int i = 0; i < run; i++)
                        pending.append(pixel, 3);
                    if (pending.size() >= 3 * 120)
                        flushRaw();
                } else {
                    flushRaw();
                    bytes += char(127 + run);
                    bytes.append(pixel, 3);
                }
                x += run;
            }
            flushRaw();
        }
        return bytes;
    }();
    return file;
}

// The same picture as rawFile, as a PNG written by libpng.
const std::string& pngFile()
{
    static const std::string file = [] {
        const char* pixels = rawFile().data() + 18;  // after the TGA header
        png_image image {};
        image.version = PNG_IMAGE_VERSION;
        image.width = side;
        image.height = side;
        image.format = PNG_FORMAT_RGB;
        png_alloc_size_t size = 0;
        png_image_write_to_memory(&image, nullptr, &size, 0, pixels, 0, nullptr);
        std::string bytes(size, '\0');
        png_image_write_to_memory(&image, &bytes[0], &size, 0, pixels, 0, nullptr);
        return bytes;
    }();
    return file;
}

const unsigned char* bytesOf(const std::string& file)
{
    return reinterpret_cast<const unsigned char*>(file.data());
}

void decodeWithEngine(benchmark::State& state, const std::string& file)
{
    kvfSetConsoleEcho(false);
    PVTEXTURE texture;
    for (auto _ : state) {
        bool loaded = texture.loadImage(bytesOf(file), file.size(), "bench");
        benchmark::DoNotOptimize(loaded);
        benchmark::DoNotOptimize(texture.getBitmap()[0]);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(file.size()));
}

void decodeWithStb(benchmark::State& state, const std::string& file)
{
    for (auto _ : state) {
        int width = 0, height = 0, channels = 0;
        unsigned char* pixels =
            stbi_load_from_memory(bytesOf(file), int(file.size()), &width, &height, &channels, 0);
        benchmark::DoNotOptimize(pixels[0]);
        stbi_image_free(pixels);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(file.size()));
}

void BM_TgaRawEngine(benchmark::State& state) { decodeWithEngine(state, rawFile()); }
void BM_TgaRawStb(benchmark::State& state) { decodeWithStb(state, rawFile()); }
void BM_TgaRunLengthEngine(benchmark::State& state) { decodeWithEngine(state, runLengthFile()); }
void BM_TgaRunLengthStb(benchmark::State& state) { decodeWithStb(state, runLengthFile()); }
BENCHMARK(BM_TgaRawEngine);
BENCHMARK(BM_TgaRawStb);
BENCHMARK(BM_TgaRunLengthEngine);
BENCHMARK(BM_TgaRunLengthStb);
void BM_PngEngine(benchmark::State& state) { decodeWithEngine(state, pngFile()); }
void BM_PngStb(benchmark::State& state) { decodeWithStb(state, pngFile()); }
BENCHMARK(BM_PngEngine);
BENCHMARK(BM_PngStb);

// Upload of a 256x256 RGBA texture; the file is decoded again between
// iterations (not timed), since the chain overwrites the bitmap and every
// upload grows the charged size.
void upload(benchmark::State& state, bool mipmapped)
{
    if (!pvbench::engineStarted()) {
        state.SkipWithError("engine did not start");
        return;
    }
    std::string file = tgaHeader(2, 32);
    file.resize(file.size() + side * side * 4, char(77));
    PVTEXTURE texture;
    texture.setFilter(true, mipmapped, false);
    for (auto _ : state) {
        state.PauseTiming();
        texture.unload(true);
        texture.loadTGA(bytesOf(file), file.size(), "bench.tga");
        state.ResumeTiming();
        texture.update();
    }
    texture.unload(true);
}

void BM_Upload256Mipmapped(benchmark::State& state) { upload(state, true); }
void BM_Upload256Plain(benchmark::State& state) { upload(state, false); }
BENCHMARK(BM_Upload256Mipmapped)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Upload256Plain)->Unit(benchmark::kMicrosecond);

}  // namespace
