/// \file
/// Mesh: a node that carries triangle geometry in 16.16 fixed point (vertices,
/// vertex normals, texture coordinates, faces) plus face normals in floats, an
/// optional skin (bone influences per vertex and a bone table), and the
/// class-wide skeleton cache the render list fills with bone matrices each
/// frame. Skinned meshes are deformed on the CPU in 16.16 before drawing.
#ifndef PEVRANO_ASSETS_PVMESH_H
#define PEVRANO_ASSETS_PVMESH_H

#include <cstdint>

#include <GLES/gl.h>

#include "math/k3mmatrix.h"
#include "math/k3mvector3d.h"
#include "scene/pvnode.h"

class PVMATERIAL;
class KVFREADER;

/// Skeletons the cache holds per frame; a render-list slot of this value
/// means the cache was full.
#define PV_MESH_SKELETONS 16
/// Bone matrices per skeleton, and so the largest bone count of a mesh.
#define PV_MESH_BONES 100
/// The node a skinned mesh's world matrix is taken relative to.
#define PV_MESH_SKELETON_ROOT "HumanoidRoot"

/// One triangle: three vertex indices.
struct PVFACE {
    /// Indices into the mesh's vertices.
    uint16_t index[3];
};

/// One bone of a skinned mesh.
struct PVBONE {
    /// The name of the node that poses it, that node once bound (not owned),
    /// and the inverse of its bind-pose matrix.
    ///@{
    char name[PV_NODE_NAME_SIZE];
    PVNODE* node;
    K3MMATRIX inverseBind;
    ///@}
};

/// A triangle mesh node: geometry in 16.16 fixed point, an optional skin
/// deformed on the CPU, and a material (one reference held). Nodes belong to
/// the engine: PEVRANO::free deletes those left.
class PVMESH : public PVNODE {
public:
    /// An empty mesh without material.
    PVMESH();
    /// Copies share nothing with the original: geometry, skin and bones are
    /// duplicated and the material gains a reference.
    ///@{
    PVMESH(const PVMESH& other);
    PVMESH& operator=(const PVMESH& other);
    ///@}
    /// Frees the geometry, skin and bones and gives the material back.
    ~PVMESH() override;

    /// Draws the mesh for one render-list record.
    bool render(void* element) override;
    /// Deforms the vertices and normals with the bone matrices of skeleton
    /// cache slot `slot`, in 16.16; false with "Animation not computed (cache
    /// full)" when the slot is the full-cache value.
    bool animate(unsigned int slot);
    /// Binds every bone record to the node of its name under root; false with
    /// "Invalid params" for a null root.
    bool resetBones(PVNODE* root);

    /// Class-wide skeleton cache, for the engine: allocated by init, released
    /// by free; always true.
    ///@{
    static bool init();
    static bool free();
    ///@}
    /// Starts a frame: no skeleton used, client arrays off.
    static void reset();
    /// Skeletons claimed this frame.
    static unsigned int getNumberOfSkeletons() { return numberOfSkeletons; }
    /// Bone matrices of the slot the next skinned mesh will take; null when
    /// the cache is full or missing.
    static K3MMATRIX* nextSkeleton();
    /// Gives the next slot to owner and returns its number.
    static unsigned int claimSkeleton(PVMESH* owner);
    /// Bone matrices and owner of a cache slot; null outside the cache.
    ///@{
    static K3MMATRIX* getSkeleton(unsigned int slot);
    static PVMESH* getSkeletonOwner(unsigned int slot);
    ///@}
    /// Draws the vertex normals of every mesh, or stops.
    ///@{
    static void showNormals() { normalsShown = true; }
    static void hideNormals() { normalsShown = false; }
    ///@}

    /// Reads a mesh body from a scene file at the reader's position; null,
    /// with the mesh deleted again, when the body is cut short or
    /// inconsistent (the caller logs the corruption).
    /// The body's children count is stored in children.
    static PVNODE* load(KVFREADER& reader, bool obsolete, uint16_t& children);

    /// The geometry arrays, owned by the mesh: positions, vertex normals (16.16),
    /// face normals, texture coordinates, faces, the deformed positions and
    /// normals of a skinned mesh, its bone indices and weights per vertex, and
    /// bone i (null outside the bones).
    ///@{
    GLfixed* getVertexPtr() { return vertices; }
    GLfixed* getVertexNormalPtr() { return normals; }
    float* getFaceNormalPtr() { return faceNormals; }
    GLfixed* getUVPtr() { return uvs; }
    PVFACE* getFacePtr() { return faces; }
    GLfixed* getSkinnedVertexPtr() { return skinnedVertices; }
    GLfixed* getSkinnedNormalPtr() { return skinnedNormals; }
    uint8_t* getBoneIndexPtr() { return boneIndex; }
    float* getBoneWeightPtr() { return boneWeight; }
    PVBONE* getBone(unsigned int i) { return i < nbBones ? &bones[i] : nullptr; }
    ///@}
    /// Counts of vertices, texture coordinates, faces, bones, and bone
    /// influences per vertex (0 for a mesh without skin).
    ///@{
    unsigned int getNumberOfVertices() const { return nbVertices; }
    unsigned int getNumberOfUVs() const { return nbUVs; }
    unsigned int getNumberOfFaces() const { return nbFaces; }
    unsigned int getNumberOfBones() const { return nbBones; }
    unsigned int getBonesPerVertex() const { return bonesPerVertex; }
    ///@}
    /// Bounding box corners and the bounding radius used for clipping and
    /// sorting.
    ///@{
    K3MVECTOR3D getMinimum() const { return minimum; }
    K3MVECTOR3D getMaximum() const { return maximum; }
    float getRadius() const { return radius; }
    void setRadius(float value) { radius = value; }
    ///@}
    /// The material drawn with; setMaterial gives the old one back and takes a
    /// reference on the new one (null for none).
    ///@{
    PVMATERIAL* getMaterial() const { return material; }
    void setMaterial(PVMATERIAL* newMaterial);
    ///@}

