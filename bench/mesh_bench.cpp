// Mesh costs. CPU skinning of a character-sized mesh (3,014 vertices, 57
// bones, 4 influences each) in vertices per second. A frame of N textured
// cube meshes under 4 point lights, 640x480 off-screen, against a raw
// fixed-point GL loop drawing the same cubes in the same iteration (one
// glLoadMatrixx and one glDrawElements per cube): fps and CPU time per
// frame, their engine/floor ratios, and GL calls per cube. The same frame
// once more with the scene loaded from a scene file and the cubes spread
// so that none overlaps.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <string>
#include <vector>

#include <pevrano.h>

#include "benchengine.h"
#include "glcalls.h"
#include "pvewriter.h"
#include "support/scratch.h"

namespace {

using pvbench::engineStarted;
using pvbench::processSeconds;

// ---------------------------------------------------------------- skinning

const int characterVertices = 3014;
const int characterBones = 57;
const int influences = 4;

PVMESH* buildCharacter()
{
    std::vector<GLfixed> positions, normals;
    std::vector<uint8_t> indices;
    std::vector<float> weights;
    const float share[influences] = {0.4f, 0.3f, 0.2f, 0.1f};
    for (int v = 0; v < characterVertices; v++) {
        const float t = float(v) * 0.01f;
        positions.insert(positions.end(),
                         {PV_floatToFixed(std::sin(t) * 0.3f), PV_floatToFixed(float(v) / 1700.0f),
                          PV_floatToFixed(std::cos(t) * 0.2f)});
        normals.insert(normals.end(), {PV_floatToFixed(std::sin(t)), 0, PV_floatToFixed(std::cos(t))});
        for (int j = 0; j < influences; j++) {
            indices.push_back(uint8_t((v / 53 + j * 7) % characterBones));
            weights.push_back(share[j]);
        }
    }
    PVMESH* mesh = new PVMESH();
    mesh->setGeometry(characterVertices, positions.data(), normals.data(), nullptr, 0, nullptr);
    mesh->setSkin(influences, indices.data(), weights.data(), characterBones, nullptr);
    for (int b = 0; b < characterBones; b++) {
        K3MMATRIX pose;
        pose.setTranslation(float(b % 5) * 0.1f, float(b) * 0.03f, 0.0f);
        const float angle = float(b) * 0.05f;
        pose.m[0] = pose.m[5] = std::cos(angle);
        pose.m[1] = std::sin(angle);
        pose.m[4] = -pose.m[1];
        PVMESH::getSkeleton(0)[b] = pose;
        mesh->getBone(unsigned(b))->inverseBind.setTranslation(-float(b % 5) * 0.1f, -float(b) * 0.03f, 0.0f);
    }
    return mesh;
}

void BM_SkinCharacter(benchmark::State& state)
{
    if (!engineStarted()) {
        state.SkipWithError("engine did not start");
        return;
    }
    PVMESH* mesh = buildCharacter();
    for (auto _ : state) {
        mesh->animate(0);
        benchmark::DoNotOptimize(mesh->getSkinnedVertexPtr()[0]);
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * characterVertices);
    delete mesh;
}
BENCHMARK(BM_SkinCharacter)->Unit(benchmark::kMicrosecond);

// ---------------------------------------------------------------- frame of cubes

struct CUBE {
    std::vector<GLfixed> positions, normals, uvs;
    std::vector<PVFACE> faces;
};

// 24 vertices (4 per side, each side with its own normal), 12 triangles.
CUBE cubeGeometry(float half)
{
    CUBE cube;
    const int axes[6][3] = {{0, 1, 2}, {0, 1, 2}, {1, 2, 0}, {1, 2, 0}, {2, 0, 1}, {2, 0, 1}};
    const float corner[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
    for (int side = 0; side < 6; side++) {
        const float sign = side % 2 ? -1.0f : 1.0f;
        const uint16_t first = uint16_t(side * 4);
        for (int c = 0; c < 4; c++) {
            float p[3], n[3] = {0, 0, 0};
            p[axes[side][0]] = corner[c][0] * half * sign;
            p[axes[side][1]] = corner[c][1] * half;
            p[axes[side][2]] = half * sign;
            n[axes[side][2]] = sign;
            for (int k = 0; k < 3; k++) {
                cube.positions.push_back(PV_floatToFixed(p[k]));
                cube.normals.push_back(PV_floatToFixed(n[k]));
            }
            cube.uvs.push_back(PV_floatToFixed((corner[c][0] + 1) / 2));
            cube.uvs.push_back(PV_floatToFixed((corner[c][1] + 1) / 2));
        }
        cube.faces.push_back({{first, uint16_t(first + 1), uint16_t(first + 2)}});
        cube.faces.push_back({{first, uint16_t(first + 2), uint16_t(first + 3)}});
    }
    return cube;
}

// A 64x64 uncompressed 24-bit TGA of a checker pattern.
std::vector<unsigned char> checkerTga()
{
    std::vector<unsigned char> file(18, 0);
    file[2] = 2;
    file[12] = file[14] = 64;
    file[16] = 24;
    for (int y = 0; y < 64; y++)
        for (int x = 0; x < 64; x++) {
            const unsigned char level = ((x / 8 + y / 8) % 2) ? 230 : 60;
            file.insert(file.end(), {level, level, level});
        }
    return file;
}

double wallSeconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// The scene: N cubes on a grid in front of the camera, 4 point lights.
struct CUBESCENE {
    PVNODE* root;
    std::vector<PVMESH*> cubes;
    PVTEXTURE* texture;
};

CUBESCENE buildCubeScene(int count, const CUBE& cube)
{
    CUBESCENE scene;
    scene.root = new PVNODE();
    const std::vector<unsigned char> tga = checkerTga();
    scene.texture = new PVTEXTURE();
    scene.texture->loadTGA(tga.data(), tga.size(), "checker.tga");
    PVMATERIAL* material = new PVMATERIAL();
    material->setTexture(0, scene.texture);
    const int side = int(std::ceil(std::sqrt(double(count))));
    for (int i = 0; i < count; i++) {
        PVMESH* mesh = new PVMESH();
        mesh->setGeometry(24, cube.positions.data(), cube.normals.data(), cube.uvs.data(), 12,
                          cube.faces.data());
        mesh->setMaterial(material);
        mesh->setRadius(0.5f);
        const float spacing = 16.0f / float(side);
        mesh->setPosition((float(i % side) + 0.5f) * spacing - 8.0f,
                          (float(i / side) + 0.5f) * spacing - 8.0f, -14.0f);
        mesh->link(scene.root);
        scene.cubes.push_back(mesh);
    }
    const float lightPlaces[4][3] = {{-6, 6, -6}, {6, 6, -6}, {-6, -6, -6}, {6, -6, -6}};
    for (const auto& place : lightPlaces) {
        PVLIGHT* light = new PVLIGHT();
        light->setPosition(place[0], place[1], place[2]);
        light->link(scene.root);
    }
    return scene;
}

void engineFrame(PVNODE* root)
{
    PEVRANO::clear(true, true, false);
    PEVRANO::begin3D(nullptr);
    root->pass(false);
    PEVRANO::end3D(false);
    PEVRANO::swap();
}

// The floor: the same cubes drawn with one glLoadMatrixx and one
// glDrawElements each, the lights and texture set once per frame.
struct FLOOR {
    std::vector<std::vector<GLfixed>> matrices;
    std::vector<std::vector<GLfixed>> lightPositions;
    GLuint texture;
};

FLOOR floorFromEngineFrame(GLuint texture)
{
    FLOOR floor;
    for (unsigned int i = 0; i < PVELEMENT::getNumberOfPassedElements(); i++) {
        PVELEMENT* record = PVELEMENT::getPassedElement(i);
        std::vector<GLfixed> fixed;
        for (float value : record->getMatrix()->m)
            fixed.push_back(PV_floatToFixed(value));
        if (record->getNode()->getType() == PV_TYPE_LIGHT)
            floor.lightPositions.push_back({fixed[12], fixed[13], fixed[14], 65536});
        else
            floor.matrices.push_back(fixed);
    }
    floor.texture = texture;
    return floor;
}

void floorFrame(const FLOOR& floor, const CUBE& cube)
{
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_LIGHTING);
    glLoadIdentity();
    for (size_t l = 0; l < floor.lightPositions.size(); l++) {
        glEnable(GLenum(GL_LIGHT0 + l));
        glLightxv(GLenum(GL_LIGHT0 + l), GL_POSITION, floor.lightPositions[l].data());
    }
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, floor.texture);
    glEnableClientState(GL_VERTEX_ARRAY);
    glEnableClientState(GL_NORMAL_ARRAY);
    glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    glVertexPointer(3, GL_FIXED, 0, cube.positions.data());
    glNormalPointer(GL_FIXED, 0, cube.normals.data());
    glTexCoordPointer(2, GL_FIXED, 0, cube.uvs.data());
    for (const std::vector<GLfixed>& m : floor.matrices) {
        glLoadMatrixx(m.data());
        glDrawElements(GL_TRIANGLES, 36, GL_UNSIGNED_SHORT, cube.faces.data());
    }
    PEVRANO::swap();
}

