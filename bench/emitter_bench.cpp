// Particle cost: 10 emitters of 1,000 live particles each, off-screen. Every
// iteration simulates one frame of all of them and then draws them; the
// counters give the time per particle of each phase and their ratio
// (simulation over drawing, measured in the same iterations: below 1 means
// that simulating a particle costs less than drawing it).
#include <benchmark/benchmark.h>

#include <chrono>
#include <string>

#include <pevrano.h>

#include "benchengine.h"

namespace {

const int emitterCount = 10;
const int particlesEach = 1000;

// The engine started off-screen, with a pool large enough for every emitter.
bool engineWithLargePool()
{
    if (!pvbench::engineStarted())
        return false;
    PVEMITTER::free();
    return PVEMITTER::init(PV_EMITTER_MAX_POOL);
}

// Emitters spread in front of the camera, each at its steady 1,000 particles:
// twice as many are asked for as die, so every death is replaced at once.
PVNODE* buildEmitters()
{
    PVNODE* root = new PVNODE();
    const std::string description = "<emitter particles='" + std::to_string(particlesEach) +
                                    "'><emission rate='2000'/><life min='1' max='1'/>"
                                    "<velocity speedMin='0.5' speedMax='1' spread='30'/>"
                                    "<acceleration x='0.2' y='-0.5' z='0'/></emitter>";
    for (int i = 0; i < emitterCount; i++) {
        PVEMITTER* emitter = new PVEMITTER();
        emitter->loadFromText(description.c_str(), "bench");
        emitter->setAutoUpdate(false);
        emitter->setPosition(float(i % 5) - 2.0f, float(i / 5) - 1.0f, -8.0f);
        emitter->link(root);
        for (int step = 0; step < 40; step++)
            emitter->update(1.0f / 30.0f);
    }
    return root;
}

double secondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void BM_TenEmittersSimulateAndDraw(benchmark::State& state)
{
    if (!engineWithLargePool()) {
        state.SkipWithError("engine did not start");
        return;
    }
    PVNODE* root = buildEmitters();
    double simulating = 0.0, drawing = 0.0;
    long particles = 0;
    for (auto _ : state) {
        auto start = std::chrono::steady_clock::now();
        for (unsigned int i = 0; i < root->getNumberOfChildren(); i++)
            static_cast<PVEMITTER*>(root->getChild(i))->update(1.0f / 60.0f);
        simulating += secondsSince(start);

        start = std::chrono::steady_clock::now();
        PEVRANO::clear(true, true, false);
        PEVRANO::begin3D(nullptr);
        root->pass(false);
        PEVRANO::end3D(false);
        glFinish();
        drawing += secondsSince(start);
        for (unsigned int i = 0; i < root->getNumberOfChildren(); i++)
            particles += static_cast<PVEMITTER*>(root->getChild(i))->getNumberOfParticles();
    }
    state.SetItemsProcessed(particles);
    state.counters["sim_ns_per_particle"] = 1e9 * simulating / double(particles);
    state.counters["draw_ns_per_particle"] = 1e9 * drawing / double(particles);
    state.counters["sim_over_draw"] = simulating / drawing;
    PVNODE::cleanUp();
}
BENCHMARK(BM_TenEmittersSimulateAndDraw)->Unit(benchmark::kMillisecond);

}  // namespace
