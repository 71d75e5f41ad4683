// Meshes: CPU skinning checked against a wide-integer reference, the draws
// of opaque and transparent meshes recorded, and loaded scenes drawn on the
// real renderer (lit colour, hidden meshes, picking, a skinned mesh whose
// bone moves).
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "scene/scenefixture.h"
#include "support/testaccess.h"
#include "tgafile.h"

using namespace pvtest;

namespace {

// ---------------------------------------------------------------- reference skinning

// floor(a * b / 65536) on 128-bit integers: the arithmetic shift the engine
// does, without overflow.
int64_t productShifted(int64_t a, int64_t b) { return int64_t((__int128(a) * b) >> 16); }

// Two's-complement wrap of a wide sum into 32 bits.
int32_t wrap32(int64_t value) { return int32_t(uint32_t(uint64_t(value))); }

int64_t truncatedFixed(double value) { return int64_t(std::trunc(value * 65536.0)); }

struct Skin {
    std::vector<GLfixed> positions, normals;
    std::vector<uint8_t> indices;
    std::vector<float> weights;
    unsigned int perVertex;
};

// The skinned positions and normals for bone matrices m (already 16.16).
void referenceSkinning(const Skin& skin, const std::vector<std::vector<int64_t>>& m,
                       std::vector<GLfixed>& outP, std::vector<GLfixed>& outN)
{
    const size_t count = skin.positions.size() / 3;
    outP.assign(count * 3, 0);
    outN.assign(count * 3, 0);
    for (size_t v = 0; v < count; v++) {
        const GLfixed* p = &skin.positions[3 * v];
        const GLfixed* n = &skin.normals[3 * v];
        for (unsigned int j = 0; j < skin.perVertex; j++) {
            const int64_t w = truncatedFixed(skin.weights[v * skin.perVertex + j]);
            if (w <= 0)
                continue;
            const std::vector<int64_t>& b = m[skin.indices[v * skin.perVertex + j]];
            for (int c = 0; c < 3; c++) {
                const int32_t q = wrap32(productShifted(p[0], b[c]) + productShifted(p[1], b[4 + c]) +
                                         productShifted(p[2], b[8 + c]) + b[12 + c]);
                const int32_t nq = wrap32(productShifted(n[0], b[c]) + productShifted(n[1], b[4 + c]) +
                                          productShifted(n[2], b[8 + c]));
                outP[3 * v + c] = wrap32(int64_t(outP[3 * v + c]) + productShifted(q, w));
                outN[3 * v + c] = wrap32(int64_t(outN[3 * v + c]) + productShifted(nq, w));
            }
        }
    }
}

K3MMATRIX pose(float angle, float tx, float ty, float tz, float scale)
{
    const float c = std::cos(angle) * scale, s = std::sin(angle) * scale;
    return K3MMATRIX(c, s, 0, 0, -s, c, 0, 0, 0, 0, scale, 0, tx, ty, tz, 1);
}

// A triangle whose three vertices follow bone 0 alone.
const GLfixed triangle[9] = {0, 0, 0, 65536, 0, 0, 0, 65536, 0};
const uint8_t boneZero[3] = {0, 0, 0};
const float fullWeights[3] = {1, 1, 1};

class Skinning : public GlContextTest {
protected:
    void SetUp() override
    {
        ASSERT_NO_FATAL_FAILURE(GlContextTest::SetUp());
        PVMESH::init();
    }
    void TearDown() override
    {
        PVMESH::free();
        PVNODE::cleanUp();
    }
};

// The kernels the processor can run: one influence at a time, and four
// lanes at a time when it has them.
std::vector<bool> skinningKernels()
{
    static const bool vectorAvailable = PVTESTACCESS::vectorSkinning();
    return vectorAvailable ? std::vector<bool> {false, true} : std::vector<bool> {false};
}

// A mesh of the skin with three bones, posed in cache slot 3, animated.
PVMESH* animatedMesh(const Skin& skin, std::vector<std::vector<int64_t>>* fixed)
{
    PVMESH* mesh = new PVMESH();
    const unsigned int count = unsigned(skin.positions.size() / 3);
    EXPECT_TRUE(mesh->setGeometry(count, skin.positions.data(), skin.normals.data(), nullptr, 0, nullptr));
    const char* names[] = {"a", "b", "c"};
    EXPECT_TRUE(mesh->setSkin(skin.perVertex, skin.indices.data(), skin.weights.data(), 3, names));
    mesh->setPosition(1, -2, 0.5f);
    mesh->setRotation(0, 0, 30);
    const K3MMATRIX invRoot = mesh->getFinalMatrix(PV_MESH_SKELETON_ROOT).inverse();
    for (unsigned int b = 0; b < 3; b++) {
        PVMESH::getSkeleton(3)[b] = pose(0.4f * float(b + 1), float(b), -1.5f, 2.25f, 1.0f + 0.1f * float(b));
        mesh->getBone(b)->inverseBind = pose(-0.3f * float(b), 0.5f, float(b), -1, 1);
        const K3MMATRIX m = mesh->getBone(b)->inverseBind * (PVMESH::getSkeleton(3)[b] * invRoot);
        fixed->emplace_back();
        for (float element : m.m)
            fixed->back().push_back(truncatedFixed(element));
    }
    EXPECT_TRUE(mesh->animate(3));
    return mesh;
}

template <typename T> std::vector<T> firstValues(const T* values, size_t count)
{
    return std::vector<T>(values, values + count);
}

// Three influences: weights summing to 1, to more than 1, all zero (the
// vertex stays at the origin), one negative (skipped), thirds, and a large
// vertex whose products need the 64-bit range. Four influences: shares, a
// single bone, negative and above 1, and equal weights summing to more than 2.
// Weights beyond the fixed-point range saturate and NaN counts as zero: there
// both kernels agree with each other.
TEST_F(Skinning, AnimateMatchesAWideIntegerReference)
{
    Skin three;
    three.perVertex = 3;
    three.positions = {65536, -131072, 98304, -70000, 12345, -1, 0,          0,          0,
                       3,     -5,      7,     400000, 8,     -9, 32767 << 8, -(1 << 22), 1 << 20};
    three.normals = {0, 0, 65536, 46341, 46341, 0, 65536, 0, 0, 0, -65536, 0, 1, 2, 3, -40000, 30000, 2000};
    three.indices = {0, 1, 2, 2, 1, 0, 0, 0, 0, 1, 2, 2, 0, 1, 2, 2, 2, 1};
    three.weights = {0.5f,  0.3f, 0.2f, 0.6f,     0.6f,     0,        0,    0,    0,
                     -0.5f, 1,    0,    1 / 3.0f, 1 / 3.0f, 1 / 3.0f, 0.9f, 0.1f, 0};
    Skin four;
    four.perVertex = 4;
    four.positions = {65536, -131072, 98304, 32767 << 8, -(1 << 22), 1 << 20, 12, -7, 70000, 0, 5, -400000};
    four.normals = {0, 0, 65536, -40000, 30000, 2000, 46341, 46341, 0, 1, -65536, 3};
    four.indices = {0, 1, 2, 1, 2, 2, 2, 2, 1, 0, 2, 0, 0, 1, 2, 0};
    four.weights = {0.4f, 0.3f, 0.2f, 0.1f, 1, 0, 0, 0, -1, 0.5f, 0.25f, 2, 0.7f, 0.7f, 0.7f, 0.7f};
    Skin extreme = four;
    extreme.positions.resize(9);
    extreme.normals.resize(9);
    extreme.indices = {0, 1, 2, 0, 2, 1, 0, 1, 1, 2, 0, 2};
    extreme.weights = {NAN,  INFINITY, 1e10f,    -1e10f,    -INFINITY, 40000.0f,
                       0.5f, -0.0f,    32768.0f, -32769.0f, 1e-6f,     NAN};

    for (const Skin* skin : {&three, &four, &extreme}) {
        std::vector<GLfixed> expectedP, expectedN;
        for (const bool vector : skinningKernels()) {
            SCOPED_TRACE(testing::Message()
                         << "vector " << vector << ", " << skin->perVertex << " per vertex");
            PVTESTACCESS::setVectorSkinning(vector);
            std::vector<std::vector<int64_t>> fixed;
            PVMESH* mesh = animatedMesh(*skin, &fixed);
            const std::vector<GLfixed> positions = firstValues(mesh->getSkinnedVertexPtr(), 9);
            const std::vector<GLfixed> normals = firstValues(mesh->getSkinnedNormalPtr(), 9);
            if (expectedP.empty()) {  // out-of-range weights: the first kernel is the other's reference
                expectedP = positions, expectedN = normals;
                if (skin != &extreme)
                    referenceSkinning(*skin, fixed, expectedP, expectedN);
            }
            EXPECT_EQ(expectedP, firstValues(mesh->getSkinnedVertexPtr(), expectedP.size()));
            EXPECT_EQ(expectedN, firstValues(mesh->getSkinnedNormalPtr(), expectedN.size()));
        }
    }
}

// The skin's six tables (influence indices, weights, indices as floats,
// bone records, skinned positions and normals) are counted memory, given
// back with the mesh.
TEST_F(Skinning, SkinTablesAreCountedAndGivenBack)
{
    const kvfMemoryStats before = kvfGetMemoryStats();
    PVMESH* mesh = new PVMESH();
    ASSERT_TRUE(mesh->setGeometry(3, triangle, triangle, nullptr, 0, nullptr));
    const unsigned int geometryBlocks = kvfGetMemoryStats().allocations - before.allocations;
    ASSERT_TRUE(mesh->setSkin(1, boneZero, fullWeights, 2, nullptr));
    EXPECT_EQ(geometryBlocks + 6, kvfGetMemoryStats().allocations - before.allocations);
    delete mesh;
    EXPECT_EQ(before.ratio, kvfGetMemoryStats().ratio);
}

// Binding names each missing bone on its own line inside the progress line;
// the missing bone keeps no node and the identity matrix, the found one its
// node.
TEST_F(Skinning, MissingBonesAreNamedWhenBinding)
{
    PVNODE* root = new PVNODE();
    PVNODE* arm = new PVNODE();
    arm->setName((char*)"arm");
    arm->setPosition(0, 2, 0);
    arm->link(root);
    PVMESH* mesh = new PVMESH();
    mesh->setName((char*)"body");
    mesh->link(root);
    ASSERT_TRUE(mesh->setGeometry(3, triangle, triangle, nullptr, 0, nullptr));
    const char* names[] = {"leg", "arm", "tail"};
    ASSERT_TRUE(mesh->setSkin(1, boneZero, fullWeights, 3, names));
    mesh->getBone(0)->inverseBind.m[12] = 5;
    EXPECT_TRUE(mesh->resetBones(root));
    // An unskinned mesh has nothing to compute, whatever the slot.
    EXPECT_TRUE(PVMESH().animate(PV_MESH_SKELETONS));
    EXPECT_EQ("   Building bones for body...    [!] Bone leg not found @ PVMESH::recursiveLoadKVE\n"
              "   [!] Bone tail not found @ PVMESH::recursiveLoadKVE\n"
              "done\n",
              log.text());
    EXPECT_EQ(nullptr, mesh->getBone(0)->node);
    EXPECT_EQ(firstValues(K3MMATRIX().m, 16), firstValues(mesh->getBone(0)->inverseBind.m, 16));
    EXPECT_EQ(arm, mesh->getBone(1)->node);
    EXPECT_FLOAT_EQ(-2, mesh->getBone(1)->inverseBind.m[13]);
}

// ---------------------------------------------------------------- drawing

const Rgb background {0, 0, 0};

class MeshScene : public RecordingTest {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(startEngineInWindow()) << log.text();
        PVOPENGL::setBackgroundColor(0, 0, 0, 1);
        PVOPENGL::setGlobalAmbientLight(0, 0, 0, 1);
    }
    void TearDown() override { PEVRANO::free(); }

