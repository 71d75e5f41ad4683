#include "foundation/kvfreader.h"

#include <cstring>

KVFREADER::KVFREADER(const void* data, size_t length, size_t start) :
    bytes(static_cast<const uint8_t*>(data)),
    size(data ? length : 0),
    cursor(start),
    failed(false)
{
    if (cursor > size) {
        cursor = size;
        failed = true;
    }
}

// Checks that count bytes remain; marks the reader failed when they do not.
bool KVFREADER::take(size_t count)
{
    if (failed || count > size - cursor)
        return fail();
    return true;
}

bool KVFREADER::fail()
{
    failed = true;
    return false;
}

bool KVFREADER::readBytes(void* out, size_t count)
{
    if (!take(count))
        return false;
    if (out && count)
        std::memcpy(out, bytes + cursor, count);
    cursor += count;
    return true;
}

bool KVFREADER::readU8(uint8_t& value) { return readBytes(&value, 1); }

bool KVFREADER::readU16(uint16_t& value)
{
    uint8_t b[2];
    if (!readBytes(b, 2))
        return false;
    value = static_cast<uint16_t>(b[0] | (b[1] << 8));
    return true;
}

bool KVFREADER::readU32(uint32_t& value)
{
    uint8_t b[4];
    if (!readBytes(b, 4))
        return false;
    value = uint32_t(b[0]) | (uint32_t(b[1]) << 8) | (uint32_t(b[2]) << 16) | (uint32_t(b[3]) << 24);
    return true;
}

bool KVFREADER::readFloat(float& value)
{
    uint32_t bits;
    if (!readU32(bits))
        return false;
    std::memcpy(&value, &bits, sizeof value);
    return true;
}

bool KVFREADER::readFloats(float* out, size_t count)
{
    if (count > remaining() / 4)
        return fail();
    for (size_t i = 0; i < count; i++)
        readFloat(out[i]);
    return true;
}

bool KVFREADER::readString(char* out, size_t capacity)
{
    if (failed)
        return false;
    const void* end = std::memchr(bytes + cursor, 0, size - cursor);
    if (!end)
        return fail();
    const size_t length = static_cast<const uint8_t*>(end) - (bytes + cursor) + 1;
    if (length > capacity)
        return fail();
    return readBytes(out, length);
}
