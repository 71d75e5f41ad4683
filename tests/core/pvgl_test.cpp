// Float GL wrapper: fixed-point values that reach GL, shadow matrix stacks
// compared with matrices computed here and with GL's own matrices.
#include <cmath>

#include "enginefixture.h"

namespace {

using namespace pvtest;

using GlWrapper = pvtest::GlContextTest;

// Truncation toward zero: +-1.5/65536 gives +-1 (rounding would give +-2,
// flooring -2 for the negative one), +-0.00001 gives 0; 0.1 * 65536 = 6553.6,
// 0.2 -> 13107.2, 0.3 -> 19660.8, 0.4 -> 26214.4. The 16.16 range ends below
// 32768: the largest float inside it keeps its exact truncation, anything
// beyond saturates, NaN gives 0.
TEST_F(GlWrapper, EveryFloatArgumentReachesGlAsTruncatedSaturatedFixedPoint)
{
    const float inside[4] = {32767.99609375f, -32767.99609375f, -32768.0f, 0.5f};
    const float beyond[4] = {32768.0f, -32768.00390625f, 1e30f, -1e30f};
    const float special[4] = {INFINITY, -INFINITY, NAN, -NAN};
    const float ambient[4] = {0.25f, 0.5f, 0.75f, 1.0f};
    const float position[4] = {-2.0f, 0.125f, 100.0f, 0.0f};
    const float emission[4] = {0.1f, 0.2f, 0.3f, 0.4f};
    const Calls calls = record([&] {
        PV_glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
        PV_glColor4f(0.5f, -1.5f, 1.99999f, -0.5f);
        PV_glClearColor(1.5f / 65536.0f, -1.5f / 65536.0f, 0.00001f, -0.00001f);
        PV_glClearColor(0.25f, 0.75f, 0.0f, 1.0f);
        PV_glLightfv(GL_LIGHT1, GL_AMBIENT, ambient);
        PV_glLightfv(GL_LIGHT2, GL_POSITION, position);
        PV_glLightf(GL_LIGHT3, GL_SPOT_CUTOFF, 45.5f);
        PV_glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, emission);
        PV_glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, 12.0f);
        PV_glLightModelfv(GL_LIGHT_MODEL_AMBIENT, ambient);
        PV_glLightModelf(GL_LIGHT_MODEL_TWO_SIDE, 1.0f);
        PV_glClearDepthf(0.75f);
        PV_glAlphaFunc(GL_GEQUAL, 0.5f);
        PV_glLightfv(GL_LIGHT0, GL_POSITION, inside);
        PV_glLightfv(GL_LIGHT0, GL_POSITION, beyond);
        PV_glLightfv(GL_LIGHT0, GL_POSITION, special);
        PV_glClearDepthf(40000.0f);
    });
    EXPECT_EQ(calls, readCalls(PEVRANO_TEST_DATA "/expected/float-arguments.calls"));
}

TEST_F(GlWrapper, ShadowFollowsRotateTranslateAndMultiply)
{
    const Matrix m = {2.0f, 0.0f,  0.0f, 0.0f, 0.0f,   0.5f, 0.0f, 0.0f,
                      0.0f, 0.25f, 1.0f, 0.0f, -1.25f, 4.0f, 0.0f, 1.0f};
    const Calls calls = record([&m] {
        PV_glMatrixMode(GL_MODELVIEW);
        PV_glLoadIdentity();
        PV_glTranslatef(1.0f, -2.0f, 3.0f);
        PV_glRotatef(30.0f, 0.6f, 0.0f, 0.8f);
        PV_glMultMatrixf(m.data());
    });
    // 0.6 * 65536 = 39321.6, 0.8 * 65536 = 52428.8.
    EXPECT_EQ(calls,
              (Calls {"glMatrixMode(GL_MODELVIEW)", "glLoadIdentity()", "glTranslatex(65536,-131072,196608)",
                      "glRotatex(1966080,39321,0,52428)",
                      "glMultMatrixx({131072,0,0,0,0,32768,0,0,0,16384,65536,0,-81920,262144,0,65536})"}));

    // Each operation X makes the top X * top.
    const Mat4 expected =
        Mat4::translation(1, -2, 3) * Mat4::rotation(30.0, 0.6, 0.0, 0.8) * Mat4::fromGl(m.data());
    expectMatrixNear(shadowMatrix(PV_GL_MODELVIEW_STACK), expected, 1e-5f, "shadow");
    // GL, fed the same operations in fixed point, holds the same matrix.
    expectMatrixNear(glMatrix(GL_MODELVIEW_MATRIX), expected, 2e-4f, "GL model-view");
}

