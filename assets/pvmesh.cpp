// Mesh: loading of a scene-file mesh body, the skeleton cache, CPU skinning
// in 16.16 and drawing for the render list.
#include "assets/pvmesh.h"

#include <cstring>
#include <new>

#include <immintrin.h>

#include "assets/pvmaterial.h"
#include "assets/pvshader.h"
#include "assets/pvtexture.h"
#include "core/pvgl.h"
#include "core/pvopengl.h"
#include "core/pvsettings.h"
#include "foundation/kvflog.h"
#include "foundation/kvfmemory.h"
#include "foundation/kvfreader.h"
#include "scene/pvelement.h"
#include "scene/pvhelper.h"
#include "scene/pvlight.h"

PVMESH::SKELETON* PVMESH::skeletons = nullptr;
unsigned int PVMESH::numberOfSkeletons = 0;
bool PVMESH::normalsShown = false;
bool PVMESH::vectorSkinning = [] {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") != 0;
}();

namespace {

// Signed 32 x 32 -> 64-bit product shifted right by 16.
inline int32_t mulFixed(int32_t a, int32_t b) { return static_cast<int32_t>((int64_t(a) * b) >> 16); }

// 32-bit sums wrap, as the target's integer unit does.
inline int32_t add32(int32_t a, int32_t b) { return static_cast<int32_t>(uint32_t(a) + uint32_t(b)); }

// Bytes of a geometry block: positions, normals and coordinates in 16.16,
// face normals in floats, then the faces.
size_t geometrySize(size_t vertexCount, size_t uvCount, size_t faceCount)
{
    return vertexCount * 24 + uvCount * 8 + faceCount * 12 + faceCount * sizeof(PVFACE);
}

}  // namespace

PVMESH::PVMESH() :
    radius(-1.0f),
    material(nullptr),
    shadowCaster(false),
    closed(false),
    hidden(false),
    nbVertices(0),
    nbUVs(0),
    nbFaces(0),
    bonesPerVertex(0),
    nbBones(0),
    geometry(nullptr),
    vertices(nullptr),
    normals(nullptr),
    faceNormals(nullptr),
    uvs(nullptr),
    faces(nullptr),
    boneIndex(nullptr),
    boneWeight(nullptr),
    boneIndexFloat(nullptr),
    bones(nullptr),
    skinnedVertices(nullptr),
    skinnedNormals(nullptr)
{
    type = PV_TYPE_MESH;
    setDefaultName("[mesh %d]");
}

PVMESH::PVMESH(const PVMESH& other) : PVNODE(other) { copyArraysFrom(other); }

PVMESH& PVMESH::operator=(const PVMESH& other)
{
    if (this == &other)
        return *this;
    releaseSkin();
    releaseGeometry();
    setMaterial(nullptr);
    PVNODE::operator=(other);
    copyArraysFrom(other);
    return *this;
}

PVMESH::~PVMESH()
{
    releaseSkin();
    releaseGeometry();
    setMaterial(nullptr);
}

// Copies the plain fields, duplicates the arrays and takes a reference on
// the material.
void PVMESH::copyArraysFrom(const PVMESH& other)
{
    radius = other.radius;
    minimum = other.minimum;
    maximum = other.maximum;
    material = nullptr;
    shadowCaster = other.shadowCaster;
    closed = other.closed;
    hidden = other.hidden;
    nbVertices = nbUVs = nbFaces = bonesPerVertex = nbBones = 0;
    geometry = nullptr;
    vertices = normals = uvs = skinnedVertices = skinnedNormals = nullptr;
    faceNormals = nullptr;
    faces = nullptr;
    boneIndex = nullptr;
    boneWeight = boneIndexFloat = nullptr;
    bones = nullptr;
    setMaterial(other.material);
    if (allocateGeometry(other.nbVertices, other.nbUVs, other.nbFaces))
        std::memcpy(geometry, other.geometry, geometrySize(nbVertices, nbUVs, nbFaces));
    if (other.bonesPerVertex && allocateInfluences(other.bonesPerVertex) && allocateBones(other.nbBones)) {
        const size_t influences = size_t(nbVertices) * bonesPerVertex;
        std::memcpy(boneIndex, other.boneIndex, influences);
        std::memcpy(boneWeight, other.boneWeight, influences * sizeof(float));
        std::memcpy(boneIndexFloat, other.boneIndexFloat, influences * sizeof(float));
        std::memcpy(bones, other.bones, nbBones * sizeof(PVBONE));
    }
}

