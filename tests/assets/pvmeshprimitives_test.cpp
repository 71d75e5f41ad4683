// Box, plane and sphere meshes: their counts, bounds, normals, winding and
// texture coordinates, the refusals, and each drawn lit on the real renderer.
#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <string>
#include <tuple>

#include "scene/scenefixture.h"

using namespace pvtest;

namespace {

struct Shape {
    const char* what;
    PVMESH* mesh;
    unsigned int vertices, faces;
    K3MVECTOR3D half;  // of the bounding box; the radius is its length
    size_t positions;  // distinct: a box's corners, a sphere's seam and poles shared
};

// Counts and bounds; every vertex within them; faces wound counter-clockwise
// seen from the side their vertex normals face; texture coordinates from 0 to 1.
void expectShape(const Shape& shape)
{
    PVMESH* mesh = shape.mesh;
    EXPECT_FLOAT_EQ(mesh->getRadius(), std::sqrt(shape.half % shape.half));
    EXPECT_TRUE(mesh->getMaximum() == shape.half && mesh->getMinimum() == -shape.half);
    EXPECT_EQ(mesh->getMaterial()->getDiffuse(), K3MVECTOR4D(0.6f, 0.6f, 0.6f, 1.0f));
    std::set<std::tuple<GLfixed, GLfixed, GLfixed>> positions;
    std::set<GLfixed> uvs(mesh->getUVPtr(), mesh->getUVPtr() + 2 * shape.vertices);
    EXPECT_TRUE(*uvs.begin() == 0 && *uvs.rbegin() == 65536);
    for (unsigned int v = 0; v < shape.vertices; v++) {
        const GLfixed* p = mesh->getVertexPtr() + 3 * v;
        positions.insert({p[0], p[1], p[2]});
        const K3MVECTOR3D at(p[0] / 65536.0f, p[1] / 65536.0f, p[2] / 65536.0f);
        EXPECT_LE(at.length(), mesh->getRadius() + 1e-4f) << "vertex " << v;
        EXPECT_LE(std::fabs(at.y), shape.half.y + 1e-4f) << "vertex " << v;
    }
    EXPECT_EQ((std::vector<size_t> {mesh->getNumberOfVertices(), mesh->getNumberOfUVs(),
                                    mesh->getNumberOfFaces(), positions.size()}),
              (std::vector<size_t> {shape.vertices, shape.vertices, shape.faces, shape.positions}));
    for (unsigned int f = 0; f < shape.faces; f++) {
        const float* faceNormal = mesh->getFaceNormalPtr() + 3 * f;
        for (uint16_t index : mesh->getFacePtr()[f].index) {
            ASSERT_LT(index, shape.vertices);
            const GLfixed* n = mesh->getVertexNormalPtr() + 3 * index;
            EXPECT_GT(faceNormal[0] * n[0] + faceNormal[1] * n[1] + faceNormal[2] * n[2], 0.0f)
                << "face " << f;
        }
    }
}

TEST(MeshPrimitives, CountsBoundsAndRefusals)
{
    LogCapture log;
    const Shape shapes[] = {
        {"box", PVMESH::createBox(2, 4, 6), 24, 12, {1, 2, 3}, 8},
        {"plane", PVMESH::createPlane(2, 6), 4, 2, {1, 0, 3}, 4},
        {"sphere", PVMESH::createSphere(1.5f, 8, 4), 45, 48, {1.5f, 1.5f, 1.5f}, 26},
        {"smallest sphere", PVMESH::createSphere(1, 3, 2), 12, 6, {1, 1, 1}, 5},
    };
    for (const Shape& shape : shapes) {
        SCOPED_TRACE(shape.what);
        expectShape(shape);
    }

    const PVMESH* refused[] = {
        PVMESH::createBox(0, 1, 1),        PVMESH::createBox(1, -1, 1),
        PVMESH::createBox(1, 1, NAN),      PVMESH::createPlane(1, 0),
        PVMESH::createPlane(INFINITY, 1),  PVMESH::createSphere(0, 8, 4),
        PVMESH::createSphere(1, 2, 4),     PVMESH::createSphere(1, 8, 1),
        PVMESH::createSphere(1, 300, 300), PVMESH::createSphere(1, 3, 16000),
    };
    for (const PVMESH* mesh : refused)
        EXPECT_EQ(mesh, nullptr);
    const std::string box = "   [!] Invalid params @ PVMESH::createBox\n";
    const std::string plane = "   [!] Invalid params @ PVMESH::createPlane\n";
    const std::string sphere = "   [!] Invalid params @ PVMESH::createSphere\n";
    EXPECT_EQ(log.fresh(), box + box + box + plane + plane + sphere + sphere + sphere + sphere + sphere);
    PVNODE::cleanUp();
    PVMATERIAL::cleanUp();
}

// ---------------------------------------------------------------- drawing

using LitPrimitives = RecordingTest;

using Probes = std::vector<std::pair<K3MVECTOR3D, double>>;  // grey level there, -1 for the background

// The mesh at this position, lit by a directional light alone: the colours at the probes.
void expectLit(const char* what, PVMESH* mesh, K3MVECTOR3D position, K3MVECTOR3D lightDirection,
               const Probes& probes)
{
    SCOPED_TRACE(what);
    PVNODE* root = new PVNODE();
    PVLIGHT* light = new PVLIGHT();
    light->setLightType(PV_LIGHT_DIRECTIONAL);
    light->setDirection(lightDirection.x, lightDirection.y, lightDirection.z);
    light->setAmbient(0, 0, 0, 1);
    light->setDiffuse(0.6f, 0.6f, 0.6f, 1);
    light->setSpecular(0, 0, 0, 1);
    light->link(root);
    mesh->getMaterial()->setAmbient(1, 1, 1, 1);
    mesh->getMaterial()->setDiffuse(1, 1, 1, 1);
    mesh->setPosition(position.x, position.y, position.z);
    mesh->link(root);
    drawFrame(root, nullptr);
    for (const auto& probe : probes) {
        const Rgb got = pixelOfPoint(probe.first.x, probe.first.y, probe.first.z);
        const Rgb want = probe.second < 0 ? Rgb {0, 0, 1} : Rgb {probe.second, probe.second, probe.second};
        EXPECT_TRUE(std::fabs(got.r - want.r) < 0.06 && std::fabs(got.g - want.g) < 0.06 &&
                    std::fabs(got.b - want.b) < 0.06)
            << "at " << probe.first.x << ", " << probe.first.y << ": " << got.r << ", " << got.g << ", "
            << got.b;
    }
}

// White material, white light of diffuse 0.6, global ambient 0.2: a side
// facing the light shows 0.2 + 0.6 N.L, one facing away 0.2, the background
// is blue. The sphere is lit per vertex: near, not exact, between vertices.
TEST_F(LitPrimitives, EachDrawsWhereItStandsWithItsLitSideBrighter)
{
    ASSERT_TRUE(startEngineInWindow()) << log.text();
    PVOPENGL::setBackgroundColor(0, 0, 1, 1);
    PVOPENGL::setGlobalAmbientLight(0.2f, 0.2f, 0.2f, 1.0f);
    const K3MVECTOR3D down(0, -1, 0);
    expectLit("box lit from above", PVMESH::createBox(2, 2, 2), {0, -2, -6}, down,
              {{{0, -1, -6}, 0.8}, {{0, -1.8f, -5}, 0.2}, {{1.6f, -2, -6}, -1}});
    expectLit("plane below the eye", PVMESH::createPlane(4, 4), {0, -1, -6}, down,
              {{{0, -1, -6}, 0.8}, {{2.6f, -1, -6}, -1}});
    expectLit("plane above the eye: its back, culled", PVMESH::createPlane(4, 4), {0, 1, -6}, down,
              {{{0, 1, -6}, -1}});
    expectLit("sphere lit from the right", PVMESH::createSphere(1, 24, 12), {0, 0, -6}, {-1, 0, 0},
              {{{0.7f, 0, -5.286f}, 0.62}, {{-0.7f, 0, -5.286f}, 0.2}, {{1.5f, 0, -6}, -1}});
    PEVRANO::free();  // deletes every node
}

}  // namespace
