// The bounds-checked reader: values decoded little-endian, and every read
// that does not fit refused without moving the cursor or touching the output.
#include <gtest/gtest.h>

#include <cstring>

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

// Where a read puts its value; a read that fails leaves it untouched.
union Output {
    uint8_t u8;
    uint16_t u16;
    uint32_t u32;
    float floats[2];
    char text[2];
};

TEST(KvfReader, RefusesReadsPastTheEnd)
{
    const size_t n = sizeof sample;
    // Each case reads the first size bytes of the sample from an offset and must fail there.
    const struct {
        const char* what;
        size_t size, start;
        bool (*read)(KVFREADER&, Output&);
    } cases[] = {
        {"u8 at end", n, n, [](KVFREADER& r, Output& o) { return r.readU8(o.u8); }},
        {"u16 one byte short", n, n - 1, [](KVFREADER& r, Output& o) { return r.readU16(o.u16); }},
        {"u32 three bytes short", n, n - 3, [](KVFREADER& r, Output& o) { return r.readU32(o.u32); }},
        {"floats past end", n, 7, [](KVFREADER& r, Output& o) { return r.readFloats(o.floats, 2); }},
        {"huge float count", n, 0,
         [](KVFREADER& r, Output& o) { return r.readFloats(o.floats, size_t(1) << 62); }},
        {"bytes past end", n, 10, [](KVFREADER& r, Output&) { return r.readBytes(nullptr, 5); }},
        {"string without NUL", n - 1, 11, [](KVFREADER& r, Output& o) { return r.readString(o.text, 0); }},
        {"string too long", n, 11, [](KVFREADER& r, Output& o) { return r.readString(o.text, 2); }},
        {"start past end", n, n + 1, [](KVFREADER& r, Output& o) { return r.readU8(o.u8); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        KVFREADER reader(sample, c.size, c.start);
        const size_t start = reader.position();
        Output out;
        memset(&out, 7, sizeof out);
        const Output untouched = out;
        EXPECT_FALSE(c.read(reader, out));
        EXPECT_EQ(memcmp(&out, &untouched, sizeof out), 0);
        EXPECT_FALSE(reader.good());
        EXPECT_EQ(start, reader.position());
        EXPECT_FALSE(reader.readU8(out.u8)) << "a failed reader stays failed";
    }
}

}  // namespace