// The frustum's shadow deliberately differs from GL's: no factor n on the
// diagonal, off-diagonal terms in 2, 6 and 11: 2/(r-l) = 2/3, 2/(t-b) = 1,
// (r+l)/(r-l) = 1/3, (t+b)/(t-b) = 0, -(f+n)/(f-n) = -12/8,
// -2fn/(f-n) = -40/8, -1 in 14. The stacks hold 32 matrices: the 33rd push
// and the last pop only warn.
TEST_F(GlWrapper, FrustumShadowAndThirtyThreePushesReachingGlThirtyTwoTimes)
{
    PV_glMatrixMode(GL_PROJECTION);
    PV_glLoadIdentity();
    EXPECT_EQ(record([] { PV_glFrustum(-1.0f, 2.0f, -1.0f, 1.0f, 2.0f, 10.0f); }),
              Calls {"glFrustumx(-65536,131072,-65536,65536,131072,655360)"});
    const float frustum[16] = {2.0f / 3, 0, 1.0f / 3, 0, 0, 1, 0, 0, 0, 0, -1.5f, -5, 0, 0, -1, 0};
    expectMatrixNear(shadowMatrix(PV_GL_PROJECTION_STACK), Mat4::fromGl(frustum), 1e-6f, "frustum");
    PV_glMatrixMode(GL_MODELVIEW);
    PV_glLoadIdentity();

    EXPECT_EQ(record([] {
                  for (int i = 0; i < 33; i++)
                      PV_glPushMatrix();
              }),
              Calls(32, "glPushMatrix()"));
    EXPECT_EQ(log.text(), "   [!] Stack overflow in glWrapper\n");
    // The deepest push leaves the projection stack alone.
    expectMatrixNear(shadowMatrix(PV_GL_PROJECTION_STACK), Mat4::fromGl(frustum), 1e-6f, "projection");
    expectMatrixNear(shadowMatrix(PV_GL_MODELVIEW_STACK), Mat4::identity(), 0.0f, "model-view top");

    EXPECT_EQ(record([] {
                  for (int i = 0; i < 33; i++)
                      PV_glPopMatrix();
              }),
              Calls(32, "glPopMatrix()"));
    EXPECT_EQ(log.text(), "   [!] Stack overflow in glWrapper\n   [!] Stack underflow in glWrapper\n");
}

TEST_F(GlWrapper, TextureModeKeepsThePreviousShadowStack)
{
    PV_glMatrixMode(GL_MODELVIEW);
    PV_glLoadIdentity();
    PV_glMatrixMode(GL_PROJECTION);
    PV_glLoadIdentity();

    EXPECT_EQ(record([] {
                  PV_glMatrixMode(GL_TEXTURE);
                  PV_glTranslatef(5.0f, 0.0f, 0.0f);
              }),
              (Calls {"glMatrixMode(GL_TEXTURE)", "glTranslatex(327680,0,0)"}));
    expectMatrixNear(shadowMatrix(PV_GL_PROJECTION_STACK), Mat4::translation(5, 0, 0), 0.0f,
                     "projection follows");
    expectMatrixNear(shadowMatrix(PV_GL_MODELVIEW_STACK), Mat4::identity(), 0.0f, "model-view untouched");
    // GL itself moved the texture matrix, not the projection.
    expectMatrixNear(glMatrix(GL_PROJECTION_MATRIX), Mat4::identity(), 0.0f, "GL projection");
}

TEST_F(GlWrapper, OnlyTheTwoShadowStacksAreRead)
{
    Matrix untouched;
    untouched.fill(-12345.0f);
    for (int which : {2, -1, int(GL_MODELVIEW)})
        EXPECT_EQ(shadowMatrix(which), untouched) << which;
}

}  // namespace
