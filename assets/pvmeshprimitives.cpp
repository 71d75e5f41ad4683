// Meshes made by the engine rather than read from a scene file: a box, a plane
// and a sphere, centred on their node's origin. Their geometry is built in
// floats and converted to 16.16 by the same code as a loaded mesh's.
#include <cmath>
#include <cstring>
#include <new>
#include <vector>

#include "assets/pvmaterial.h"
#include "assets/pvmesh.h"
#include "foundation/kvflog.h"

namespace {

const float pi = 3.14159265358979f;

bool positiveSize(float size) { return size > 0.0f && std::isfinite(size); }

// Half the extent of the box along the unit axis given.
float halfAlong(const K3MVECTOR3D& axis, const K3MVECTOR3D& half)
{
    return std::fabs(axis.x) * half.x + std::fabs(axis.y) * half.y + std::fabs(axis.z) * half.z;
}

}  // namespace

// Positions, normals and texture coordinates of every vertex, the faces,
// and the half extents of the bounding box.
struct PVMESH::PRIMITIVE {
    std::vector<float> positions, normals, uvs;
    std::vector<PVFACE> faces;
    K3MVECTOR3D half;
    bool closed;

    PRIMITIVE(const K3MVECTOR3D& halfExtents, bool closedSurface) : half(halfExtents), closed(closedSurface)
    {
    }

    unsigned int vertexCount() const { return static_cast<unsigned int>(positions.size() / 3); }
    K3MVECTOR3D position(unsigned int i) const
    {
        return K3MVECTOR3D(positions[3 * i], positions[3 * i + 1], positions[3 * i + 2]);
    }

    void addVertex(const K3MVECTOR3D& position, const K3MVECTOR3D& normal, float u, float v)
    {
        positions.insert(positions.end(), {position.x, position.y, position.z});
        normals.insert(normals.end(), {normal.x, normal.y, normal.z});
        uvs.insert(uvs.end(), {u, v});
    }

    void addFace(unsigned int a, unsigned int b, unsigned int c)
    {
        faces.push_back({{uint16_t(a), uint16_t(b), uint16_t(c)}});
    }

    // A rectangle around centre spanning half along u and v, facing u x v,
    // its texture from (0, 0) at -u -v to (1, 1) at +u +v.
    void addQuad(const K3MVECTOR3D& centre, const K3MVECTOR3D& u, const K3MVECTOR3D& v)
    {
        const unsigned int first = vertexCount();
        K3MVECTOR3D normal = u ^ v;
        normal.normalize();
        addVertex(centre - u - v, normal, 0.0f, 0.0f);
        addVertex(centre + u - v, normal, 1.0f, 0.0f);
        addVertex(centre + u + v, normal, 1.0f, 1.0f);
        addVertex(centre - u + v, normal, 0.0f, 1.0f);
        addFace(first, first + 1, first + 2);
        addFace(first, first + 2, first + 3);
    }
};

PVMESH* PVMESH::createBox(float sizeX, float sizeY, float sizeZ)
{
    if (!positiveSize(sizeX) || !positiveSize(sizeY) || !positiveSize(sizeZ)) {
        kvfLog("   [!] Invalid params @ PVMESH::createBox\n");
        return nullptr;
    }
    const K3MVECTOR3D half(sizeX / 2, sizeY / 2, sizeZ / 2);
    // Each face's outward axis and the upward axis of its texture; the
    // sides' textures stand upright.
    const K3MVECTOR3D faces[6][2] = {
        {{1, 0, 0}, {0, 1, 0}},  {{-1, 0, 0}, {0, 1, 0}}, {{0, 0, 1}, {0, 1, 0}},
        {{0, 0, -1}, {0, 1, 0}}, {{0, 1, 0}, {0, 0, -1}}, {{0, -1, 0}, {0, 0, 1}},
    };
    PRIMITIVE box(half, true);
    for (const auto& face : faces) {
        const K3MVECTOR3D& outward = face[0];
        const K3MVECTOR3D& up = face[1];
        const K3MVECTOR3D across = up ^ outward;
        box.addQuad(outward * halfAlong(outward, half), across * halfAlong(across, half),
                    up * halfAlong(up, half));
    }
    return fromPrimitive(box, "createBox");
}