// Each iteration draws one engine frame of the scene under root and one
// floor frame, so that both see the same machine load; the counters give
// their rates, their ratios and their GL calls per cube.
void runCubeFrames(benchmark::State& state, PVNODE* root, PVTEXTURE* texture, const CUBE& cube)
{
    // The texture is uploaded by the first frame that draws it.
    engineFrame(root);
    const FLOOR floor = floorFromEngineFrame(texture->getGLId());
    double engineWall = 0, engineCpu = 0, floorWall = 0, floorCpu = 0;
    long engineCalls = 0, floorCalls = 0;
    pvbench::GLCALLCOUNTS& calls = pvbench::glCalls();
    for (auto _ : state) {
        double wall = wallSeconds(), cpu = processSeconds();
        long before = calls.all;
        engineFrame(root);
        engineWall += wallSeconds() - wall;
        engineCpu += processSeconds() - cpu;
        engineCalls += calls.all - before;
        wall = wallSeconds();
        cpu = processSeconds();
        before = calls.all;
        floorFrame(floor, cube);
        floorWall += wallSeconds() - wall;
        floorCpu += processSeconds() - cpu;
        floorCalls += calls.all - before;
    }
    const double frames = double(state.iterations());
    const double objects = frames * double(floor.matrices.size());
    state.counters["engine_fps"] = frames / engineWall;
    state.counters["floor_fps"] = frames / floorWall;
    state.counters["fps_ratio"] = floorWall / engineWall;
    state.counters["engine_cpu_us"] = engineCpu / frames * 1e6;
    state.counters["floor_cpu_us"] = floorCpu / frames * 1e6;
    state.counters["cpu_ratio"] = engineCpu / floorCpu;
    state.counters["engine_gl_per_object"] = double(engineCalls) / objects;
    state.counters["floor_gl_per_object"] = double(floorCalls) / objects;
    PVNODE::cleanUp();
    PVMATERIAL::cleanUp();
    PVTEXTURE::cleanUp();
}

