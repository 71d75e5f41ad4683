// Box, plane and sphere meshes: their counts, bounds, normals, winding and
// texture coordinates, the refusals, and each drawn lit on the real renderer.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <set>
#include <string>
#include <tuple>

#include <pevrano.h>

#include "scene/scenefixture.h"
#include "support/glfixture.h"

using namespace pvtest;

namespace {

double fixedToDouble(GLfixed value) { return value / 65536.0; }

struct Shape {
    const char* what;
    std::function<PVMESH*()> create;
    unsigned int vertices, faces;
    K3MVECTOR3D half;  // of the bounding box; the radius is its length
    size_t positions;  // distinct: a box's corners, a sphere's seam and poles shared
};

// Every vertex lies in the bounds, faces wind counter-clockwise seen from the
// side their normals face, and texture coordinates run from 0 to 1.
void expectWellFormed(PVMESH* mesh, const Shape& shape)
{
    const double radius = std::sqrt(shape.half % shape.half);
    std::set<std::tuple<GLfixed, GLfixed, GLfixed>> corners;
    double lowestUV = 1, highestUV = 0;
    for (unsigned int v = 0; v < mesh->getNumberOfVertices(); v++) {
        const GLfixed* p = mesh->getVertexPtr() + 3 * v;
        corners.insert({p[0], p[1], p[2]});
        const double x = fixedToDouble(p[0]), y = fixedToDouble(p[1]), z = fixedToDouble(p[2]);
        EXPECT_LE(std::sqrt(x * x + y * y + z * z), radius + 1e-4) << "vertex " << v;
        EXPECT_LE(std::fabs(y), shape.half.y + 1e-4) << "vertex " << v;
        for (int k = 0; k < 2; k++) {
            const double uv = fixedToDouble(mesh->getUVPtr()[2 * v + k]);
            lowestUV = std::min(lowestUV, uv);
            highestUV = std::max(highestUV, uv);
        }
    }
    EXPECT_EQ(lowestUV, 0.0);
    EXPECT_EQ(highestUV, 1.0);
    EXPECT_EQ(corners.size(), shape.positions);
    for (unsigned int f = 0; f < mesh->getNumberOfFaces(); f++) {
        const float* faceNormal = mesh->getFaceNormalPtr() + 3 * f;
        for (uint16_t index : mesh->getFacePtr()[f].index) {
            ASSERT_LT(index, mesh->getNumberOfVertices());
            const GLfixed* n = mesh->getVertexNormalPtr() + 3 * index;
            const double along = faceNormal[0] * fixedToDouble(n[0]) + faceNormal[1] * fixedToDouble(n[1]) +
                                 faceNormal[2] * fixedToDouble(n[2]);
            EXPECT_GT(along, 0.0) << "face " << f << " winds against its vertex " << index;
        }
    }
}

TEST(MeshPrimitives, CountsBoundsAndRefusals)
{
    LogCapture log;
    const Shape shapes[] = {
        {"box", [] { return PVMESH::createBox(2, 4, 6); }, 24, 12, {1, 2, 3}, 8},
        {"plane", [] { return PVMESH::createPlane(2, 6); }, 4, 2, {1, 0, 3}, 4},
        {"sphere", [] { return PVMESH::createSphere(1.5f, 8, 4); }, 45, 48, {1.5f, 1.5f, 1.5f}, 26},
        {"smallest sphere", [] { return PVMESH::createSphere(1, 3, 2); }, 12, 6, {1, 1, 1}, 5},
    };
    for (const Shape& shape : shapes) {
        SCOPED_TRACE(shape.what);
        PVMESH* mesh = shape.create();
        ASSERT_NE(mesh, nullptr);
        EXPECT_EQ(mesh->getNumberOfVertices(), shape.vertices);
        EXPECT_EQ(mesh->getNumberOfUVs(), shape.vertices);
        EXPECT_EQ(mesh->getNumberOfFaces(), shape.faces);
        EXPECT_FLOAT_EQ(mesh->getRadius(), std::sqrt(shape.half % shape.half));
        EXPECT_EQ(mesh->getMaximum(), shape.half);
        EXPECT_EQ(mesh->getMinimum(), -shape.half);
        ASSERT_NE(mesh->getMaterial(), nullptr);
        EXPECT_EQ(mesh->getMaterial()->getDiffuse(), K3MVECTOR4D(0.6f, 0.6f, 0.6f, 1.0f));
        expectWellFormed(mesh, shape);
        delete mesh;
    }
    EXPECT_EQ(log.fresh(), "");

    const std::pair<std::function<PVMESH*()>, const char*> refused[] = {
        {[] { return PVMESH::createBox(0, 1, 1); }, "createBox"},
        {[] { return PVMESH::createBox(1, -1, 1); }, "createBox"},
        {[] { return PVMESH::createBox(1, 1, NAN); }, "createBox"},
        {[] { return PVMESH::createPlane(1, 0); }, "createPlane"},
        {[] { return PVMESH::createPlane(INFINITY, 1); }, "createPlane"},
        {[] { return PVMESH::createSphere(0, 8, 4); }, "createSphere"},
        {[] { return PVMESH::createSphere(1, 2, 4); }, "createSphere"},
        {[] { return PVMESH::createSphere(1, 8, 1); }, "createSphere"},
        {[] { return PVMESH::createSphere(1, 300, 300); }, "createSphere"},
    };
    for (const auto& refusal : refused) {
        EXPECT_EQ(refusal.first(), nullptr);
        EXPECT_EQ(log.fresh(), std::string("   [!] Invalid params @ PVMESH::") + refusal.second + "\n");
    }
    EXPECT_EQ(PVNODE::getNumberOfNodes(), 0u);
    PVMATERIAL::cleanUp();
}

// ---------------------------------------------------------------- drawing

class LitPrimitives : public RecordingTest {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(startEngineInWindow()) << log.text();
        PVOPENGL::setBackgroundColor(0, 0, 1, 1);
        PVOPENGL::setGlobalAmbientLight(0.2f, 0.2f, 0.2f, 1.0f);
    }
    void TearDown() override { PEVRANO::free(); }
};