    // A scene of tests/data/scenes (its README lists what each holds).
    PVNODE* load(const std::string& name)
    {
        PVNODE* root = PEVRANO::load((PEVRANO_TEST_DATA "/scenes/" + name).c_str());
        EXPECT_NE(nullptr, root) << log.text();
        return root;
    }
};

// A lit quad in front of the camera, a hidden one in front of it, a light at
// the eye: the quad shows its diffuse colour (N.L = 1 at the centre), and
// picking reports its id, also after particles were drawn.
TEST_F(MeshScene, ALoadedMeshIsLitByItsLightAndPickedByItsId)
{
    PVNODE* root = load("lit-quad.pve");
    // Particles above the quad, drawn after it, must not colour its pick.
    PVEMITTER* sparks = new PVEMITTER();
    ASSERT_TRUE(sparks->loadFromText("<emitter><emission rate='0'><burst count='3'/></emission>"
                                     "<velocity speedMin='0' speedMax='0'/></emitter>",
                                     "test"));
    sparks->setAutoUpdate(false);
    sparks->setPosition(0.0f, 1.5f, -5.0f);
    sparks->link(root);
    sparks->update(0.125f);
    drawFrame(root, nullptr);
    expectColour({0.5, 0.25, 0}, pixelOfPoint(0, 0, -5), "lit quad");
    expectColour(background, pixelOfPoint(1.5, 0, -5), "beside the quad");
    EXPECT_EQ(root->getChild(1)->getId(), PEVRANO::select(windowWidth / 2, windowHeight / 2));
    EXPECT_EQ(0u, PEVRANO::select(2, 2));
}