void PVMESH::setMaterial(PVMATERIAL* newMaterial)
{
    if (material)
        material->decReferences();
    material = newMaterial;
    if (material)
        material->incReferences();
}

bool PVMESH::allocateGeometry(unsigned int vertexCount, unsigned int uvCount, unsigned int faceCount)
{
    releaseGeometry();
    const size_t size = geometrySize(vertexCount, uvCount, faceCount);
    if (size == 0)
        return true;
    geometry = kvfMalloc(static_cast<unsigned int>(size));
    if (!geometry)
        return false;
    char* at = static_cast<char*>(geometry);
    nbVertices = static_cast<uint16_t>(vertexCount);
    nbUVs = static_cast<uint16_t>(uvCount);
    nbFaces = static_cast<uint16_t>(faceCount);
    vertices = vertexCount ? reinterpret_cast<GLfixed*>(at) : nullptr;
    normals = vertexCount ? reinterpret_cast<GLfixed*>(at + vertexCount * 12) : nullptr;
    at += vertexCount * 24;
    uvs = uvCount ? reinterpret_cast<GLfixed*>(at) : nullptr;
    at += uvCount * 8;
    faceNormals = faceCount ? reinterpret_cast<float*>(at) : nullptr;
    at += faceCount * 12;
    faces = faceCount ? reinterpret_cast<PVFACE*>(at) : nullptr;
    return true;
}

void PVMESH::releaseGeometry()
{
    if (geometry)
        kvfFree(geometry);
    geometry = nullptr;
    vertices = normals = uvs = nullptr;
    faceNormals = nullptr;
    faces = nullptr;
    nbVertices = nbUVs = nbFaces = 0;
}

// Influence tables and, without a skinning shader, the CPU skinning output,
// all for the current vertex count.
bool PVMESH::allocateInfluences(unsigned int perVertex)
{
    releaseSkin();
    const size_t influences = size_t(nbVertices) * perVertex + 1;
    boneIndex = new (std::nothrow) uint8_t[influences]();
    boneWeight = new (std::nothrow) float[influences]();
    boneIndexFloat = new (std::nothrow) float[influences]();
    const bool cpuSkinning = !PVSHADER::useSkinning();
    if (cpuSkinning) {
        // One spare element: the vector kernel writes four values at a time.
        skinnedVertices = new (std::nothrow) GLfixed[size_t(nbVertices) * 3 + 1]();
        skinnedNormals = new (std::nothrow) GLfixed[size_t(nbVertices) * 3 + 1]();
    }
    bonesPerVertex = static_cast<uint16_t>(perVertex);
    if (boneIndex && boneWeight && boneIndexFloat && (!cpuSkinning || (skinnedVertices && skinnedNormals)))
        return true;
    releaseSkin();
    return false;
}

bool PVMESH::allocateBones(unsigned int boneCount)
{
    delete[] bones;
    bones = new (std::nothrow) PVBONE[boneCount + 1]();
    nbBones = bones ? static_cast<uint16_t>(boneCount) : 0;
    return bones != nullptr;
}

void PVMESH::releaseSkin()
{
    delete[] boneIndex;
    delete[] boneWeight;
    delete[] boneIndexFloat;
    delete[] bones;
    delete[] skinnedVertices;
    delete[] skinnedNormals;
    boneIndex = nullptr;
    boneWeight = boneIndexFloat = nullptr;
    bones = nullptr;
    skinnedVertices = skinnedNormals = nullptr;
    bonesPerVertex = nbBones = 0;
}

bool PVMESH::facesInRange() const
{
    for (unsigned int f = 0; f < nbFaces; f++)
        for (uint16_t index : faces[f].index)
            if (index >= nbVertices)
                return false;
    return true;
}

bool PVMESH::boneIndicesInRange() const
{
    const size_t influences = size_t(nbVertices) * bonesPerVertex;
    for (size_t i = 0; i < influences; i++)
        if (boneIndex[i] >= nbBones)
            return false;
    return true;
}

