// Mesh: reading a mesh body of a scene file and binding its bones to the
// loaded tree.
#include "assets/pvmesh.h"

#include <cstring>
#include <new>

#include "assets/pvmaterial.h"
#include "core/pvgl.h"
#include "foundation/kvflog.h"
#include "foundation/kvfreader.h"

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
