// Shared by the scene tests: an engine started in a small window, and one 3D
// frame drawn into it.
#ifndef PEVRANO_TESTS_SCENE_SCENEFIXTURE_H
#define PEVRANO_TESTS_SCENE_SCENEFIXTURE_H

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

// Where a world point lands in the window (x, y from the bottom as GL reads
// them): the projection resize set up (vertical angle, window aspect, near
// and far planes) after the view, then the viewport.
inline Vec3 windowPoint(const Mat4& view, Vec3 world)
{
    const Mat4 projection = Mat4::perspective(PVOPENGL::getAngleOfView(), double(windowWidth) / windowHeight,
                                              PVOPENGL::getNearPlane(), PVOPENGL::getFarPlane());
    double clip[4];
    (projection * view).apply(world, 1.0, clip);
    return {(clip[0] / clip[3] + 1.0) * 0.5 * windowWidth, (clip[1] / clip[3] + 1.0) * 0.5 * windowHeight, 0};
}

// Screen pixel of the world point (x, y, z) seen by the default camera (at
// the origin, looking down -z).
inline Rgb pixelOfPoint(double x, double y, double z)
{
    const Vec3 at = windowPoint(Mat4::identity(), {x, y, z});
    return pixelAt(int(at.x), int(at.y));
}

// A directional light under parent: ambient and diffuse colours as (r, g, b),
// opaque, no specular.
inline PVLIGHT* directionalLight(PVNODE* parent, Vec3 direction, Vec3 ambient, Vec3 diffuse)
{
    PVLIGHT* light = new PVLIGHT();
    light->setLightType(PV_LIGHT_DIRECTIONAL);
    light->setDirection(float(direction.x), float(direction.y), float(direction.z));
    light->setAmbient(float(ambient.x), float(ambient.y), float(ambient.z), 1.0f);
    light->setDiffuse(float(diffuse.x), float(diffuse.y), float(diffuse.z), 1.0f);
    light->setSpecular(0.0f, 0.0f, 0.0f, 1.0f);
    light->link(parent);
    return light;
}

}  // namespace pvtest

#endif
