// Costs of a converted character (the X sample "Testwuson", skinned and
// animated), each beside the floor it is to be read against:
// - conversion, against Assimp's own import with the same post-processing;
// - loading the scene file, against reading its bytes (the counter "bytes"
//   is the engine memory one load takes);
// - one character's animation step (pose by the animation, skeleton pass,
//   CPU skinning of every vertex), against the skeleton pass alone; the
//   counter "per60HzFrame" is how many characters fit in 1/60 s.
#include <benchmark/benchmark.h>

#include <sys/stat.h>

#include <cstdio>
#include <vector>

#include <string>

#include <pevrano.h>

#include "benchengine.h"
#include "modelconverter.h"

namespace {

const std::string character = "/usr/share/assimp/models/X/Testwuson.X";

// The converted files go to a folder of the working directory, beside the
// engine's log; every run writes the same files again.
std::string scratchFolder()
{
    static const std::string folder = [] {
        mkdir("bench-model", 0755);
        return std::string("bench-model");
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

// The engine started once off-screen, and the character converted once.
std::string convertedCharacter()
{
    static const std::string scene = [] {
        kvfSetConsoleEcho(false);
        const std::string path = scratchFolder() + "/character.pve";
        ConvertOptions options;
        options.input = character;
        options.output = path;
        Assimp::Importer importer;
        std::string error;
        const aiScene* source = ModelConverter::importModel(importer, character, error);
        ModelConverter converter(source, options);
        const bool ready = source && converter.convert(error) && pvbench::engineStarted();
        PVTEXTURE::setPath((scratchFolder() + "/").c_str());
        return ready ? path : std::string();
    }();
    return scene;
}

void BM_ReadSceneBytes(benchmark::State& state)
{
    const std::string scene = convertedCharacter();
    std::vector<char> bytes(1 << 24);
    for (auto _ : state) {
        FILE* file = std::fopen(scene.c_str(), "rb");
        if (!file) {
            state.SkipWithError("no converted scene");
            return;
        }
        benchmark::DoNotOptimize(std::fread(bytes.data(), 1, bytes.size(), file));
        std::fclose(file);
    }
}
BENCHMARK(BM_ReadSceneBytes)->Unit(benchmark::kMicrosecond);

void BM_LoadCharacterScene(benchmark::State& state)
{
    const std::string scene = convertedCharacter();
    unsigned int bytes = 0;
    for (auto _ : state) {
        const unsigned int before = kvfGetMemoryStats().totalBytes;
        if (!PEVRANO::load(scene.c_str())) {
            state.SkipWithError("the converted scene did not load");
            return;
        }
        bytes = kvfGetMemoryStats().totalBytes - before;
        state.PauseTiming();
        PVNODE::cleanUp();
        state.ResumeTiming();
    }
    state.counters["bytes"] = bytes;
}
BENCHMARK(BM_LoadCharacterScene)->Unit(benchmark::kMicrosecond);

// One character's step with or without animation and skinning.
void characterStep(benchmark::State& state, bool animated)
{
    const std::string scene = convertedCharacter();
    PVNODE* root = scene.empty() ? nullptr : PEVRANO::load(scene.c_str());
    PVANIM* run = new PVANIM();
    std::string pva = scratchFolder() + "/character_0_Wuson_Run.pva";
    if (!root || !run->load(&pva[0])) {
        state.SkipWithError("the converted character did not load");
        return;
    }
    run->setTranslating(true);
    unsigned int frame = 0, vertices = 0;
    for (auto _ : state) {
        if (animated)
            run->apply(frame++ % run->getNumberOfFrames(), root);
        PVELEMENT::reset();
        PVMESH::reset();
        PV_glLoadIdentity();
        root->pass(false);
        for (unsigned int e = 0; animated && e < PVELEMENT::getNumberOfPassedElements(); e++) {
            PVELEMENT* element = PVELEMENT::getPassedElement(e);
            PVMESH* mesh = static_cast<PVMESH*>(element->getNode());
            if (element->getNode()->getType() == PV_TYPE_MESH && mesh->isSkinned()) {
                mesh->animate(element->getParam1());
                vertices += mesh->getNumberOfVertices();
            }
        }
    }
    state.counters["per60HzFrame"] =
        benchmark::Counter(1.0 / 60.0, benchmark::Counter::kIsIterationInvariantRate);
    state.counters["skinnedVertices"] = double(vertices) / double(state.iterations());
    PVNODE::cleanUp();
    delete run;
}

void BM_CharacterSkeletonPassOnly(benchmark::State& state) { characterStep(state, false); }
BENCHMARK(BM_CharacterSkeletonPassOnly)->Unit(benchmark::kMicrosecond);

void BM_CharacterAnimateAndSkin(benchmark::State& state) { characterStep(state, true); }
BENCHMARK(BM_CharacterAnimateAndSkin)->Unit(benchmark::kMicrosecond);

}  // namespace
