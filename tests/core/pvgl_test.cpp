// Float GL wrapper: fixed-point values that reach GL, shadow matrix stacks
// compared with matrices computed here and with GL's own matrices.
#include <gtest/gtest.h>

#include <GLES/gl.h>

#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "core/pvgl.h"
#include "support/glcontext.h"
#include "support/glrecorder.h"
#include "support/scratch.h"

namespace {

using Matrix = std::array<float, 16>;
using Calls = std::vector<std::string>;

Matrix identity()
{
    Matrix m{};
    m[0] = m[5] = m[10] = m[15] = 1.0f;
    return m;
}

// The engine's product order: C[4c + r] = sum over k of A[4c + k] * B[4k + r].
Matrix product(const Matrix& a, const Matrix& b)
{
    Matrix c{};
    for (int col = 0; col < 4; col++)
        for (int row = 0; row < 4; row++) {
            double sum = 0.0;
            for (int k = 0; k < 4; k++)
                sum += double(a[4 * col + k]) * b[4 * k + row];
            c[4 * col + row] = float(sum);
        }
    return c;
}

Matrix translation(float x, float y, float z)
{
    Matrix m = identity();
    m[12] = x;
    m[13] = y;
    m[14] = z;
    return m;
}

// Rotation about a unit axis as the GL reference pages define it, stored
// column by column.
Matrix rotation(double degrees, double x, double y, double z)
{
    double r = degrees * M_PI / 180.0, c = cos(r), s = sin(r), t = 1.0 - c;
    Matrix m = identity();
    m[0] = float(x * x * t + c);
    m[4] = float(x * y * t - z * s);
    m[8] = float(x * z * t + y * s);
    m[1] = float(y * x * t + z * s);
    m[5] = float(y * y * t + c);
    m[9] = float(y * z * t - x * s);
    m[2] = float(z * x * t - y * s);
    m[6] = float(z * y * t + x * s);
    m[10] = float(z * z * t + c);
    return m;
}

Matrix shadow(int which)
{
    Matrix m;
    m.fill(-12345.0f);
    PV_glGetFloatv(which, m.data());
    return m;
}

Matrix glMatrix(GLenum which)
{
    Matrix m{};
    glGetFloatv(which, m.data());
    return m;
}

void expectMatrixNear(const Matrix& actual, const Matrix& expected, float tolerance, const char* what)
{
    for (int i = 0; i < 16; i++)
        EXPECT_NEAR(actual[i], expected[i], tolerance) << what << ", element " << i;
}

class GlWrapper : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(context.ok()); }

    pvtest::ScratchDir dir;
    pvtest::LogCapture log;
    pvtest::GlContext context;
    pvtest::GlRecorder recorder;
};

TEST_F(GlWrapper, ColoursBecomeTruncatedFixedPoint)
{
    recorder.start();
    PV_glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
    PV_glColor4f(0.5f, -1.5f, 1.99999f, -0.5f);
    // Truncation toward zero: +-1.5/65536 gives +-1 (rounding would give +-2,
    // flooring -2 for the negative one), +-0.00001 gives 0.
    PV_glClearColor(1.5f / 65536.0f, -1.5f / 65536.0f, 0.00001f, -0.00001f);
    PV_glClearColor(0.25f, 0.75f, 0.0f, 1.0f);
    recorder.stop();

    EXPECT_EQ(recorder.calls(), (Calls{"glColor4x(65536,65536,65536,65536)", "glColor4x(32768,-98304,131071,-32768)",
                                       "glClearColorx(1,-1,0,0)", "glClearColorx(16384,49152,0,65536)"}));
}

