// Pixels read back from the current GL colour buffer and compared with
// colours worked out by hand (never stored images). Off-screen surfaces are
// 5-6-5, so a channel keeps 5 or 6 bits: comparisons allow a few levels.
// litWhite is the fixed-function lighting of a white material, the reference
// of every lit-pixel test.
#ifndef PEVRANO_TESTS_SUPPORT_PIXELS_H
#define PEVRANO_TESTS_SUPPORT_PIXELS_H

#include <gtest/gtest.h>

#include <GLES/gl.h>

#include <algorithm>
#include <string>

namespace pvtest {

struct Rgb {
    double r, g, b;  // 0 to 1
};

// One level of a 5-bit channel is about 8 of 255; lighting adds rounding.
const int colourTolerance = 9;

// The colour buffer at (x, y), y from the bottom as GL reads it.
inline Rgb pixelAt(int x, int y)
{
    GLubyte rgba[4] = {0, 0, 0, 0};
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
    return {rgba[0] / 255.0, rgba[1] / 255.0, rgba[2] / 255.0};
}

inline bool colourNear(Rgb expected, Rgb got)
{
    auto near = [](double e, double g) { return std::abs(e * 255.0 - g * 255.0) <= colourTolerance; };
    return near(expected.r, got.r) && near(expected.g, got.g) && near(expected.b, got.b);
}

inline void expectColour(Rgb expected, Rgb got, const std::string& what)
{
    EXPECT_TRUE(colourNear(expected, got))
        << what << ": got " << got.r * 255 << ", " << got.g * 255 << ", " << got.b * 255 << " instead of "
        << expected.r * 255 << ", " << expected.g * 255 << ", " << expected.b * 255;
}

// The fixed-function lighting of one vertex of a white material with no
// specular or emission: global ambient, plus per light its attenuation and
// spot factor times (light ambient + N.L times light diffuse), clamped to 1.
struct Lamp {
    Rgb ambient, diffuse;
    double factor;  // attenuation times spot factor
    double nDotL;
};

inline Rgb litWhite(Rgb global, const Lamp& lamp)
{
    auto channel = [&](double g, double a, double d) {
        return std::min(1.0, g + lamp.factor * (a + std::max(0.0, lamp.nDotL) * d));
    };
    return {channel(global.r, lamp.ambient.r, lamp.diffuse.r),
            channel(global.g, lamp.ambient.g, lamp.diffuse.g),
            channel(global.b, lamp.ambient.b, lamp.diffuse.b)};
}

}  // namespace pvtest

#endif