bool PVMESH::setGeometry(unsigned int vertexCount, const GLfixed* newVertices, const GLfixed* newNormals,
                         const GLfixed* newUVs, unsigned int faceCount, const PVFACE* newFaces)
{
    if (vertexCount > 0xFFFF || faceCount > 0xFFFF || !newVertices || (faceCount && !newFaces))
        return false;
    releaseSkin();
    if (!allocateGeometry(vertexCount, newUVs ? vertexCount : 0, faceCount))
        return false;
    std::memcpy(vertices, newVertices, vertexCount * 12);
    if (newNormals)
        std::memcpy(normals, newNormals, vertexCount * 12);
    else
        std::memset(normals, 0, vertexCount * 12);
    if (newUVs)
        std::memcpy(uvs, newUVs, vertexCount * 8);
    if (faceCount) {
        std::memcpy(faces, newFaces, faceCount * sizeof(PVFACE));
        std::memset(faceNormals, 0, faceCount * 12);
    }
    if (facesInRange())
        return true;
    releaseGeometry();
    return false;
}

bool PVMESH::setSkin(unsigned int perVertex, const uint8_t* indices, const float* weights,
                     unsigned int boneCount, const char* const* names)
{
    if (perVertex == 0 || perVertex > 0xFFFF || boneCount > PV_MESH_BONES || !indices || !weights)
        return false;
    if (!allocateInfluences(perVertex) || !allocateBones(boneCount))
        return false;
    const size_t influences = size_t(nbVertices) * perVertex;
    std::memcpy(boneIndex, indices, influences);
    std::memcpy(boneWeight, weights, influences * sizeof(float));
    for (unsigned int b = 0; b < boneCount; b++) {
        std::strncpy(bones[b].name, names && names[b] ? names[b] : "", PV_NODE_NAME_SIZE - 1);
        bones[b].name[PV_NODE_NAME_SIZE - 1] = '\0';
    }
    if (!boneIndicesInRange()) {
        releaseSkin();
        return false;
    }
    finishSkin();
    return true;
}

float PVMESH::radiusOf(PVNODE* node)
{
    switch (node->getType()) {
    case PV_TYPE_MESH:
        return static_cast<PVMESH*>(node)->radius;
    case PV_TYPE_HELPER:
        return static_cast<PVHELPER*>(node)->getRadius();
    default:
        return 0.0f;
    }
}

// ---------------------------------------------------------------- loading

PVNODE* PVMESH::load(KVFREADER& reader, bool obsolete, uint16_t& children)
{
    PVMESH* mesh = new (std::nothrow) PVMESH();
    if (!mesh) {
        kvfLog("   [!] Consistency error: mesh == NULL @ PVMESH::load\n");
        return nullptr;
    }
    if (mesh->readBody(reader, obsolete, children))
        return mesh;
    delete mesh;
    return nullptr;
}

bool PVMESH::readBody(KVFREADER& reader, bool obsolete, uint16_t& children)
{
    if (!reader.skip(4) || !readName(reader))
        return false;
    if (!readVector(reader, position) || !readVector(reader, rotation) || !readVector(reader, origin))
        return false;
    if (!readMaterial(reader))
        return false;
    return readGeometry(reader, obsolete, children);
}

bool PVMESH::readMaterial(KVFREADER& reader)
{
    char materialName[PV_NODE_NAME_SIZE];
    if (!reader.readString(materialName, sizeof materialName))
        return false;
    PVMATERIAL* found = PVMATERIAL::findByName(materialName);
    const bool isRoot = std::strcmp(name, "[root]") == 0;
    if (std::strcmp(materialName, "[none]") == 0) {
        if (!isRoot)
            kvfLog("   [!] no material assigned to mesh '%s'\n", name);
    } else if (!found && !isRoot && materialName[0]) {
        kvfLog("   [!] material '%s' not found for mesh '%s'\n", materialName, name);
    }
    setMaterial(found);
    return true;
}

// Converts the float arrays just read into 16.16 in place.
void PVMESH::convertToFixed(const float* positions, const float* vertexNormals, const float* coordinates)
{
    for (size_t i = 0; i < size_t(nbVertices) * 3; i++) {
        vertices[i] = PV_floatToFixed(positions[i]);
        normals[i] = PV_floatToFixed(vertexNormals[i]);
    }
    for (size_t i = 0; coordinates && i < size_t(nbVertices) * 2; i++)
        uvs[i] = PV_floatToFixed(coordinates[i]);
}