TEST_F(GlWrapper, LightsMaterialsAndScalarsConvertEveryValue)
{
    const float ambient[4] = {0.25f, 0.5f, 0.75f, 1.0f};
    const float position[4] = {-2.0f, 0.125f, 100.0f, 0.0f};
    const float emission[4] = {0.1f, 0.2f, 0.3f, 0.4f};
    recorder.start();
    PV_glLightfv(GL_LIGHT1, GL_AMBIENT, ambient);
    PV_glLightfv(GL_LIGHT2, GL_POSITION, position);
    PV_glLightf(GL_LIGHT3, GL_SPOT_CUTOFF, 45.5f);
    PV_glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, emission);
    PV_glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, 12.0f);
    PV_glLightModelfv(GL_LIGHT_MODEL_AMBIENT, ambient);
    PV_glLightModelf(GL_LIGHT_MODEL_TWO_SIDE, 1.0f);
    PV_glClearDepthf(0.75f);
    PV_glAlphaFunc(GL_GEQUAL, 0.5f);
    recorder.stop();

    // 0.1 * 65536 = 6553.6, 0.2 -> 13107.2, 0.3 -> 19660.8, 0.4 -> 26214.4.
    EXPECT_EQ(recorder.calls(), (Calls{"glLightxv(GL_LIGHT1,GL_AMBIENT,{16384,32768,49152,65536})",
                                       "glLightxv(GL_LIGHT2,GL_POSITION,{-131072,8192,6553600,0})",
                                       "glLightx(GL_LIGHT3,GL_SPOT_CUTOFF,2981888)",
                                       "glMaterialxv(GL_FRONT_AND_BACK,GL_EMISSION,{6553,13107,19660,26214})",
                                       "glMaterialx(GL_FRONT_AND_BACK,GL_SHININESS,786432)",
                                       "glLightModelxv(GL_LIGHT_MODEL_AMBIENT,{16384,32768,49152,65536})",
                                       "glLightModelx(GL_LIGHT_MODEL_TWO_SIDE,65536)", "glClearDepthx(49152)",
                                       "glAlphaFuncx(GL_GEQUAL,32768)"}));
}

TEST_F(GlWrapper, ShadowStacksStartZeroed)
{
    expectMatrixNear(shadow(PV_GL_MODELVIEW_STACK), Matrix{}, 0.0f, "model-view");
    expectMatrixNear(shadow(PV_GL_PROJECTION_STACK), Matrix{}, 0.0f, "projection");
}

TEST_F(GlWrapper, LoadMatrixSendsFixedValuesAndKeepsFloats)
{
    const Matrix m = {0.5f, -1.5f, 1.99999f, 0.0f, 1.0f, 2.0f, -0.25f, 0.0f,
                      3.0f, -0.00001f, 1.0f, 0.0f, 10.0f, -20.0f, 30.5f, 1.0f};
    recorder.start();
    PV_glMatrixMode(GL_MODELVIEW);
    PV_glLoadMatrixf(m.data());
    recorder.stop();

    EXPECT_EQ(recorder.calls(),
              (Calls{"glMatrixMode(GL_MODELVIEW)",
                     "glLoadMatrixx({32768,-98304,131071,0,65536,131072,-16384,0,196608,0,65536,0,655360,-1310720,"
                     "1998848,65536})"}));
    expectMatrixNear(shadow(PV_GL_MODELVIEW_STACK), m, 0.0f, "shadow keeps the floats");
}

TEST_F(GlWrapper, TranslateAfterIdentityGivesTranslationElements)
{
    recorder.start();
    PV_glMatrixMode(GL_MODELVIEW);
    PV_glLoadIdentity();
    PV_glTranslatef(1.0f, 2.0f, 3.0f);
    recorder.stop();

    EXPECT_EQ(recorder.calls(),
              (Calls{"glMatrixMode(GL_MODELVIEW)", "glLoadIdentity()", "glTranslatex(65536,131072,196608)"}));
    expectMatrixNear(shadow(PV_GL_MODELVIEW_STACK), translation(1, 2, 3), 0.0f, "model-view");
}