void BM_CubeFrame(benchmark::State& state)
{
    if (!engineStarted()) {
        state.SkipWithError("engine did not start");
        return;
    }
    const CUBE cube = cubeGeometry(0.4f);
    CUBESCENE scene = buildCubeScene(int(state.range(0)), cube);
    runCubeFrames(state, scene.root, scene.texture, cube);
}
// 1020 cubes and 4 lights fill the largest render list (1024 records); with
// more, the lights, passed last, would be left out.
BENCHMARK(BM_CubeFrame)->Arg(64)->Arg(256)->Arg(1020)->Unit(benchmark::kMillisecond)->UseRealTime();

// The spread-out scene: the same cubes, lights and texture written to a
// scene file and loaded from it, the cubes on a grid one unit apart (none
// overlaps another on screen) and far enough to fit the view.
std::vector<float> unfixed(const std::vector<GLfixed>& values)
{
    std::vector<float> result;
    for (GLfixed value : values)
        result.push_back(float(value) / 65536.0f);
    return result;
}

std::string writeSpreadScene(int count, const CUBE& cube)
{
    const std::vector<unsigned char> tga = checkerTga();
    pvtest::writeFile("checker.tga", std::string(tga.begin(), tga.end()));
    pvtest::PveMaterial material;
    material.name = "checker";
    material.texture = "checker.tga";
    pvtest::PveWriter file;
    file.materials({material}).node("root", {0, 0, 0}, uint16_t(count + 4));
    const int side = int(std::ceil(std::sqrt(double(count))));
    const float half = float(side) / 2.0f;
    // The grid's half width fills about 90 % of the half view height.
    const float depth = -(half / 0.9f) / std::tan(PVOPENGL::getAngleOfView() / 2 * float(M_PI) / 180.0f);
    const pvtest::PveVec lights[4] = {{-half, half, depth + 4},
                                      {half, half, depth + 4},
                                      {-half, -half, depth + 4},
                                      {half, -half, depth + 4}};
    for (const pvtest::PveVec& at : lights)
        file.light("lamp", 0, at, {0, 0, -1}, 180, {0.7f, 0.7f, 0.7f});
    pvtest::PveMesh mesh;
    mesh.name = "cube";
    mesh.material = "checker";
    mesh.radius = 0.7f;
    mesh.vertices = unfixed(cube.positions);
    mesh.normals = unfixed(cube.normals);
    mesh.uvs = unfixed(cube.uvs);
    for (const PVFACE& face : cube.faces)
        mesh.faces.insert(mesh.faces.end(), {face.index[0], face.index[1], face.index[2]});
    mesh.faceNormals.assign(cube.faces.size() * 3, 0.0f);
    for (int i = 0; i < count; i++) {
        mesh.position = {float(i % side) - half + 0.5f, float(i / side) - half + 0.5f, depth};
        file.mesh(mesh);
    }
    return file.save("spread.pve");
}

void BM_CubeFrameSpreadFromFile(benchmark::State& state)
{
    if (!engineStarted()) {
        state.SkipWithError("engine did not start");
        return;
    }
    const CUBE cube = cubeGeometry(0.4f);
    PVNODE* root = PEVRANO::load(writeSpreadScene(int(state.range(0)), cube).c_str());
    PVTEXTURE* texture = PVTEXTURE::findByFilename("checker.tga");
    if (!root || !texture) {
        state.SkipWithError("scene did not load");
        return;
    }
    runCubeFrames(state, root, texture, cube);
}
BENCHMARK(BM_CubeFrameSpreadFromFile)
    ->Arg(64)
    ->Arg(256)
    ->Arg(1020)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