// A transparent mesh is drawn twice while lighting is on, back faces first;
// an opaque one once, with culling back as it was.
TEST_F(MeshScene, TransparentMeshesDrawBackFacesFirst)
{
    PVNODE* root = load("glass-quad.pve");
    // Lit: back faces first, the arrays set once for both draws; without its
    // light the mesh is unlit, and drawn once like an opaque one.
    Calls drawn;
    for (const bool lit : {true, false}) {
        if (!lit) {
            EXPECT_TRUE(PVOPENGL::isCulled());
            root->getChild(0)->unlink();
            PVLIGHT::lightingOff();
        }
        record([&] { drawFrame(root, nullptr); });
        const Calls calls =
            recorder.filter({"glCullFace", "glDrawElements", "glLightModelx", "glVertexPointer"});
        drawn.insert(drawn.end(), calls.begin(), calls.end());
    }
    EXPECT_EQ(readCalls(PEVRANO_TEST_DATA "/expected/glass-quad.calls"), drawn);
}

// A quad skinned to one bone follows the bone: at rest it covers the centre,
// with the bone moved 2 units right it covers x = 2 instead. The skeleton
// root stands at the origin of a scene node placed in front of the camera;
// a directional light along -z lights the quad at N.L = 1 everywhere.
TEST_F(MeshScene, ASkinnedMeshFollowsItsBone)
{
    PVNODE* root = load("skinned-quad.pve");
    drawFrame(root, nullptr);
    expectColour({1, 0, 0}, pixelOfPoint(0, 0, -5), "skin at rest");
    root->findByNameInHierarchy("bone")->setPosition(2, 0, 0);
    drawFrame(root, nullptr);
    expectColour(background, pixelOfPoint(0, 0, -5), "where the skin was");
    expectColour({1, 0, 0}, pixelOfPoint(2, 0, -5), "skin moved with its bone");
}