PVMESH* PVMESH::createPlane(float sizeX, float sizeZ)
{
    if (!positiveSize(sizeX) || !positiveSize(sizeZ)) {
        kvfLog("   [!] Invalid params @ PVMESH::createPlane\n");
        return nullptr;
    }
    PRIMITIVE plane(K3MVECTOR3D(sizeX / 2, 0, sizeZ / 2), false);
    // x along u and -z along v: the plane faces +y.
    plane.addQuad(K3MVECTOR3D(0, 0, 0), K3MVECTOR3D(sizeX / 2, 0, 0), K3MVECTOR3D(0, 0, -sizeZ / 2));
    return fromPrimitive(plane, "createPlane");
}

// Rings of slices + 1 vertices (the seam is doubled so that the texture
// wraps once) from the top pole to the bottom one; the pole rings make one
// triangle per slice.
PVMESH* PVMESH::createSphere(float radius, unsigned int slices, unsigned int stacks)
{
    // Vertex and face counts are 16-bit.
    const bool fits = slices >= 3 && stacks >= 2 && (slices + 1ull) * (stacks + 1ull) <= 0xFFFF &&
                      slices * (2ull * stacks - 2) <= 0xFFFF;
    if (!positiveSize(radius) || !fits) {
        kvfLog("   [!] Invalid params @ PVMESH::createSphere\n");
        return nullptr;
    }
    PRIMITIVE sphere(K3MVECTOR3D(radius, radius, radius), true);
    for (unsigned int stack = 0; stack <= stacks; stack++) {
        const float polar = pi * float(stack) / float(stacks);
        for (unsigned int slice = 0; slice <= slices; slice++) {
            const float around = 2.0f * pi * float(slice) / float(slices);
            const K3MVECTOR3D normal(std::sin(polar) * std::sin(around), std::cos(polar),
                                     std::sin(polar) * std::cos(around));
            sphere.addVertex(normal * radius, normal, float(slice) / float(slices),
                             1.0f - float(stack) / float(stacks));
        }
    }
    const unsigned int ring = slices + 1;
    for (unsigned int stack = 0; stack < stacks; stack++)
        for (unsigned int slice = 0; slice < slices; slice++) {
            const unsigned int above = stack * ring + slice, below = above + ring;
            if (stack + 1 < stacks)
                sphere.addFace(above, below, below + 1);
            if (stack > 0)
                sphere.addFace(above, below + 1, above + 1);
        }
    return fromPrimitive(sphere, "createSphere");
}

// A mesh of the shape's geometry, face normals and bounds, with a material of
// its own; null after a log line when memory runs out.
PVMESH* PVMESH::fromPrimitive(const PRIMITIVE& shape, const char* operation)
{
    const unsigned int vertexCount = shape.vertexCount();
    const unsigned int faceCount = static_cast<unsigned int>(shape.faces.size());
    PVMESH* mesh = new (std::nothrow) PVMESH();
    PVMATERIAL* ownMaterial = mesh ? new (std::nothrow) PVMATERIAL() : nullptr;
    if (!ownMaterial || !mesh->allocateGeometry(vertexCount, vertexCount, faceCount)) {
        kvfLog("   [!] Out of memory @ PVMESH::%s\n", operation);
        delete ownMaterial;
        delete mesh;
        return nullptr;
    }
    mesh->convertToFixed(shape.positions.data(), shape.normals.data(), shape.uvs.data());
    std::memcpy(mesh->faces, shape.faces.data(), faceCount * sizeof(PVFACE));
    for (unsigned int f = 0; f < faceCount; f++) {
        const K3MVECTOR3D a = shape.position(shape.faces[f].index[0]);
        K3MVECTOR3D normal =
            (shape.position(shape.faces[f].index[1]) - a) ^ (shape.position(shape.faces[f].index[2]) - a);
        normal.normalize();
        std::memcpy(mesh->faceNormals + 3 * f, &normal.x, 3 * sizeof(float));
    }
    mesh->minimum = -shape.half;
    mesh->maximum = shape.half;
    mesh->radius = std::sqrt(shape.half % shape.half);
    mesh->closed = shape.closed;
    mesh->setMaterial(ownMaterial);
    return mesh;
}