TEST_F(GlWrapper, ShadowFollowsRotateTranslateAndMultiply)
{
    const Matrix m = {2.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.5f, 0.0f, 0.0f,
                      0.0f, 0.25f, 1.0f, 0.0f, -1.25f, 4.0f, 0.0f, 1.0f};
    PV_glMatrixMode(GL_MODELVIEW);
    PV_glLoadIdentity();
    PV_glTranslatef(1.0f, -2.0f, 3.0f);
    PV_glRotatef(30.0f, 0.6f, 0.0f, 0.8f);
    PV_glMultMatrixf(m.data());

    // Each operation X makes the top X * top.
    Matrix expected = product(m, product(rotation(30.0, 0.6, 0.0, 0.8), translation(1, -2, 3)));
    expectMatrixNear(shadow(PV_GL_MODELVIEW_STACK), expected, 1e-5f, "shadow");
    // GL, fed the same operations in fixed point, holds the same matrix.
    expectMatrixNear(glMatrix(GL_MODELVIEW_MATRIX), expected, 2e-4f, "GL model-view");
}

TEST_F(GlWrapper, OrthoShadowMatchesGl)
{
    PV_glMatrixMode(GL_PROJECTION);
    PV_glLoadIdentity();
    PV_glOrtho(0.0f, 240.0f, 320.0f, 0.0f, -1.0f, 1.0f);

    Matrix expected = identity();
    expected[0] = 2.0f / 240.0f;
    expected[5] = -2.0f / 320.0f;
    expected[10] = -1.0f;
    expected[12] = -1.0f;
    expected[13] = 1.0f;
    expectMatrixNear(shadow(PV_GL_PROJECTION_STACK), expected, 1e-6f, "shadow");
    expectMatrixNear(glMatrix(GL_PROJECTION_MATRIX), expected, 1e-5f, "GL projection");
}

TEST_F(GlWrapper, FrustumShadowDeliberatelyDiffersFromGl)
{
    recorder.start();
    PV_glMatrixMode(GL_PROJECTION);
    PV_glLoadIdentity();
    PV_glFrustum(-1.0f, 2.0f, -1.0f, 1.0f, 2.0f, 10.0f);
    recorder.stop();
    EXPECT_EQ(recorder.filter("glFrustumx"), (Calls{"glFrustumx(-65536,131072,-65536,65536,131072,655360)"}));

    // Shadow: no factor n on the diagonal, off-diagonal terms in 2, 6 and 11.
    Matrix shadowExpected = identity();
    shadowExpected[0] = 2.0f / 3.0f;
    shadowExpected[5] = 1.0f;
    shadowExpected[2] = 1.0f / 3.0f;
    shadowExpected[6] = 0.0f;
    shadowExpected[10] = -12.0f / 8.0f;
    shadowExpected[11] = -40.0f / 8.0f;
    shadowExpected[14] = -1.0f;
    shadowExpected[15] = 0.0f;
    expectMatrixNear(shadow(PV_GL_PROJECTION_STACK), shadowExpected, 1e-6f, "shadow");

    // GL's own frustum: 2n/(r-l), 2n/(t-b), (r+l)/(r-l) in 8, -1 in 11, -2fn/(f-n) in 14.
    Matrix glExpected{};
    glExpected[0] = 4.0f / 3.0f;
    glExpected[5] = 2.0f;
    glExpected[8] = 1.0f / 3.0f;
    glExpected[10] = -1.5f;
    glExpected[11] = -1.0f;
    glExpected[14] = -5.0f;
    expectMatrixNear(glMatrix(GL_PROJECTION_MATRIX), glExpected, 1e-4f, "GL projection");
}

