// Mesh: geometry and skin storage, the skeleton cache and drawing for the
// render list. Scene-file reading is in pvmeshrecord.cpp, CPU skinning in
// pvmeshskinning.cpp.
#include "assets/pvmesh.h"

#include <cstring>
#include <new>
#include <type_traits>

#include "assets/pvmaterial.h"
#include "assets/pvshader.h"
#include "assets/pvtexture.h"
#include "core/pvgl.h"
#include "core/pvopengl.h"
#include "core/pvsettings.h"
#include "foundation/kvflog.h"
#include "foundation/kvfmemory.h"
#include "scene/pvelement.h"
#include "scene/pvhelper.h"
#include "scene/pvlight.h"

PVMESH::SKELETON* PVMESH::skeletons = nullptr;
unsigned int PVMESH::numberOfSkeletons = 0;
bool PVMESH::normalsShown = false;

namespace {

// Bytes of a geometry block: positions, normals and coordinates in 16.16,
// face normals in floats, then the faces.
size_t geometrySize(size_t vertexCount, size_t uvCount, size_t faceCount)
{
    return vertexCount * 24 + uvCount * 8 + faceCount * 12 + faceCount * sizeof(PVFACE);
}

// A zero-filled counted block of count elements of T, or null when the
// allocator fails or the size does not fit the counter's 32 bits.
template <typename T> T* countedZeroed(size_t count)
{
    const size_t bytes = count * sizeof(T);
    if (bytes > 0xFFFFFFFFu)
        return nullptr;
    void* block = kvfMalloc(static_cast<unsigned int>(bytes));
    if (block)
        std::memset(block, 0, bytes);
    return static_cast<T*>(block);
}

static_assert(std::is_trivially_destructible<PVBONE>::value, "bone records are freed without destructors");

template <typename T> void releaseCounted(T*& block)
{
    if (block)
        kvfFree(block);
    block = nullptr;
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
    releaseCounted(geometry);
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
    boneIndex = countedZeroed<uint8_t>(influences);
    boneWeight = countedZeroed<float>(influences);
    boneIndexFloat = countedZeroed<float>(influences);
    const bool cpuSkinning = !PVSHADER::useSkinning();
    if (cpuSkinning) {
        // One spare element: the vector kernel writes four values at a time.
        skinnedVertices = countedZeroed<GLfixed>(size_t(nbVertices) * 3 + 1);
        skinnedNormals = countedZeroed<GLfixed>(size_t(nbVertices) * 3 + 1);
    }
    bonesPerVertex = static_cast<uint16_t>(perVertex);
    if (boneIndex && boneWeight && boneIndexFloat && (!cpuSkinning || (skinnedVertices && skinnedNormals)))
        return true;
    releaseSkin();
    return false;
}

bool PVMESH::allocateBones(unsigned int boneCount)
{
    releaseCounted(bones);
    bones = countedZeroed<PVBONE>(boneCount + 1);
    for (unsigned int b = 0; bones && b <= boneCount; b++)
        new (&bones[b]) PVBONE();
    nbBones = bones ? static_cast<uint16_t>(boneCount) : 0;
    return bones != nullptr;
}

void PVMESH::releaseSkin()
{
    releaseCounted(boneIndex);
    releaseCounted(boneWeight);
    releaseCounted(boneIndexFloat);
    releaseCounted(bones);
    releaseCounted(skinnedVertices);
    releaseCounted(skinnedNormals);
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

// Switches the client arrays this mesh uses on, the others off, and points
// them at its data (the skinned copies when it is skinned).
void PVMESH::bindArrays(bool textured)
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
}

void PVMESH::drawFaces() const
{
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
    }
    bindArrays(textured);
    if (transparent) {
        drawFaces();
        glCullFace(GL_BACK);
    }
    drawFaces();
    if (culled)
        PVOPENGL::cullingOn();
    else
        PVOPENGL::cullingOff();
    if (bonesPerVertex)
        PVSHADER::unbindBones();
    return true;
}
