// Little-endian byte buffer for scene files: integers, floats, vectors and
// NUL-terminated strings appended in order, written out in one piece.
#ifndef PEVRANO_TOOLS_CONVERT_PVEFILE_H
#define PEVRANO_TOOLS_CONVERT_PVEFILE_H

#include <assimp/vector3.h>

#include <cstdint>
#include <string>

class PveFile {
public:
    void u8(unsigned int value);
    void u16(unsigned int value);
    void u32(uint32_t value);
    void f32(float value);
    void vec3(const aiVector3D& value);
    void text(const std::string& value);
    const std::string& bytes() const { return data; }
    // False when the file cannot be written whole.
    bool save(const std::string& path) const;

private:
    std::string data;
};

#endif