// A grid of quads sharing one textured material, none overlapping, under
// four point lights: after the first quad, each draws with its matrix and
// its draw call alone (lights keep their slots, material, texture and
// arrays stay set), and every quad shows the same lit texture.
TEST_F(MeshScene, QuadsSharingEverythingDrawWithoutStateCalls)
{
    writeFile("grey.tga", tgaFile(TGA_RAW, 2, 2, 24, 0, repeated({0xC0, 0x80, 0x40}, 4)));
    PVNODE* root = load("quad-grid.pve");
    record([&] { drawFrame(root, nullptr); });
    std::map<std::string, size_t> after;  // the calls after the first draw, by function
    bool drawn = false;
    for (const std::string& call : recorder.calls()) {
        if (drawn)
            after[GlRecorder::functionOf(call)]++;
        drawn = drawn || GlRecorder::functionOf(call) == "glDrawElements";
    }
    // Each loaded quad has arrays of its own: three pointers per quad. The
    // grid is 3 x 3.
    std::map<std::string, size_t> expected;
    for (const char* function :
         {"glDrawElements", "glLoadMatrixx", "glNormalPointer", "glTexCoordPointer", "glVertexPointer"})
        expected[function] = 3 * 3 - 1;
    EXPECT_EQ(expected, after) << recorder.text();
    // Texel (0.25, 0.5, 0.75) under four lights of diffuse 0.25 at N.L =
    // 2 / sqrt(22) for the middle quad; mirror images show the same colour
    // whichever slots their lights took.
    const double lit = 4 * 0.25 * 2 / std::sqrt(22.0);
    expectColour({0.25 * lit, 0.5 * lit, 0.75 * lit}, pixelOfPoint(0, 0, -6), "middle quad");
    for (int corner = 0; corner < 4; corner++) {
        const double x = corner % 2 ? 1 : -1, y = corner / 2 ? 1 : -1;
        expectColour(pixelOfPoint(-1, -1, -6), pixelOfPoint(x, y, -6), "corner quad");
        expectColour(pixelOfPoint(0, -1, -6), pixelOfPoint(corner % 2 ? 0 : x, corner % 2 ? y : 0, -6),
                     "edge quad");
    }
}

// Seventeen skinned meshes in one frame: the last finds the cache full, is
// not drawn, and says so.
TEST_F(MeshScene, TheSeventeenthSkinnedMeshFindsTheCacheFull)
{
    PVNODE* root = new PVNODE();
    const PVFACE face = {{0, 1, 2}};
    for (int i = 0; i < PV_MESH_SKELETONS + 1; i++) {
        PVMESH* mesh = new PVMESH();
        mesh->setGeometry(3, triangle, triangle, nullptr, 1, &face);
        mesh->setSkin(1, boneZero, fullWeights, 1, nullptr);
        mesh->link(root);
    }
    log.fresh();
    record([&] { drawFrame(root, nullptr); });
    EXPECT_EQ(size_t(PV_MESH_SKELETONS), recorder.count("glDrawElements"));
    EXPECT_EQ(root->getChild(15), PVMESH::getSkeletonOwner(15));
    EXPECT_EQ("   [!] Skeleton cache full @ PVELEMENT::pass\n"
              "   [!] Animation not computed (cache full) @ PVMESH::animate\n",
              log.fresh());
}

}  // namespace
