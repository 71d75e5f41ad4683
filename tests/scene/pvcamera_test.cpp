// Camera: the view matrix of each aiming mode, checked against textbook
// transforms, the published statics and moveDoom.
#include <gtest/gtest.h>

#include <string>

#include "scene/scenefixture.h"

using pvtest::Mat4;
using pvtest::Vec3;

namespace {

// Renders the camera and checks that every published copy of the view matrix
// (the static, the camera's own, the wrapper's current matrix) is expected;
// view matrices are compared more tightly than the default.
void expectView(PVCAMERA& camera, const Mat4& expected, const std::string& what)
{
    EXPECT_TRUE(camera.render(nullptr));
    K3MMATRIX current;
    PV_glGetFloatv(PV_GL_MODELVIEW_STACK, current.m);
    for (const K3MMATRIX* copy : {PVCAMERA::getCameraMatrix(), camera.getThisCameraMatrix(), &current})
        pvtest::expectMatrixNear(expected, copy->m, what, 2e-5);
    EXPECT_EQ(&camera, PVCAMERA::getThisPassCamera()) << what;
}

void expectVector(Vec3 expected, K3MVECTOR3D actual, const std::string& what)
{
    EXPECT_NEAR(expected.x, actual.x, 1e-5) << what;
    EXPECT_NEAR(expected.y, actual.y, 1e-5) << what;
    EXPECT_NEAR(expected.z, actual.z, 1e-5) << what;
}

using Camera = pvtest::RecordingTest;

TEST_F(Camera, FreeCameraInvertsItsTransform)
{
    PVCAMERA camera;
    // Pre-rotation first, then Z, X, Y by the negated angles, then the move.
    camera.setPosition(1, 2, 3);
    camera.setRotation(10, 20, 30);
    camera.setPreRotation(5, -15, 25);
    const Mat4 expected = Mat4::rotationX(5) * Mat4::rotationY(-15) * Mat4::rotationZ(25) *
                          Mat4::rotationZ(-30) * Mat4::rotationX(-10) * Mat4::rotationY(-20) *
                          Mat4::translation(-1, -2, -3);
    expectView(camera, expected, "rotated, pre-rotated camera");
    expectVector({1, 2, 3}, PVCAMERA::getCameraPosition(), "eye");
    EXPECT_EQ("", log.text());
}

TEST_F(Camera, MatrixPositioningUsesTheMatrixAsItStands)
{
    const Mat4 own = Mat4::translation(4, -5, 6) * Mat4::rotationY(40) * Mat4::rotationX(-25);
    K3MMATRIX matrix;
    own.toGl(matrix.m);
    PVCAMERA camera;
    camera.setPositioning(PV_POSITIONING_MATRIX);
    camera.setMatrix(matrix);
    camera.setPosition(100, 100, 100);  // ignored with a matrix
    expectView(camera, own, "matrix camera");
    expectVector({4, -5, 6}, PVCAMERA::getCameraPosition(), "eye from the matrix");

    camera.setPreRotation(0, 0, 90);
    expectView(camera, Mat4::rotationZ(90) * own, "pre-rotated matrix camera");
}

TEST_F(Camera, LookAtTargetIgnoresPreRotation)
{
    PVCAMERA camera;
    camera.setTargetNode(&camera);
    camera.setPosition(3, 4, 5);
    camera.setTarget(0, 1, -2);
    camera.setRotation(33, 44, 55);  // not used when aiming
    const Mat4 expected = Mat4::lookAt({3, 4, 5}, {0, 1, -2}, {0, 1, 0});
    expectView(camera, expected, "look-at camera");
    camera.setPreRotation(30, 60, 90);
    expectView(camera, expected, "look-at camera with a pre-rotation");
    expectVector({3, 4, 5}, PVCAMERA::getCameraPosition(), "eye");

    camera.setUpDirection(K3MVECTOR3D(1.0f, 0.0f, 0.0f));
    expectView(camera, Mat4::lookAt({3, 4, 5}, {0, 1, -2}, {1, 0, 0}), "look-at with x up");
}

TEST_F(Camera, UpAlongTheViewGivesADegenerateMatrixWithoutError)
{
    PVCAMERA camera;
    camera.setTargetNode(&camera);
    camera.setPosition(0, 10, 0);
    camera.setTarget(0, 0, 0);
    ASSERT_TRUE(camera.render(nullptr));
    // Side and up rows vanish; only the backward row (0, 1, 0) survives.
    const float expected[16] = {0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, -10, 1};
    pvtest::expectMatrixNear(Mat4::fromGl(expected), PVCAMERA::getCameraMatrix()->m, "degenerate view", 0);
    EXPECT_EQ("", log.text());
}

TEST_F(Camera, MoveDoomFollowsTheLastRenderedView)
{
    PVCAMERA camera;
    // Turned 90 degrees left about Y: forward is -x, right is -z.
    camera.setPosition(1, 2, 3);
    camera.setRotation(0, 90, 0);
    camera.render(nullptr);
    camera.moveDoom(K3MVECTOR3D(0.0f, 0.0f, -2.0f));
    expectVector({-1, 2, 3}, camera.getPosition(), "forward after the turn");
    camera.moveDoom(3, 1, 0);
    expectVector({-1, 3, 0}, camera.getPosition(), "right and up after the turn");
    expectVector({0, 1, -3}, camera.getDirection(), "last step");

    // Another camera moves along whichever view was rendered last.
    PVCAMERA other;
    other.moveDoom(0, 0, -1);
    expectVector({-1, 0, 0}, other.getPosition(), "second camera on the first one's axes");
}

}  // namespace
