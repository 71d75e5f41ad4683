// Shared by the scene tests: an engine started in a small window, and one 3D
// frame drawn into it.
#ifndef PEVRANO_TESTS_SCENE_SCENEFIXTURE_H
#define PEVRANO_TESTS_SCENE_SCENEFIXTURE_H

#include <gtest/gtest.h>

#include <GLES/gl.h>

#include <cmath>
#include <string>

#include <pevrano.h>

#include "support/glfixture.h"
#include "support/pixels.h"
#include "support/viewmath.h"

namespace pvtest {

// The window of the pixel tests.
const int windowWidth = 160;
const int windowHeight = 120;
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

// Screen pixel of the world point (x, y, z) seen by the default camera (at
// the origin, looking down -z).
inline Rgb pixelOfPoint(double x, double y, double z)
{
    const double f = 1.0 / std::tan(PVOPENGL::getAngleOfView() * M_PI / 360.0);
    const double aspect = double(windowWidth) / windowHeight;
    const double sx = (f / aspect * x / -z + 1) * windowWidth / 2;
    const double sy = (f * y / -z + 1) * windowHeight / 2;
    return pixelAt(int(sx), int(sy));
}

}  // namespace pvtest

#endif
