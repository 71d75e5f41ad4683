// Shared by the scene tests: the log read a piece at a time, engine matrices
// compared with the textbook transforms, and an engine started in a small
// window whose pixels are compared with colours worked out by hand.
#ifndef PEVRANO_TESTS_SCENEFIXTURE_H
#define PEVRANO_TESTS_SCENEFIXTURE_H

#include <gtest/gtest.h>

#include <GLES/gl.h>

#include <algorithm>
#include <string>

#include <pevrano.h>

#include "support/glfixture.h"
#include "support/viewmath.h"

namespace pvtest {

// What the log gained since the previous call.
class NewLogLines {
public:
    explicit NewLogLines(const LogCapture& log) : log_(log) {}
    std::string operator()()
    {
        const std::string all = log_.text();
        std::string fresh = all.substr(seen_);
        seen_ = all.size();
        return fresh;
    }

private:
    const LogCapture& log_;
    size_t seen_ = 0;
};

inline K3MMATRIX engineMatrix(const Mat4& m)
{
    K3MMATRIX result;
    for (int i = 0; i < 16; i++)
        result.m[i] = float(m.gl(i));
    return result;
}

inline void expectMatrixNear(const Mat4& expected, const K3MMATRIX& actual, const std::string& what,
                             double tolerance = 1e-4)
{
    for (int i = 0; i < 16; i++)
        EXPECT_NEAR(expected.gl(i), actual.m[i], tolerance) << what << ", element " << i;
}

// The window of the pixel tests.
const int windowWidth = 160;
const int windowHeight = 120;
// One level of a 5-bit channel is about 8 of 255; lighting adds rounding.
const int colourTolerance = 9;

struct Rgb {
    double r, g, b;  // 0 to 1
};

inline bool startEngineInWindow()
{
    PVSETTINGS settings;
    settings.setWindowX(windowWidth);
    settings.setWindowY(windowHeight);
    settings.setFullScreen(false);
    return PEVRANO::init(&settings);
}

// One 3D frame of everything under root, left in the colour buffer.
inline void drawFrame(PVNODE* root, PVCAMERA* camera)
{
    PEVRANO::clear(true, true, false);
    PEVRANO::begin3D(camera);
    root->pass(false);
    PEVRANO::end3D(false);
}

// The colour buffer at (x, y), y from the bottom as GL reads it.
inline Rgb pixelAt(int x, int y)
{
    GLubyte rgba[4] = {0, 0, 0, 0};
    glReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, rgba);
    return {rgba[0] / 255.0, rgba[1] / 255.0, rgba[2] / 255.0};
}

inline void expectColour(Rgb expected, Rgb got, const std::string& what)
{
    EXPECT_NEAR(expected.r * 255.0, got.r * 255.0, colourTolerance) << what << ", red";
    EXPECT_NEAR(expected.g * 255.0, got.g * 255.0, colourTolerance) << what << ", green";
    EXPECT_NEAR(expected.b * 255.0, got.b * 255.0, colourTolerance) << what << ", blue";
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
    return {channel(global.r, lamp.ambient.r, lamp.diffuse.r), channel(global.g, lamp.ambient.g, lamp.diffuse.g),
            channel(global.b, lamp.ambient.b, lamp.diffuse.b)};
}

}  // namespace pvtest

#endif