struct Probe {
    K3MVECTOR3D point;
    Rgb colour;
    double tolerance;  // the sphere is lit per vertex, between its vertices
};

struct LitCase {
    const char* what;
    std::function<PVMESH*()> create;
    K3MVECTOR3D position, lightDirection;
    std::vector<Probe> probes;
};

// A white material under a white light of diffuse 0.6 and global ambient
// 0.2: a side facing the light shows 0.2 + 0.6 N.L, a side facing away 0.2,
// the background blue.
TEST_F(LitPrimitives, EachDrawsWhereItStandsWithItsLitSideBrighter)
{
    const Rgb away {0.2, 0.2, 0.2}, facing {0.8, 0.8, 0.8}, background {0, 0, 1};
    const double exact = colourTolerance / 255.0;
    const LitCase cases[] = {
        {"box, lit from above",
         [] { return PVMESH::createBox(2, 2, 2); },
         {0, -2, -6},
         {0, -1, 0},
         {{{0, -1, -6}, facing, exact}, {{0, -1.8f, -5}, away, exact}, {{1.6f, -2, -6}, background, exact}}},
        {"plane below the eye, lit from above",
         [] { return PVMESH::createPlane(4, 4); },
         {0, -1, -6},
         {0, -1, 0},
         {{{0, -1, -6}, facing, exact}, {{2.6f, -1, -6}, background, exact}}},
        {"plane above the eye shows its back: culled",
         [] { return PVMESH::createPlane(4, 4); },
         {0, 1, -6},
         {0, -1, 0},
         {{{0, 1, -6}, background, exact}}},
        {"sphere, lit from the right",
         [] { return PVMESH::createSphere(1, 24, 12); },
         {0, 0, -6},
         {-1, 0, 0},
         {{{0.7f, 0, -5.286f}, {0.62, 0.62, 0.62}, 0.06},
          {{-0.7f, 0, -5.286f}, away, exact},
          {{1.5f, 0, -6}, background, exact}}},
    };
    for (const LitCase& c : cases) {
        SCOPED_TRACE(c.what);
        PVNODE* root = new PVNODE();
        PVLIGHT* light = new PVLIGHT();
        light->setLightType(PV_LIGHT_DIRECTIONAL);
        light->setDirection(c.lightDirection.x, c.lightDirection.y, c.lightDirection.z);
        light->setAmbient(0, 0, 0, 1);
        light->setDiffuse(0.6f, 0.6f, 0.6f, 1);
        light->setSpecular(0, 0, 0, 1);
        light->link(root);
        PVMESH* mesh = c.create();
        ASSERT_NE(mesh, nullptr);
        mesh->getMaterial()->setAmbient(1, 1, 1, 1);
        mesh->getMaterial()->setDiffuse(1, 1, 1, 1);
        mesh->setPosition(c.position.x, c.position.y, c.position.z);
        mesh->link(root);
        drawFrame(root, nullptr);
        for (const Probe& probe : c.probes) {
            const Rgb got = pixelOfPoint(probe.point.x, probe.point.y, probe.point.z);
            EXPECT_NEAR(got.r, probe.colour.r, probe.tolerance) << probe.point.x << ", " << probe.point.y;
            EXPECT_NEAR(got.g, probe.colour.g, probe.tolerance) << probe.point.x << ", " << probe.point.y;
            EXPECT_NEAR(got.b, probe.colour.b, probe.tolerance) << probe.point.x << ", " << probe.point.y;
        }
        PVNODE::cleanUp();
    }
}

}  // namespace