bool PVMESH::readGeometry(KVFREADER& reader, bool obsolete, uint16_t& children)
{
    uint8_t hiddenFlag;
    uint16_t vertexCount, uvCount, faceCount, perVertex;
    if (!reader.readFloat(radius) || !readVector(reader, minimum) || !readVector(reader, maximum) ||
        !reader.readU8(hiddenFlag) || !reader.readU16(vertexCount) || !reader.readU16(uvCount) ||
        !reader.readU16(faceCount) || !reader.readU16(children) || !reader.readU16(perVertex))
        return false;
    hidden = hiddenFlag != 0;
    // Texture coordinates are converted over the vertex count.
    if (uvCount && uvCount != vertexCount)
        return reader.invalidate();
    const size_t obsoleteBytes = obsolete ? size_t(vertexCount) * 12 + size_t(faceCount) * 16 : 0;
    const size_t fileBytes =
        size_t(vertexCount) * 24 + size_t(uvCount) * 8 + size_t(faceCount) * 18 + obsoleteBytes;
    if (fileBytes > reader.remaining())
        return reader.invalidate();
    if (!allocateGeometry(vertexCount, uvCount, faceCount)) {
        kvfLog("   [!] Out of memory @ PVMESH::recursiveLoadKVE\n");
        return false;
    }
    // The floats land in the 16.16 arrays and are converted where they lie.
    float* positions = reinterpret_cast<float*>(vertices);
    float* vertexNormals = reinterpret_cast<float*>(normals);
    float* coordinates = reinterpret_cast<float*>(uvs);
    reader.readFloats(positions, size_t(vertexCount) * 3);
    reader.readFloats(vertexNormals, size_t(vertexCount) * 3);
    if (obsolete)
        reader.skip(size_t(vertexCount) * 12);
    reader.readFloats(coordinates, size_t(uvCount) * 2);
    for (unsigned int f = 0; f < faceCount; f++)
        for (uint16_t& index : faces[f].index)
            reader.readU16(index);
    reader.readFloats(faceNormals, size_t(faceCount) * 3);
    if (obsolete)
        reader.skip(size_t(faceCount) * 16);
    if (!reader.good() || !facesInRange())
        return reader.invalidate();
    if (perVertex && !readSkin(reader, perVertex))
        return false;
    convertToFixed(positions, vertexNormals, coordinates);
    return true;
}

bool PVMESH::readSkin(KVFREADER& reader, unsigned int perVertex)
{
    const size_t influences = size_t(nbVertices) * perVertex;
    if (influences * 5 + 2 > reader.remaining())
        return reader.invalidate();
    if (!allocateInfluences(perVertex)) {
        kvfLog("   [!] Out of memory @ PVMESH::recursiveLoadKVE\n");
        return false;
    }
    reader.readBytes(boneIndex, influences);
    reader.readFloats(boneWeight, influences);
    uint16_t boneCount;
    if (!reader.readU16(boneCount))
        return false;
    // The skeleton cache holds PV_MESH_BONES matrices per mesh.
    if (boneCount > PV_MESH_BONES)
        return reader.invalidate();
    if (!allocateBones(boneCount)) {
        kvfLog("   [!] Out of memory @ PVMESH::recursiveLoadKVE\n");
        return false;
    }
    for (unsigned int b = 0; b < boneCount; b++)
        if (!reader.readString(bones[b].name, sizeof bones[b].name))
            return false;
    if (!boneIndicesInRange())
        return reader.invalidate();
    finishSkin();
    return true;
}

// Bone indices as floats for a skinning shader, and the material told that
// it dresses a skin.
void PVMESH::finishSkin()
{
    const size_t influences = size_t(nbVertices) * bonesPerVertex;
    for (size_t i = 0; i < influences; i++)
        boneIndexFloat[i] = float(boneIndex[i]);
    if (material)
        material->setSkinning(true);
}

bool PVMESH::resetBones(PVNODE* root)
{
    if (!root) {
        kvfLog("   [!] Invalid params @ PVMESH::resetBones\n");
        return false;
    }
    kvfLog("   Building bones for %s... ", name);
    for (unsigned int b = 0; b < nbBones; b++) {
        PVBONE& bone = bones[b];
        bone.node = root->findByNameInHierarchy(bone.name);
        if (bone.node) {
            bone.inverseBind = bone.node->getFinalMatrix(PV_MESH_SKELETON_ROOT).inverse();
        } else {
            kvfLog("   [!] Bone %s not found @ PVMESH::recursiveLoadKVE\n", bone.name);
            bone.inverseBind.setIdentity();
        }
    }
    kvfLog("done\n");
    return true;
}

// ---------------------------------------------------------------- skeleton cache

