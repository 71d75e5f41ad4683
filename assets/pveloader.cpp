// Scene files: the materials table (with textures, normal maps and shaders)
// and the node tree of plain nodes, lights and meshes, read through one
// bounds-checked reader. A load that fails deletes every node it created.
#include <cstdio>
#include <cstring>
#include <string>

#include "assets/pvmaterial.h"
#include "assets/pvmesh.h"
#include "assets/pvshader.h"
#include "assets/pvtexture.h"
#include "core/pevrano.h"
#include "foundation/kvffile.h"
#include "foundation/kvflog.h"
#include "foundation/kvfmemory.h"
#include "foundation/kvfreader.h"
#include "scene/pvlight.h"
#include "scene/pvnode.h"

bool PEVRANO::obsoleteFile = false;
unsigned int PEVRANO::loadedNodes = 0;

namespace {

const char currentHeader[] = "PVE file v1.6a";
const char obsoleteHeader[] = "PVE file v1.5a";
const size_t headerSize = sizeof currentHeader;  // with its NUL
// Deeper trees than this are taken for corrupt data.
const unsigned int maximumDepth = 1024;

const char noName[] = "[none]";

// A material record's fields after its three names.
struct MATERIALCOLOURS {
    float ambient[4], diffuse[4], specular[4], emission[4];
    float transparency, shininess;
};

bool readColours(KVFREADER& reader, MATERIALCOLOURS& colours)
{
    return reader.readFloats(colours.ambient, 4) && reader.readFloats(colours.diffuse, 4) &&
           reader.readFloats(colours.specular, 4) && reader.readFloats(colours.emission, 4) &&
           reader.readFloat(colours.transparency) && reader.readFloat(colours.shininess);
}

// The texture of that file name, loaded now if no texture has it yet; one
// that fails to load is kept all the same, under its default name.
PVTEXTURE* findOrLoadTexture(const char* fileName)
{
    PVTEXTURE* texture = PVTEXTURE::findOrLoad(fileName);
    return texture ? texture : new PVTEXTURE();
}

// A texture's normal map: its name without the last 6 characters, followed
// by "_n.tga" (rock_d.tga -> rock_n.tga), when such a file exists.
PVTEXTURE* findNormalMap(const char* textureName)
{
    const size_t length = std::strlen(textureName);
    const std::string mapName = std::string(textureName, length > 6 ? length - 6 : 0) + "_n.tga";
    if (!kvfFileExists(mapName.c_str())) {
        kvfLog("   [!] normal map not found for %s\n", textureName);
        return nullptr;
    }
    kvfLog("   normal map: %s\n", mapName.c_str());
    return findOrLoadTexture(mapName.c_str());
}

PVSHADER* findOrLoadShader(const char* baseName)
{
    PVSHADER* shader = PVSHADER::findByName(baseName);
    if (shader)
        return shader;
    shader = new PVSHADER();
    std::string vertexProgram = std::string(baseName) + "VS.glsl";
    std::string fragmentProgram = std::string(baseName) + "PS.glsl";
    shader->load(&vertexProgram[0], &fragmentProgram[0], false);
    shader->setName(baseName);
    return shader;
}

// One record of the materials table. Textures and shaders are loaded even
// when a material of that name exists already, which is then left as it is.
bool readMaterial(KVFREADER& reader)
{
    char name[PV_NODE_NAME_SIZE], textureName[PV_NODE_NAME_SIZE], shaderName[PV_NODE_NAME_SIZE];
    if (!reader.readString(name, sizeof name) || !reader.readString(textureName, sizeof textureName) ||
        !reader.readString(shaderName, sizeof shaderName))
        return false;
    PVTEXTURE* texture = nullptr;
    PVTEXTURE* normalMap = nullptr;
    if (std::strcmp(textureName, noName) != 0) {
        texture = findOrLoadTexture(textureName);
        normalMap = findNormalMap(textureName);
    }
    PVSHADER* shader = std::strcmp(shaderName, noName) != 0 ? findOrLoadShader(shaderName) : nullptr;
    MATERIALCOLOURS colours;
    if (!readColours(reader, colours))
        return false;
    if (PVMATERIAL::findByName(name))
        return true;
    PVMATERIAL* material = new PVMATERIAL();
    material->setAmbient(K3MVECTOR4D(colours.ambient));
    material->setDiffuse(K3MVECTOR4D(colours.diffuse));
    material->setSpecular(K3MVECTOR4D(colours.specular));
    material->setEmission(K3MVECTOR4D(colours.emission));
    material->setName(name);
    material->setTexture(0, texture);
    material->setTexture(1, normalMap);
    material->setTransparency(colours.transparency);
    material->setShininess(colours.shininess);
    material->setShader(shader);
    return true;
}

bool readMaterials(KVFREADER& reader, const char* fileName)
{
    uint16_t count;
    if (!reader.readU16(count))
        return false;
    if (count == 0)
        kvfLog("   [!] Warning: no material found in file %s\n", fileName);
    for (unsigned int i = 0; i < count; i++)
        if (!readMaterial(reader))
            return false;
    return true;
}

// Deletes every node registered after `last` (all of them when it is null).
void deleteNodesAfter(PVNODE* last)
{
    PVNODE* node = last ? last->getNextNode() : PVNODE::getFirstNode();
    while (node) {
        PVNODE* next = node->getNextNode();
        delete node;
        node = next;
    }
}

// The whole file in one counted buffer; null (with the log line) when it
// cannot be opened, allocated or read in full.
char* readWholeFile(const char* path, const char* fileName, size_t& size)
{
    const int length = kvfFileSize(path);
    FILE* file = kvfOpenReadable(path);
    if (!file || length < 0) {
        if (file)
            std::fclose(file);
        kvfLog("   [!] Unable to open file %s @ PEVRANO::load\n", fileName);
        return nullptr;
    }
    char* buffer = static_cast<char*>(kvfMalloc(static_cast<unsigned int>(length ? length : 1)));
    if (!buffer) {
        std::fclose(file);
        kvfLog("   [!] Out of memory for file %s @ PEVRANO::load\n", fileName);
        return nullptr;
    }
    const size_t got = std::fread(buffer, 1, static_cast<size_t>(length), file);
    std::fclose(file);
    if (got != static_cast<size_t>(length)) {
        kvfLog("   [!] Corrupted file %s @ PEVRANO::load\n", fileName);
        kvfFree(buffer);
        return nullptr;
    }
    size = got;
    return buffer;
}

}  // namespace

