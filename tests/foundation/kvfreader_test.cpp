// The bounds-checked reader: values decoded little-endian, and every read
// that does not fit refused without moving the cursor or touching the output.
#include <gtest/gtest.h>

#include "foundation/kvfreader.h"

namespace {

const unsigned char sample[] = {0x01, 0x34, 0x12, 0x78, 0x56, 0x34, 0x12,
                                0x00, 0x00, 0xC0, 0x3F, 'a',  'b',  0};

TEST(KvfReader, ReadsEachTypeLittleEndian)
{
    KVFREADER reader(sample, sizeof sample);
    uint8_t u8 = 0;
    uint16_t u16 = 0;
    uint32_t u32 = 0;
    float f = 0.0f;
    char text[8] = "";
    ASSERT_TRUE(reader.readU8(u8) && reader.readU16(u16) && reader.readU32(u32) && reader.readFloat(f) &&
                reader.readString(text, sizeof text));
    EXPECT_EQ(1u, u8);
    EXPECT_EQ(0x1234u, u16);
    EXPECT_EQ(0x12345678u, u32);
    EXPECT_EQ(1.5f, f);
    EXPECT_STREQ("ab", text);
    EXPECT_EQ(0u, reader.remaining());
    EXPECT_TRUE(reader.good());
}

// Each case starts at an offset and makes one read that must fail there.
struct Overrun {
    const char* what;
    size_t start;
    bool (*read)(KVFREADER&);
};

// True when the read succeeds or touches its output.
template <typename T, bool (KVFREADER::*read)(T&)> bool failsUntouched(KVFREADER& reader)
{
    T value = 7;
    return (reader.*read)(value) || value != 7;
}

TEST(KvfReader, RefusesReadsPastTheEnd)
{
    const Overrun cases[] = {
        {"u8 at end", sizeof sample, failsUntouched<uint8_t, &KVFREADER::readU8>},
        {"u16 one byte short", sizeof sample - 1, failsUntouched<uint16_t, &KVFREADER::readU16>},
        {"u32 three bytes short", sizeof sample - 3, failsUntouched<uint32_t, &KVFREADER::readU32>},
        {"floats past end", 7,
         [](KVFREADER& r) {
             float v[2] = {7, 7};
             return r.readFloats(v, 2) || v[0] != 7;
         }},
        {"huge float count", 0,
         [](KVFREADER& r) {
             float v = 7;
             return r.readFloats(&v, size_t(1) << 62) || v != 7;
         }},
        {"bytes past end", 10, [](KVFREADER& r) { return r.readBytes(nullptr, 5); }},
        {"string without NUL", 11,
         [](KVFREADER& r) {
             char s[2] = "x";
             return r.readString(s, 0) || s[0] != 'x';
         }},
        {"string too long", 11,
         [](KVFREADER& r) {
             char s[2] = "x";
             return r.readString(s, 2) || s[0] != 'x';
         }},
        {"start past end", sizeof sample + 1, failsUntouched<uint8_t, &KVFREADER::readU8>},
    };
    for (const Overrun& c : cases) {
        // The string case without a NUL reads a buffer that ends before it.
        const size_t size = std::string(c.what) == "string without NUL" ? sizeof sample - 1 : sizeof sample;
        KVFREADER reader(sample, size, c.start);
        const size_t before = reader.position();
        EXPECT_FALSE(c.read(reader)) << c.what;
        EXPECT_FALSE(reader.good()) << c.what;
        EXPECT_EQ(before, reader.position()) << c.what;
        uint8_t after = 0;
        EXPECT_FALSE(reader.readU8(after)) << c.what << ": a failed reader stays failed";
    }
}

}  // namespace