// A missing cache is tolerated: skinned meshes then keep their rest pose.
bool PVMESH::init()
{
    skeletons = new (std::nothrow) SKELETON[PV_MESH_SKELETONS];
    numberOfSkeletons = 0;
    for (unsigned int slot = 0; skeletons && slot < PV_MESH_SKELETONS; slot++)
        skeletons[slot].owner = nullptr;
    return true;
}

bool PVMESH::free()
{
    delete[] skeletons;
    skeletons = nullptr;
    numberOfSkeletons = 0;
    return true;
}

void PVMESH::reset()
{
    numberOfSkeletons = 0;
    PVOPENGL::vertexArrayOff();
    PVOPENGL::normalArrayOff();
    PVOPENGL::colorArrayOff();
    PVOPENGL::textureArrayOff();
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
    glDisableClientState(GL_TEXTURE_COORD_ARRAY);
}

K3MMATRIX* PVMESH::nextSkeleton()
{
    if (!skeletons || numberOfSkeletons >= PV_MESH_SKELETONS)
        return nullptr;
    return skeletons[numberOfSkeletons].bone;
}

unsigned int PVMESH::claimSkeleton(PVMESH* owner)
{
    if (numberOfSkeletons >= PV_MESH_SKELETONS)
        return PV_MESH_SKELETONS;
    if (skeletons)
        skeletons[numberOfSkeletons].owner = owner;
    return numberOfSkeletons++;
}

K3MMATRIX* PVMESH::getSkeleton(unsigned int slot)
{
    return skeletons && slot < PV_MESH_SKELETONS ? skeletons[slot].bone : nullptr;
}

PVMESH* PVMESH::getSkeletonOwner(unsigned int slot)
{
    return skeletons && slot < PV_MESH_SKELETONS ? skeletons[slot].owner : nullptr;
}

// ---------------------------------------------------------------- skinning kernels

