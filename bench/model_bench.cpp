// Costs of a converted character (the X sample "Testwuson", skinned and
// animated): conversion against Assimp's own import with the same
// post-processing (the floor), and posing by animation per frame.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <string>

#include <pevrano.h>

#include "modelconverter.h"

namespace {

const std::string character = "/usr/share/assimp/models/X/Testwuson.X";

std::string scratchFolder()
{
    static const std::string folder = [] {
        char pattern[] = "/tmp/pevrano-bench-XXXXXX";
        const char* made = mkdtemp(pattern);
        return std::string(made ? made : "/tmp");
    }();
    return folder;
}

// The floor of a conversion: reading the model with the converter's steps.
void BM_ImportOnly(benchmark::State& state)
{
    std::string error;
    for (auto _ : state) {
        Assimp::Importer importer;
        benchmark::DoNotOptimize(ModelConverter::importModel(importer, character, error));
    }
}
BENCHMARK(BM_ImportOnly)->Unit(benchmark::kMillisecond);

void BM_ConvertCharacter(benchmark::State& state)
{
    kvfSetConsoleEcho(false);
    ConvertOptions options;
    options.input = character;
    options.output = scratchFolder() + "/character.pve";
    std::string error;
    for (auto _ : state) {
        Assimp::Importer importer;
        const aiScene* scene = ModelConverter::importModel(importer, character, error);
        ModelConverter converter(scene, options);
        if (!scene || !converter.convert(error)) {
            state.SkipWithError(error.c_str());
            return;
        }
    }
}
BENCHMARK(BM_ConvertCharacter)->Unit(benchmark::kMillisecond);

}  // namespace