    /// Whether the mesh is drawn.
    ///@{
    void setDisplayStatus(bool shown) { hidden = !shown; }
    bool isHidden() const { return hidden; }
    ///@}
    /// Whether the surface is closed (the made boxes and spheres).
    bool isClosed() const { return closed; }
    /// Whether the mesh has a skin.
    bool isSkinned() const { return bonesPerVertex != 0; }
    /// Whether the mesh casts shadows; stored for the shadow renderer only.
    ///@{
    void setShadowCaster(bool caster) { shadowCaster = caster; }
    bool getShadowCaster() const { return shadowCaster; }
    ///@}

    /// Geometry given by the application (positions, normals, UVs and faces
    /// in 16.16, as a scene file would give them once converted); uvs and
    /// normals may be null. False when a face index is out of range.
    bool setGeometry(unsigned int vertexCount, const GLfixed* newVertices, const GLfixed* newNormals,
                     const GLfixed* newUVs, unsigned int faceCount, const PVFACE* newFaces);
    /// A skin of `perVertex` influences per vertex over `boneCount` bones
    /// named `names`; false when a count or a bone index is out of range.
    bool setSkin(unsigned int perVertex, const uint8_t* indices, const float* weights, unsigned int boneCount,
                 const char* const* names);

    /// Meshes centred on their node's origin, with normals, texture
    /// coordinates (0 to 1 on each face of a box, over a plane, wrapped once
    /// around a sphere), bounds and a default material of their own. A box is
    /// 24 vertices and 12 triangles; a plane lies in XZ facing +Y; a sphere
    /// has slices around Y and stacks from pole to pole. Null, with a log
    /// line, for a size that is not a positive number, fewer than 3 slices or
    /// 2 stacks, or a sphere beyond 65535 vertices or triangles.
    ///@{
    static PVMESH* createBox(float sizeX, float sizeY, float sizeZ);
    static PVMESH* createPlane(float sizeX, float sizeZ);
    static PVMESH* createSphere(float radius, unsigned int slices, unsigned int stacks);
    ///@}

    /// Radius of any node the render list clips or sorts: a mesh's or a
    /// helper's own, 0 for other types.
    static float radiusOf(PVNODE* node);

private:
    bool readBody(KVFREADER& reader, bool obsolete, uint16_t& children);
    bool readMaterial(KVFREADER& reader);
    bool readGeometry(KVFREADER& reader, bool obsolete, uint16_t& children);
    bool readSkin(KVFREADER& reader, unsigned int perVertex);
    void finishSkin();
    bool allocateGeometry(unsigned int vertexCount, unsigned int uvCount, unsigned int faceCount);
    bool allocateInfluences(unsigned int perVertex);
    bool allocateBones(unsigned int boneCount);
    bool facesInRange() const;
    bool boneIndicesInRange() const;
    void convertToFixed(const float* positions, const float* vertexNormals, const float* coordinates);
    void releaseGeometry();
    struct PRIMITIVE;
    static PVMESH* fromPrimitive(const PRIMITIVE& shape, const char* operation);
    void releaseSkin();
    void copyArraysFrom(const PVMESH& other);
    void bindArrays(bool textured);
    void drawFaces() const;
    void setSelectionColour(const void* element);
    void computeBoneMatrices(unsigned int slot, GLfixed (*fixed)[16]);

    float radius;
    K3MVECTOR3D minimum;
    K3MVECTOR3D maximum;
    PVMATERIAL* material;
    bool shadowCaster;
    bool closed;
    bool hidden;
    uint16_t nbVertices;
    uint16_t nbUVs;
    uint16_t nbFaces;
    uint16_t bonesPerVertex;
    uint16_t nbBones;
    void* geometry;
    GLfixed* vertices;
    GLfixed* normals;
    float* faceNormals;
    GLfixed* uvs;
    PVFACE* faces;
    uint8_t* boneIndex;
    float* boneWeight;
    float* boneIndexFloat;
    PVBONE* bones;
    GLfixed* skinnedVertices;
    GLfixed* skinnedNormals;

    struct SKELETON {
        K3MMATRIX bone[PV_MESH_BONES];
        PVMESH* owner;
    };
    static SKELETON* skeletons;
    static unsigned int numberOfSkeletons;
    static bool normalsShown;
    /// Skinning four lanes at a time, where the processor can.
    static bool vectorSkinning;
    friend struct PVTESTACCESS;
};

#endif