namespace {

struct SKINJOB {
    unsigned int vertexCount;
    unsigned int perVertex;
    const GLfixed* vertices;
    const GLfixed* normals;
    const uint8_t* boneIndex;
    const float* boneWeight;
    const GLfixed (*bone)[16];
    unsigned int boneCount;
    GLfixed* outP;
    GLfixed* outN;
};

// One influence at a time, every product a 64-bit multiply shifted by 16;
// every output is written.
void skinOneByOne(const SKINJOB& job)
{
    for (unsigned int v = 0; v < job.vertexCount; v++) {
        const GLfixed* p = job.vertices + 3 * v;
        const GLfixed* n = job.normals + 3 * v;
        int32_t outP[3] = {0, 0, 0}, outN[3] = {0, 0, 0};
        for (unsigned int j = 0; j < job.perVertex; j++) {
            const size_t influence = size_t(v) * job.perVertex + j;
            const int32_t w = PV_floatToFixed(job.boneWeight[influence]);
            if (w <= 0)
                continue;
            const GLfixed* m = job.bone[job.boneIndex[influence]];
            for (int c = 0; c < 3; c++) {
                const int32_t turned =
                    add32(add32(mulFixed(p[0], m[c]), mulFixed(p[1], m[4 + c])), mulFixed(p[2], m[8 + c]));
                const int32_t q = add32(turned, m[12 + c]);
                const int32_t nc =
                    add32(add32(mulFixed(n[0], m[c]), mulFixed(n[1], m[4 + c])), mulFixed(n[2], m[8 + c]));
                outP[c] = add32(outP[c], mulFixed(q, w));
                outN[c] = add32(outN[c], mulFixed(nc, w));
            }
        }
        for (int c = 0; c < 3; c++) {
            job.outP[3 * v + c] = outP[c];
            job.outN[3 * v + c] = outN[c];
        }
    }
}

// The same arithmetic in 64-bit lanes, two influences at a time in three
// registers: (q.x, q.y, q.z, n.x) of each, and (n.y, n.z) of both. A signed
// 32 x 32 -> 64 multiply reads the low 32 bits of each lane, and only bits
// 16 to 47 of a product survive the shift and the 32-bit truncation, so
// logical shifts and 64-bit sums give exactly the wrapped 32-bit results.
// A skipped influence weighs zero, which adds nothing.
struct BONELANES {
    __m256i x, y, z, t;
    __m256i nx, ny, nz;  // (n.y, n.z) coefficients, twice
    __m256i padding;  // 256 bytes: a bone index scales by a shift
};

struct VERTEXLANES {
    __m256i px, py, pz;  // (p, p, p, n) per coordinate
    __m256i nx, ny, nz;  // n per coordinate in every lane
};

__attribute__((target("avx2"))) inline __m256i mulShifted(__m256i a, __m256i b)
{
    return _mm256_srli_epi64(_mm256_mul_epi32(a, b), 16);
}

__attribute__((target("avx2"))) inline __m256i bothHalves(__m256i low, __m256i high)
{
    return _mm256_blend_epi32(low, high, 0xF0);
}

// Weights in 16.16 as PV_floatToFixed gives them, in 64-bit lanes, with
// those at or below zero (NaN included) as zero. The truncating conversion
// gives INT_MIN for NaN and out of range values: large positive ones are
// saturated by hand.
__attribute__((target("avx2"))) inline __m256i positiveWeights(__m128 weights)
{
    const __m128 scaled = _mm_mul_ps(weights, _mm_set1_ps(65536.0f));
    const __m128 tooLarge = _mm_cmpge_ps(scaled, _mm_set1_ps(2147483648.0f));
    __m128i w =
        _mm_blendv_epi8(_mm_cvttps_epi32(scaled), _mm_set1_epi32(2147483647), _mm_castps_si128(tooLarge));
    return _mm256_cvtepi32_epi64(_mm_max_epi32(w, _mm_setzero_si128()));
}

// (q.x, q.y, q.z, n.x) of one influence, weighted.
__attribute__((target("avx2"))) inline __m256i weightedPoint(const VERTEXLANES& v, const BONELANES& m,
                                                             __m256i w)
{
    __m256i q = _mm256_add_epi64(mulShifted(v.px, m.x), mulShifted(v.py, m.y));
    q = _mm256_add_epi64(q, _mm256_add_epi64(mulShifted(v.pz, m.z), m.t));
    return mulShifted(q, w);
}

// (n.y, n.z) of two influences, weighted by wa and wb.
__attribute__((target("avx2"))) inline __m256i weightedNormals(const VERTEXLANES& v, const BONELANES& a,
                                                               const BONELANES& b, __m256i wa, __m256i wb)
{
    __m256i t =
        _mm256_add_epi64(mulShifted(v.nx, bothHalves(a.nx, b.nx)), mulShifted(v.ny, bothHalves(a.ny, b.ny)));
    t = _mm256_add_epi64(t, mulShifted(v.nz, bothHalves(a.nz, b.nz)));
    return mulShifted(t, _mm256_blend_epi32(wa, wb, 0xF0));
}

// Only the low 32 bits of a lane take part in a multiply: the lanes are
// broadcasts of 32-bit values.
__attribute__((target("avx2"))) inline VERTEXLANES vertexLanes(const GLfixed* p, const GLfixed* n)
{
    const __m256i nx = _mm256_set1_epi32(n[0]), ny = _mm256_set1_epi32(n[1]), nz = _mm256_set1_epi32(n[2]);
    return {_mm256_blend_epi32(_mm256_set1_epi32(p[0]), nx, 0xC0),
            _mm256_blend_epi32(_mm256_set1_epi32(p[1]), ny, 0xC0),
            _mm256_blend_epi32(_mm256_set1_epi32(p[2]), nz, 0xC0),
            nx,
            ny,
            nz};
}

// The low 32 bits of the lanes (q.x, q.y, q.z, n.x) and of the two halves
// of (n.y, n.z, n.y, n.z), written four at a time: the fourth value lands on
// the next vertex, written after, or on the spare element past the end.
__attribute__((target("avx2"))) inline void storeVertex(__m256i point, __m256i normals, GLfixed* outP,
                                                        GLfixed* outN)
{
    const __m128i low = _mm256_castsi256_si128(point);
    const __m128i high = _mm256_extracti128_si256(point, 1);
    const __m128i q = _mm_castps_si128(
        _mm_shuffle_ps(_mm_castsi128_ps(low), _mm_castsi128_ps(high), _MM_SHUFFLE(2, 0, 2, 0)));
    const __m128i yz = _mm_add_epi32(_mm256_castsi256_si128(normals), _mm256_extracti128_si256(normals, 1));
    const __m128i xyz =
        _mm_blend_epi32(_mm_shuffle_epi32(yz, _MM_SHUFFLE(0, 2, 0, 0)), _mm_shuffle_epi32(high, 2), 0x1);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(outP), q);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(outN), xyz);
}

