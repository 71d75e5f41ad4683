#include "pvewriter.h"

#include <cstring>

#include "support/scratch.h"

namespace pvtest {

PveWriter::PveWriter() { text("PVE file v1.6a"); }

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
    const size_t vertexCount = m.vertices.size() / 3;
    const size_t faceCount = m.faces.size() / 3;
    const size_t uvCount = m.uvs.size() / 2;
    u8(2).u32(0).text(m.name).vec(m.position).vec(m.rotation).vec(m.origin).text(m.material);
    f32(m.radius).vec(m.minimum).vec(m.maximum).u8(m.hidden ? 1 : 0);
    u16(uint16_t(vertexCount)).u16(uint16_t(uvCount)).u16(uint16_t(faceCount)).u16(m.children);
    u16(0);  // no bones
    floats(m.vertices).floats(m.normals).floats(m.uvs);
    for (uint16_t index : m.faces)
        u16(index);
    return floats(m.faceNormals);
}

std::string PveWriter::save(const std::string& path) const
{
    writeFile(path, bytes_);
    return path;
}

}  // namespace pvtest
