#include "pvewriter.h"

#include <cstring>

#include "support/scratch.h"

namespace pvtest {

PveWriter::PveWriter(bool obsolete) : obsolete_(obsolete)
{
    text(obsolete ? "PVE file v1.5a" : "PVE file v1.6a");
}

PveWriter PveWriter::withHeader(const std::string& header)
{
    PveWriter writer;
    writer.bytes_.clear();
    writer.text(header);
    writer.obsolete_ = header == "PVE file v1.5a";
    return writer;
}

PveWriter& PveWriter::u8(uint8_t v)
{
    bytes_.push_back(char(v));
    return *this;
}

PveWriter& PveWriter::u16(uint16_t v) { return u8(uint8_t(v)).u8(uint8_t(v >> 8)); }

PveWriter& PveWriter::u32(uint32_t v) { return u16(uint16_t(v)).u16(uint16_t(v >> 16)); }

PveWriter& PveWriter::f32(float v)
{
    uint32_t bits;
    std::memcpy(&bits, &v, 4);
    return u32(bits);
}

PveWriter& PveWriter::text(const std::string& s)
{
    bytes_.append(s);
    return u8(0);
}

PveWriter& PveWriter::vec(PveVec v) { return f32(v.x).f32(v.y).f32(v.z); }

PveWriter& PveWriter::floats(const std::vector<float>& values)
{
    for (float v : values)
        f32(v);
    return *this;
}

PveWriter& PveWriter::colour(const PveColour& c) { return f32(c.r).f32(c.g).f32(c.b).f32(c.a); }

PveWriter& PveWriter::zeros(size_t count)
{
    bytes_.append(count, '\0');
    return *this;
}

PveWriter& PveWriter::materials(const std::vector<PveMaterial>& table)
{
    u16(uint16_t(table.size()));
    for (const PveMaterial& m : table) {
        text(m.name).text(m.texture).text(m.shader);
        colour(m.ambient).colour(m.diffuse).colour(m.specular).colour(m.emission);
        f32(m.transparency).f32(m.shininess);
    }
    return *this;
}

PveWriter& PveWriter::node(const std::string& name, PveVec position, uint16_t children, uint32_t auxId,
                           PveVec origin)
{
    return u8(0).u32(auxId).text(name).vec(position).vec(origin).u16(children);
}

PveWriter& PveWriter::light(const std::string& name, uint8_t lightType, PveVec position, PveVec direction,
                            float cutOff, PveVec colour, uint16_t children)
{
    return u8(1).u8(lightType).text(name).vec(position).vec(direction).f32(cutOff).vec(colour).u16(children);
}

PveWriter& PveWriter::mesh(const PveMesh& m)
{
    const size_t vertexCount = m.vertexCount >= 0 ? size_t(m.vertexCount) : m.vertices.size() / 3;
    const size_t faceCount = m.faceCount >= 0 ? size_t(m.faceCount) : m.faces.size() / 3;
    const size_t uvCount = m.uvCount >= 0 ? size_t(m.uvCount) : m.uvs.size() / 2;
    u8(2).u32(0).text(m.name).vec(m.position).vec(m.rotation).vec(m.origin).text(m.material);
    f32(m.radius).vec(m.minimum).vec(m.maximum).u8(m.hidden ? 1 : 0);
    u16(uint16_t(vertexCount)).u16(uint16_t(uvCount)).u16(uint16_t(faceCount)).u16(m.children);
    u16(m.bonesPerVertex);
    floats(m.vertices).floats(m.normals);
    if (obsolete_)
        zeros(vertexCount * 12);
    floats(m.uvs);
    for (uint16_t index : m.faces)
        u16(index);
    floats(m.faceNormals);
    if (obsolete_)
        zeros(faceCount * 16);
    if (m.bonesPerVertex) {
        for (uint8_t index : m.boneIndices)
            u8(index);
        floats(m.boneWeights);
        u16(uint16_t(m.boneCount >= 0 ? size_t(m.boneCount) : m.boneNames.size()));
        for (const std::string& name : m.boneNames)
            text(name);
    }
    return *this;
}

std::string PveWriter::save(const std::string& path) const
{
    writeFile(path, bytes_);
    return path;
}

PveMesh pveQuad(const std::string& name, float half, const std::string& material)
{
    PveMesh quad;
    quad.name = name;
    quad.material = material;
    quad.radius = half * 1.5f;
    quad.minimum = {-half, -half, 0};
    quad.maximum = {half, half, 0};
    quad.vertices = {-half, -half, 0, half, -half, 0, half, half, 0, -half, half, 0};
    quad.normals = {0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1};
    quad.uvs = {0, 0, 1, 0, 1, 1, 0, 1};
    quad.faces = {0, 1, 2, 0, 2, 3};
    quad.faceNormals = {0, 0, 1, 0, 0, 1};
    return quad;
}

}  // namespace pvtest