// Influences per vertex known at compile time (or 0: read from the job) let
// the common counts run unrolled.
template <unsigned int PERVERTEX>
__attribute__((target("avx2"))) void skinVertices(const SKINJOB& job, const BONELANES* lanes)
{
    const unsigned int perVertex = PERVERTEX ? PERVERTEX : job.perVertex;
    for (unsigned int v = 0; v < job.vertexCount; v++) {
        const VERTEXLANES vertex = vertexLanes(job.vertices + 3 * v, job.normals + 3 * v);
        const uint8_t* index = job.boneIndex + size_t(v) * perVertex;
        const float* weight = job.boneWeight + size_t(v) * perVertex;
        __m256i accumulated = _mm256_setzero_si256();
        __m256i accumulatedNormals = _mm256_setzero_si256();
        for (unsigned int j = 0; j < perVertex; j += 2) {
            // An odd last influence pairs with itself at weight zero.
            const bool pair = j + 1 < perVertex;
            const BONELANES& a = lanes[index[j]];
            const BONELANES& b = lanes[index[pair ? j + 1 : j]];
            const __m256i w = positiveWeights(
                pair ? _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(weight + j)))
                     : _mm_load_ss(weight + j));
            const __m256i wa = _mm256_permute4x64_epi64(w, 0x00);
            const __m256i wb = _mm256_permute4x64_epi64(w, 0x55);
            accumulated = _mm256_add_epi64(accumulated, weightedPoint(vertex, a, wa));
            accumulated = _mm256_add_epi64(accumulated, weightedPoint(vertex, b, wb));
            accumulatedNormals = _mm256_add_epi64(accumulatedNormals, weightedNormals(vertex, a, b, wa, wb));
        }
        storeVertex(accumulated, accumulatedNormals, job.outP + 3 * v, job.outN + 3 * v);
    }
}

__attribute__((target("avx2"))) void skinWithAvx2(const SKINJOB& job)
{
    BONELANES lanes[PV_MESH_BONES];
    for (unsigned int b = 0; b < job.boneCount; b++) {
        const GLfixed* m = job.bone[b];
        lanes[b] = {_mm256_setr_epi64x(m[0], m[1], m[2], m[0]),   _mm256_setr_epi64x(m[4], m[5], m[6], m[4]),
                    _mm256_setr_epi64x(m[8], m[9], m[10], m[8]),  _mm256_setr_epi64x(m[12], m[13], m[14], 0),
                    _mm256_setr_epi64x(m[1], m[2], m[1], m[2]),   _mm256_setr_epi64x(m[5], m[6], m[5], m[6]),
                    _mm256_setr_epi64x(m[9], m[10], m[9], m[10]), _mm256_setzero_si256()};
    }
    if (job.perVertex == 4)
        skinVertices<4>(job, lanes);
    else
        skinVertices<0>(job, lanes);
}

}  // namespace

// ---------------------------------------------------------------- skinning

// Each bone's matrix of this frame relative to the mesh, in 16.16: the pose
// from the cache taken back through the mesh's world matrix, after the
// bone's inverse bind matrix.
void PVMESH::computeBoneMatrices(unsigned int slot, GLfixed (*fixed)[16])
{
    const K3MMATRIX invRoot = getFinalMatrix(PV_MESH_SKELETON_ROOT).inverse();
    const K3MMATRIX* pose = getSkeleton(slot);
    const K3MMATRIX identity;
    for (unsigned int b = 0; b < nbBones; b++) {
        K3MMATRIX m = (pose ? pose[b] : identity) * invRoot;
        m = bones[b].inverseBind * m;
        for (int i = 0; i < 16; i++)
            fixed[b][i] = PV_floatToFixed(m.m[i]);
    }
}

bool PVMESH::animate(unsigned int slot)
{
    if (bonesPerVertex == 0)
        return true;
    if (slot >= PV_MESH_SKELETONS) {
        kvfLog("   [!] Animation not computed (cache full) @ PVMESH::animate\n");
        return false;
    }
    if (!skinnedVertices)
        return true;
    GLfixed fixed[PV_MESH_BONES][16];
    computeBoneMatrices(slot, fixed);

    const SKINJOB job = {nbVertices, bonesPerVertex, vertices, normals,         boneIndex,
                         boneWeight, fixed,          nbBones,  skinnedVertices, skinnedNormals};
    if (vectorSkinning)
        skinWithAvx2(job);
    else
        skinOneByOne(job);
    return true;
}

