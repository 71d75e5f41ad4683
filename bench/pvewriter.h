// Writes scene files in a few lines per benchmark: the header, a materials
// table and node records in file order (a node's children follow it).
#ifndef PEVRANO_BENCH_PVEWRITER_H
#define PEVRANO_BENCH_PVEWRITER_H

#include <cstdint>
#include <string>
#include <vector>

namespace pvtest {

struct PveColour {
    float r, g, b, a;
};

struct PveMaterial {
    std::string name;
    std::string texture = "[none]";
    std::string shader = "[none]";
    PveColour ambient {0.2f, 0.2f, 0.2f, 1.0f};
    PveColour diffuse {0.8f, 0.8f, 0.8f, 1.0f};
    PveColour specular {0.0f, 0.0f, 0.0f, 1.0f};
    PveColour emission {0.0f, 0.0f, 0.0f, 1.0f};
    float transparency = 1.0f;
    float shininess = 0.0f;
};

struct PveVec {
    float x, y, z;
};

struct PveMesh {
    std::string name = "mesh";
    PveVec position {0, 0, 0}, rotation {0, 0, 0}, origin {0, 0, 0};
    std::string material = "[none]";
    float radius = 1.0f;
    PveVec minimum {0, 0, 0}, maximum {0, 0, 0};
    bool hidden = false;
    uint16_t children = 0;
    std::vector<float> vertices;  // 3 per vertex
    std::vector<float> normals;  // 3 per vertex
    std::vector<float> uvs;  // 2 per coordinate
    std::vector<uint16_t> faces;  // 3 per face
    std::vector<float> faceNormals;
};

class PveWriter {
public:
    PveWriter();

    PveWriter& materials(const std::vector<PveMaterial>& table);
    PveWriter& node(const std::string& name, PveVec position, uint16_t children = 0, uint32_t auxId = 0,
                    PveVec origin = {0, 0, 0});
    PveWriter& light(const std::string& name, uint8_t lightType, PveVec position, PveVec direction,
                     float cutOff, PveVec colour, uint16_t children = 0);
    PveWriter& mesh(const PveMesh& record);

    const std::string& bytes() const { return bytes_; }
    // Writes the file and returns its path.
    std::string save(const std::string& path) const;

private:
    PveWriter& u8(uint8_t v);
    PveWriter& u16(uint16_t v);
    PveWriter& u32(uint32_t v);
    PveWriter& f32(float v);
    PveWriter& text(const std::string& s);
    PveWriter& vec(PveVec v);
    PveWriter& floats(const std::vector<float>& values);
    PveWriter& colour(const PveColour& c);

    std::string bytes_;
};

}  // namespace pvtest

#endif