TEST_F(GlWrapper, PushCopiesTopAndPopRestoresIt)
{
    PV_glMatrixMode(GL_MODELVIEW);
    PV_glLoadIdentity();
    PV_glTranslatef(1.0f, 2.0f, 3.0f);
    PV_glPushMatrix();
    expectMatrixNear(shadow(PV_GL_MODELVIEW_STACK), translation(1, 2, 3), 0.0f, "after push");
    PV_glTranslatef(1.0f, 0.0f, 0.0f);
    expectMatrixNear(shadow(PV_GL_MODELVIEW_STACK), translation(2, 2, 3), 0.0f, "changed copy");
    PV_glPopMatrix();
    expectMatrixNear(shadow(PV_GL_MODELVIEW_STACK), translation(1, 2, 3), 0.0f, "after pop");
    EXPECT_EQ(log.text(), "");
}

TEST_F(GlWrapper, ThirtyThreePushesReachGlThirtyTwoTimes)
{
    PV_glMatrixMode(GL_PROJECTION);
    PV_glLoadIdentity();
    PV_glTranslatef(7.0f, 8.0f, 9.0f);
    PV_glMatrixMode(GL_MODELVIEW);
    PV_glLoadIdentity();

    recorder.start();
    for (int i = 0; i < 33; i++)
        PV_glPushMatrix();
    recorder.stop();
    EXPECT_EQ(recorder.calls(), Calls(32, "glPushMatrix()"));
    EXPECT_EQ(log.text(), "   [!] Stack overflow in glWrapper\n");
    // The deepest push leaves the projection stack alone.
    expectMatrixNear(shadow(PV_GL_PROJECTION_STACK), translation(7, 8, 9), 0.0f, "projection");
    expectMatrixNear(shadow(PV_GL_MODELVIEW_STACK), identity(), 0.0f, "model-view top");

    recorder.start();
    for (int i = 0; i < 33; i++)
        PV_glPopMatrix();
    recorder.stop();
    EXPECT_EQ(recorder.calls(), Calls(32, "glPopMatrix()"));
    EXPECT_EQ(log.text(), "   [!] Stack overflow in glWrapper\n   [!] Stack underflow in glWrapper\n");
}

TEST_F(GlWrapper, PopAtDepthZeroOnlyWarns)
{
    recorder.start();
    PV_glPopMatrix();
    recorder.stop();
    EXPECT_TRUE(recorder.calls().empty()) << recorder.text();
    EXPECT_EQ(log.text(), "   [!] Stack underflow in glWrapper\n");
}

TEST_F(GlWrapper, TextureModeKeepsThePreviousShadowStack)
{
    PV_glMatrixMode(GL_MODELVIEW);
    PV_glLoadIdentity();
    PV_glMatrixMode(GL_PROJECTION);
    PV_glLoadIdentity();

    recorder.start();
    PV_glMatrixMode(GL_TEXTURE);
    PV_glTranslatef(5.0f, 0.0f, 0.0f);
    recorder.stop();

    EXPECT_EQ(recorder.calls(), (Calls{"glMatrixMode(GL_TEXTURE)", "glTranslatex(327680,0,0)"}));
    expectMatrixNear(shadow(PV_GL_PROJECTION_STACK), translation(5, 0, 0), 0.0f, "projection follows");
    expectMatrixNear(shadow(PV_GL_MODELVIEW_STACK), identity(), 0.0f, "model-view untouched");
    // GL itself moved the texture matrix, not the projection.
    expectMatrixNear(glMatrix(GL_PROJECTION_MATRIX), identity(), 0.0f, "GL projection");
}

TEST_F(GlWrapper, GetFloatvTakesStackIndicesOnly)
{
    PV_glMatrixMode(GL_MODELVIEW);
    PV_glLoadIdentity();
    Matrix untouched;
    untouched.fill(-12345.0f);
    Matrix out = untouched;
    PV_glGetFloatv(2, out.data());
    EXPECT_EQ(out, untouched);
    PV_glGetFloatv(-1, out.data());
    EXPECT_EQ(out, untouched);
    PV_glGetFloatv(GL_MODELVIEW, out.data());
    EXPECT_EQ(out, untouched);
    EXPECT_EQ(shadow(PV_GL_MODELVIEW_STACK), identity());
}

}  // namespace