// ---------------------------------------------------------------- drawing

// Selection colour: the record's auxiliary id, or the node id, packed as the
// picking read-back expects it.
void PVMESH::setSelectionColour(const void* element)
{
    const PVELEMENT* record = static_cast<const PVELEMENT*>(element);
    const unsigned int code = record->getAuxId() ? record->getAuxId() : id;
    if (PVSETTINGS::getSDLColorDepth() == 16) {
        PV_glColor4f(float(code >> 11) / 31.0f, float((code & 0x7E0) >> 5) / 63.0f, float(code & 31) / 31.0f,
                     0.0f);
    } else {
        PV_glColor4f(float(code & 0xFF) / 255.0f, float((code >> 8) & 0xFF) / 255.0f,
                     float((code >> 16) & 0xFF) / 255.0f, float((code >> 24) & 0xFF) / 255.0f);
    }
}

void PVMESH::drawArrays(bool textured)
{
    const bool skinned = bonesPerVertex != 0 && skinnedVertices;
    if (vertices) {
        PVOPENGL::vertexArrayOn();
        glVertexPointer(3, GL_FIXED, 0, skinned ? skinnedVertices : vertices);
    } else {
        PVOPENGL::vertexArrayOff();
    }
    if (normals) {
        PVOPENGL::normalArrayOn();
        glNormalPointer(GL_FIXED, 0, skinned ? skinnedNormals : normals);
    } else {
        PVOPENGL::normalArrayOff();
    }
    if (uvs && textured) {
        PVOPENGL::textureArrayOn();
        glTexCoordPointer(2, GL_FIXED, 0, uvs);
    } else {
        PVOPENGL::textureArrayOff();
    }
    if (nbFaces)
        glDrawElements(GL_TRIANGLES, nbFaces * 3, GL_UNSIGNED_SHORT, faces);
}

bool PVMESH::render(void* element)
{
    if (!element) {
        kvfLog("   [!] Invalid params @ PVMESH::render\n");
        return false;
    }
    if (hidden)
        return true;
    PVELEMENT* record = static_cast<PVELEMENT*>(element);
    const int profile = PVOPENGL::getProfile();
    bool transparent = false;
    if (profile < PV_OPENGL_PROFILE_SELECTION) {
        PVLIGHT::activateNearest(record);
    } else {
        PVLIGHT::lightingOff();
        PVTEXTURE::texturingOff(PV_TEXTURE_UNITS);
        PVOPENGL::blendingOff();
        const bool passthrough = PVSHADER::usePassthrough();
        if (passthrough) {
            PVSHADER::passthrough->render(nullptr);
            if (profile == PV_OPENGL_PROFILE_DOF)
                PVSHADER::bindNearAndFarPlane(PVOPENGL::getNearPlane(), PVOPENGL::getFarPlane());
        } else {
            PVSHADER::disable();
        }
        if (!(passthrough && profile == PV_OPENGL_PROFILE_DOF))
            setSelectionColour(record);
    }
    if (profile < PV_OPENGL_PROFILE_SELECTION && material) {
        if (PVLIGHT::getLighting()) {
            transparent = material->isTransparent();
            const PVELEMENT* light = record->getNearestLight(0);
            unsigned int lightType =
                light ? static_cast<unsigned int>(static_cast<PVLIGHT*>(light->getNode())->getLightType())
                      : 0;
            material->render(light ? &lightType : nullptr);
        } else {
            material->render(nullptr);
        }
    }
    if (bonesPerVertex && !animate(record->getParam1()))
        return false;

    const bool culled = PVOPENGL::isCulled();
    if (!record->getNearestLight(0))
        PVSHADER::disable();
    PV_glLoadMatrixf(record->getMatrix()->m);
    if (transparent)
        PVOPENGL::twoSideOn();
    else
        PVOPENGL::twoSideOff();
    const bool textured = profile != PV_OPENGL_PROFILE_SELECTION;
    if (transparent) {
        PVOPENGL::cullingOn();
        glCullFace(GL_FRONT);
        drawArrays(textured);
        glCullFace(GL_BACK);
    }
    drawArrays(textured);
    if (culled)
        PVOPENGL::cullingOn();
    else
        PVOPENGL::cullingOff();
    if (bonesPerVertex)
        PVSHADER::unbindBones();
    return true;
}
