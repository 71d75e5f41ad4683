// Scene graph costs: one frame of the render list (reset, pass, sort3D; no
// drawing) over 1024 nodes in a three-level tree, a world matrix at depth 8,
// and filling the registry and a parent's children.
#include <benchmark/benchmark.h>

#include <pevrano.h>

#include "benchengine.h"
#include "pvewriter.h"
#include <cstdint>
#include <string>
#include <vector>

namespace {

using pvbench::engineStarted;

// A light, a helper or a mesh, of its own class.
PVNODE* makeLeaf(PV_NODE_TYPE type)
{
    if (type == PV_TYPE_LIGHT)
        return new PVLIGHT();
    if (type == PV_TYPE_HELPER)
        return new PVHELPER();
    return new PVMESH();
}

// 1 root, 31 plain groups, 31 x 32 = 992 leaves: 1024 nodes. Among the
// leaves, every 16th is a light and every 8th a helper (transparent), the
// rest opaque meshes, spread in depth so the back-to-front sort has work.
PVNODE* buildThreeLevelTree()
{
    PVNODE* root = new PVNODE();
    for (int g = 0; g < 31; g++) {
        PVNODE* group = new PVNODE();
        group->setPosition(float(g % 6) * 4.0f, 0.0f, -float(g) * 2.0f);
        group->setRotation(0.0f, float(g) * 11.0f, 0.0f);
        group->link(root);
        for (int l = 0; l < 32; l++) {
            const PV_NODE_TYPE type = l % 16 == 0  ? PV_TYPE_LIGHT
                                      : l % 8 == 0 ? PV_TYPE_HELPER
                                                   : PV_TYPE_MESH;
            PVNODE* leaf = makeLeaf(type);
            leaf->setPosition(float(l % 4), float(l / 4), -float((l * 7) % 32));
            leaf->setRotation(float(l) * 3.0f, 0.0f, float(l) * 5.0f);
            leaf->link(group);
        }
    }
    return root;
}

void BM_RenderListFrame1024(benchmark::State& state)
{
    if (!engineStarted()) {
        state.SkipWithError("engine did not start");
        return;
    }
    PVNODE* root = buildThreeLevelTree();
    PV_glMatrixMode(GL_MODELVIEW);
    PV_glLoadIdentity();
    for (auto _ : state) {
        PVELEMENT::reset();
        root->pass(false);
        PVELEMENT::sort3D();
        benchmark::DoNotOptimize(PVELEMENT::getPassedElement(0));
    }
    state.counters["records"] = PVELEMENT::getNumberOfPassedElements();
    state.counters["nodes"] = PVNODE::getNumberOfNodes();
    PVNODE::cleanUp();
}
BENCHMARK(BM_RenderListFrame1024)->Unit(benchmark::kMicrosecond);

void BM_FinalMatrixDepth8(benchmark::State& state)
{
    if (!engineStarted()) {
        state.SkipWithError("engine did not start");
        return;
    }
    PVNODE* node = new PVNODE();
    for (int depth = 0; depth < 8; depth++) {
        PVNODE* child = new PVNODE();
        child->setPosition(1.0f, 2.0f, 3.0f);
        child->setRotation(10.0f, 20.0f, 30.0f);
        child->link(node);
        node = child;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(node->getFinalMatrix(nullptr));
    PVNODE::cleanUp();
}
BENCHMARK(BM_FinalMatrixDepth8);

// Constructing n nodes, as a scene load does (each joins its registry at the
// tail), then deleting them: the fitted complexity must stay O(n).
void BM_NodeRegistryFill(benchmark::State& state)
{
    std::vector<PVNODE*> nodes(static_cast<size_t>(state.range(0)));
    for (auto _ : state) {
        for (PVNODE*& node : nodes)
            node = new PVNODE();
        for (PVNODE* node : nodes)
            delete node;
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_NodeRegistryFill)->RangeMultiplier(4)->Range(1024, 16384)->Complexity();

// Linking n siblings under one parent, as a loaded interface of n boxes
// does, then unlinking them newest first (the nodes themselves are made
// once, within the 65535 ids the identifier table gives): the fitted
// complexity must stay O(n), not O(n^2).
void BM_LinkSiblings(benchmark::State& state)
{
    PVNODE* parent = new PVNODE();
    std::vector<PVNODE*> nodes(static_cast<size_t>(state.range(0)));
    for (PVNODE*& node : nodes)
        node = new PVNODE();
    for (auto _ : state) {
        for (PVNODE* node : nodes)
            node->link(parent);
        benchmark::DoNotOptimize(parent->getChild(parent->getNumberOfChildren() - 1));
        for (auto node = nodes.rbegin(); node != nodes.rend(); ++node)
            (*node)->unlink();
    }
    for (PVNODE* node : nodes)
        delete node;
    delete parent;
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_LinkSiblings)->RangeMultiplier(4)->Range(1024, 32768)->Complexity();

// A scene file in memory: a root node with eight plain children and no
// material.
std::string smallSceneFile()
{
    pvtest::PveWriter w;
    w.materials({}).node("node", {1, 2, 3}, 8);
    for (int i = 0; i < 8; i++)
        w.node("node", {1, 2, 3});
    return w.bytes();
}

// Loading a small scene while n other nodes are alive, as an application
// that keeps loading does: the fitted complexity must be O(1), the load
// never walking the nodes already there.
void BM_LoadSceneBehindNodes(benchmark::State& state)
{
    if (!engineStarted()) {
        state.SkipWithError("engine did not start");
        return;
    }
    std::vector<PVNODE*> resident(static_cast<size_t>(state.range(0)));
    for (PVNODE*& node : resident)
        node = new PVNODE();
    const std::string file = smallSceneFile();
    for (auto _ : state) {
        PVNODE* root = PEVRANO::loadBuffer(file.data(), file.size(), "small.pve");
        for (unsigned int i = 0; root && i < root->getNumberOfChildren(); i++)
            delete root->getChild(i);
        delete root;
    }
    for (PVNODE* node : resident)
        delete node;
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_LoadSceneBehindNodes)->RangeMultiplier(8)->Range(64, 32768)->Complexity();

}  // namespace