PVNODE* PEVRANO::load(const char* fileName)
{
    std::string path = std::string(pvePath) + (fileName ? fileName : "");
    if (!fileName || !kvfFileExists(path.c_str())) {
        kvfLog("   [!] Invalid params or file not found @ PEVRANO::load\n");
        return nullptr;
    }
    // Interface descriptions go to the interface loader, with the full path.
    if (path.find(".xml") != std::string::npos || path.find(".XML") != std::string::npos)
        return loadXML(path.c_str());
    kvfLog("\n   Loading PVE file '%s'...\n", fileName);
    size_t size = 0;
    char* buffer = readWholeFile(path.c_str(), fileName, size);
    if (!buffer)
        return nullptr;
    PVNODE* root = loadBuffer(buffer, size, fileName);
    kvfFree(buffer);
    return root;
}

bool PEVRANO::readHeader(KVFREADER& reader, const char* fileName)
{
    const char* header = reinterpret_cast<const char*>(reader.current());
    const size_t compared = headerSize - 1;
    obsoleteFile = false;
    if (reader.remaining() >= compared && std::memcmp(header, obsoleteHeader, compared) == 0) {
        kvfLog("   [!] Obsolete PVE file format detected: re-export your model with 1.6a\n");
        obsoleteFile = true;
    } else if (reader.remaining() < compared || std::memcmp(header, currentHeader, compared) != 0) {
        kvfLog("   [!] Invalid header in file %s @ PEVRANO::load\n", fileName);
        return false;
    }
    kvfLog("   Header: %.14s\n", header);
    reader.skip(headerSize);
    return true;
}

PVNODE* PEVRANO::loadBuffer(const char* buffer, size_t size, const char* fileName)
{
    KVFREADER reader(buffer, size);
    if (!readHeader(reader, fileName))
        return nullptr;
    PVNODE* lastBefore = PVNODE::getLastNode();
    PVNODE* root = nullptr;
    if (readMaterials(reader, fileName)) {
        loadedNodes = 0;
        root = recursiveLoad(reader, nullptr, 0);
    }
    if (!root) {
        if (!reader.good())
            kvfLog("   [!] Corrupted file %s @ PEVRANO::load\n", fileName);
        deleteNodesAfter(lastBefore);
        return nullptr;
    }
    recursiveInitBones(root, root);
    kvfLog("   File .PVE loaded (%u nodes)\n", loadedNodes);
    PVNODE::displayTree(root);
    return root;
}

PVNODE* PEVRANO::recursiveLoad(KVFREADER& reader, PVNODE* parent, unsigned int depth)
{
    uint8_t type;
    if (depth > maximumDepth)
        reader.invalidate();
    if (!reader.readU8(type))
        return nullptr;
    uint16_t children = 0;
    PVNODE* node = nullptr;
    switch (type) {
    case 0:
        node = PVNODE::load(reader, children);
        break;
    case 1:
        node = PVLIGHT::load(reader, children);
        break;
    case 2:
        node = PVMESH::load(reader, obsoleteFile, children);
        break;
    default:
        kvfLog("   [!] Unknow type @ PEVRANO::recursiveLoad\n");
        return nullptr;
    }
    if (!node)
        return nullptr;
    if (parent)
        node->link(parent);
    for (unsigned int i = 0; i < children; i++)
        if (!recursiveLoad(reader, node, depth + 1))
            return nullptr;
    loadedNodes++;
    return node;
}

bool PEVRANO::recursiveInitBones(PVNODE* root, PVNODE* node)
{
    if (!node)
        return false;
    if (node->getType() == PV_TYPE_MESH && static_cast<PVMESH*>(node)->isSkinned())
        static_cast<PVMESH*>(node)->resetBones(root);
    for (unsigned int i = 0; i < node->getNumberOfChildren(); i++)
        recursiveInitBones(root, node->getChild(i));
    return true;
}
