#include "pvefile.h"

#include <cstdio>
#include <cstring>

void PveFile::u8(unsigned int value) { data += char(value & 0xFF); }

void PveFile::u16(unsigned int value)
{
    u8(value);
    u8(value >> 8);
}

void PveFile::u32(uint32_t value)
{
    u16(value & 0xFFFF);
    u16(value >> 16);
}

void PveFile::f32(float value)
{
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof(bits));
    u32(bits);
}

void PveFile::vec3(const aiVector3D& value)
{
    f32(value.x);
    f32(value.y);
    f32(value.z);
}

void PveFile::text(const std::string& value) { data.append(value.c_str(), value.size() + 1); }

bool PveFile::save(const std::string& path) const
{
    FILE* file = std::fopen(path.c_str(), "wb");
    if (!file)
        return false;
    const bool written = std::fwrite(data.data(), 1, data.size(), file) == data.size();
    return std::fclose(file) == 0 && written;
}
