// Matrix: storage order, product order, inverse, rotations, quaternion and
// Euler conversions, against the textbook transforms or closed forms;
// element m[4c + r] is row r, column c.
#include "math/k3mmatrix.h"
#include "math_expect.h"
#include "support/viewmath.h"

using mathtest::axisAngle;
using mathtest::RAD;
using pvtest::expectMatrixNear;
using pvtest::Mat4;

// 1, 2, ..., 16 in storage order.
static K3MMATRIX counting(float first)
{
    float v[16];
    for (int i = 0; i < 16; i++)
        v[i] = first + float(i);
    return K3MMATRIX(v);
}

TEST(Matrix, StorageAndAccessors)
{
    EXPECT_COMPONENTS(K3MMATRIX().m, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1);
    K3MMATRIX m(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);
    EXPECT_COMPONENTS(m.m, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);

    // Rows gather across columns; an index out of range gives zeros.
    EXPECT_COMPONENTS(m.getRow(3), 4, 8, 12, 16);
    EXPECT_COMPONENTS(m.getColumn(1), 5, 6, 7, 8);
    EXPECT_COMPONENTS(m.getRow(4), 0, 0, 0, 0);
    EXPECT_COMPONENTS(m.getColumn(-1), 0, 0, 0, 0);

    m.setTranslation(-1, -2, -3);
    EXPECT_COMPONENTS(m.m, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, -1, -2, -3, 16);

    // setScaling writes the diagonal only, even over a rotation (sin 30 = 0.5).
    K3MMATRIX scaled;
    scaled.setRotation(30, 0, 0, 1);
    scaled.setScaling(K3MVECTOR3D(2, 3, 4));
    EXPECT_COMPONENTS_NEAR(1e-7, scaled.m, 2, 0.5, 0, 0, -0.5, 3, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1);
}

TEST(Matrix, ProductAppliesRightOperandAfterLeft)
{
    K3MMATRIX a = counting(1), b = counting(17);
    K3MMATRIX c = a * b;
    // B.A in GL terms.
    const Mat4 ga = Mat4::fromGl(a.m), gb = Mat4::fromGl(b.m);
    expectMatrixNear(gb * ga, c.m, "a * b", 0.0);
    expectMatrixNear(ga * gb, (b * a).m, "b * a", 0.0);

    // A child translation followed by its parent's rotation of 90 degrees about z.
    K3MMATRIX child, parent;
    child.setTranslation(1, 0, 0);
    parent.setRotation(90, 0, 0, 1);
    EXPECT_COMPONENTS_NEAR(1e-6, (child * parent).transform(K3MVECTOR3D()), 0, 1, 0, 1);
    EXPECT_COMPONENTS_NEAR(1e-6, (parent * child).transform(K3MVECTOR3D()), 1, 0, 0, 1);

    // *= stores the product and returns it.
    K3MMATRIX acc = a;
    EXPECT_TRUE(mathtest::nearArray((acc *= b).m, c.m, 16, 0.0));
    EXPECT_TRUE(mathtest::nearArray(acc.m, c.m, 16, 0.0));
}

TEST(Matrix, TransposeDeterminantAndInverse)
{
    K3MMATRIX t = counting(1);
    t.transpose();
    EXPECT_COMPONENTS(t.m, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15, 4, 8, 12, 16);

    // Block rows (2 1 0 / 0 3 1 / 1 0 4): 2(12 - 0) - 1(0 - 1) + 0 = 25; the
    // other elements do not take part.
    K3MMATRIX block(2, 0, 1, 9, 1, 3, 0, 9, 0, 1, 4, 9, 5, 6, 7, 0);
    EXPECT_EQ(25.0f, block.determinant());

    // Scale (2, 4, 8) then translate (2, 4, 8): inverse scales by halves and
    // moves back by (-1, -1, -1); the source's bottom row is ignored.
    K3MMATRIX st(2, 0, 0, 3, 0, 4, 0, 3, 0, 0, 8, 3, 2, 4, 8, 5);
    EXPECT_COMPONENTS(st.inverse().m, 0.5, 0, 0, 0, 0, 0.25, 0, 0, 0, 0, 0.125, 0, -1, -1, -1, 1);

    // A rotation about a skew axis with a translation, times its inverse, is the identity.
    K3MMATRIX m;
    const double len = std::sqrt(14.0);
    m.setRotation(37, float(1 / len), float(2 / len), float(3 / len));
    m.setTranslation(4, -5, 6);
    K3MMATRIX scale;
    scale.setScaling(K3MVECTOR3D(1.5f, 0.5f, 2.0f));
    m = scale * m;
    EXPECT_TRUE(mathtest::nearArray((m * m.inverse()).m, K3MMATRIX().m, 16, 1e-5));
    EXPECT_TRUE(mathtest::nearArray((m.inverse() * m).m, K3MMATRIX().m, 16, 1e-5));
    K3MMATRIX inverted = m;
    inverted.invert();
    EXPECT_TRUE(mathtest::nearArray(inverted.m, m.inverse().m, 16, 0.0));

    // A singular block is not reported: the result holds infinities or NaN.
    K3MMATRIX singular(1, 2, 3, 0, 2, 4, 6, 0, 0, 0, 1, 0, 0, 0, 0, 1);
    EXPECT_EQ(0.0f, singular.determinant());
    EXPECT_FALSE(std::isfinite(singular.inverse().m[0]));
}

TEST(Matrix, SingleAxisRotations)
{
    // All three put 1 into m[12] and leave m[15] alone.
    K3MMATRIX x;
    x.m[15] = 7;
    x.m[13] = 5;
    x.setRotationX(30);
    const double c = std::cos(30 * RAD), s = std::sin(30 * RAD);
    EXPECT_COMPONENTS_NEAR(1e-6, x.m, 1, 0, 0, 0, 0, c, s, 0, 0, -s, c, 0, 1, 0, 0, 7);
    K3MMATRIX y;
    y.m[15] = 3;
    y.setRotationY(30);
    EXPECT_COMPONENTS_NEAR(1e-6, y.m, c, 0, -s, 0, 0, 1, 0, 0, s, 0, c, 0, 1, 0, 0, 3);
    K3MMATRIX z(counting(1));
    z.setRotationZ(30);
    EXPECT_COMPONENTS_NEAR(1e-6, z.m, c, s, 0, 0, -s, c, 0, 0, 0, 0, 1, 0, 1, 0, 0, 16);

    // Degrees are divided by 57.295776f, so that many degrees is exactly one radian.
    K3MMATRIX one;
    one.setRotationZ(57.2957763671875f);
    EXPECT_EQ(float(std::cos(1.0)), one.m[0]);
    EXPECT_EQ(float(std::sin(1.0)), one.m[1]);
}

TEST(Matrix, AxisAngleRotation)
{
    const double len = std::sqrt(29.0);
    const double ax = 2 / len, ay = -3 / len, az = 4 / len;
    K3MMATRIX m = counting(1);
    m.setRotation(-70, float(ax), float(ay), float(az));
    // Translation and bottom row are cleared, m[15] = 1.
    expectMatrixNear(Mat4::rotation(-70, ax, ay, az), m.m, "axis-angle", 1e-6);

    // (1, 1, 1) turned by 120 degrees cycles the axes.
    const float k = float(1 / std::sqrt(3.0));
    m.setRotation(120, k, k, k);
    EXPECT_COMPONENTS_NEAR(1e-6, m.rotate(K3MVECTOR3D(1, 0, 0)), 0, 1, 0);

    // The axis is not normalised: (0, 0, 2) at 90 degrees gives m[1] = 2s, m[10] = 4t + c.
    m.setRotation(90, 0, 0, 2);
    EXPECT_COMPONENTS_NEAR(1e-6, m.m, 0, 2, 0, 0, -2, 0, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1);
}

TEST(Matrix, RotateAndTransformVectors)
{
    const K3MMATRIX m = counting(1);
    // rotate: x*m[i] + y*m[4+i] + z*m[8+i]; (1,2,3) gives 1+10+27, 2+12+30, 3+14+33.
    EXPECT_COMPONENTS(m.rotate(K3MVECTOR3D(1, 2, 3)), 38, 44, 50);
    EXPECT_COMPONENTS(m.rotate(K3MVECTOR4D(1, 2, 3, 9)), 38, 44, 50);
    EXPECT_COMPONENTS(m.rotate(K3MVECTOR2D(1, 2)), 11, 14, 17);
    // transform adds m[12+i] (times w for a 4D vector), for all four rows.
    EXPECT_COMPONENTS(m.transform(K3MVECTOR3D(1, 2, 3)), 51, 58, 65, 72);
    EXPECT_COMPONENTS(m.transform(K3MVECTOR4D(1, 2, 3, 2)), 64, 72, 80, 88);
    EXPECT_COMPONENTS(m.transform(K3MVECTOR2D(1, 2)), 24, 28, 32, 36);
}

TEST(MatrixQuaternion, FromQuaternionIsTheInverseRotation)
{
    // The matrix of q is the GL rotation by the opposite angle.
    const double len = std::sqrt(6.0);
    const double ax = 1 / len, ay = 2 / len, az = -1 / len;
    K3MMATRIX m = counting(1);
    K3MMATRIX returned = m.fromQuaternion(axisAngle(50 * RAD, ax, ay, az));
    expectMatrixNear(Mat4::rotation(-50, ax, ay, az), m.m, "from quaternion", 1e-6);
    EXPECT_TRUE(mathtest::nearArray(returned.m, m.m, 16, 0.0));

    // By the formula, exactly: (1, 2, 3, 4) unnormalised.
    m.fromQuaternion(K3MVECTOR4D(1, 2, 3, 4));
    EXPECT_COMPONENTS(m.m, 1 - 2 * 13, 2 * (2 - 12), 2 * (3 + 8), 0, 2 * (2 + 12), 1 - 2 * 10, 2 * (6 - 4), 0,
                      2 * (3 - 8), 2 * (6 + 4), 1 - 2 * 5, 0, 0, 0, 0, 1);
}

TEST(MatrixQuaternion, RoundTrips)
{
    const K3MVECTOR4D samples[] = {
        axisAngle(0.0, 0, 1, 0), axisAngle(50 * RAD, 0.6, 0.0, 0.8), axisAngle(-120 * RAD, 0.0, 1.0, 0.0),
        axisAngle(170 * RAD, 0.48, 0.6, 0.64), axisAngle(175 * RAD, 0.0, 0.0, 1.0)};
    for (const K3MVECTOR4D& q : samples) {
        K3MMATRIX m;
        m.fromQuaternion(q);
        // toQuaterion's main case gives q back.
        EXPECT_COMPONENTS_NEAR(1e-4, m.toQuaterion(), q.x, q.y, q.z, q.w);
        // toQuaternionJona gives the conjugate, up to the sign of the whole
        // quaternion when it takes its diagonal branch.
        K3MVECTOR4D j = m.toQuaternionJona();
        float sign = (j.w * q.w < 0.0f) ? -1.0f : 1.0f;
        EXPECT_COMPONENTS_NEAR(1e-4, j * sign, -q.x, -q.y, -q.z, q.w);
    }
}

TEST(MatrixQuaternion, ToQuaterionBranchesKeepTheirSigns)
{
    // Diagonal (1, -1, -1): t = 0, x largest. s = 2 sqrt(4) = 4.
    K3MMATRIX xBranch(1, 0.5f, 1, 0, 0.5f, -1, 0.5f, 0, 0, -0.5f, -1, 0, 0, 0, 0, 1);
    // x = 1, y = (m1 + m4)/4, z = (m2 + m8)/4, w = (m6 - m9)/4.
    EXPECT_COMPONENTS(xBranch.toQuaterion(), 1, 0.25, 0.25, 0.25);
    // Diagonal (-1, 1, -1): y largest; w = (m2 - m8)/4.
    K3MMATRIX yBranch(-1, 1, 2, 0, 0, 1, 1, 0, 0, 1, -1, 0, 0, 0, 0, 1);
    EXPECT_COMPONENTS(yBranch.toQuaterion(), 0.25, 1, 0.5, 0.5);
    // Diagonal (-1, -1, 1): z largest; w = (m1 - m4)/4.
    K3MMATRIX zBranch(-1, 1, 1, 0, -1, -1, 0, 0, 1, 2, 1, 0, 0, 0, 0, 1);
    EXPECT_COMPONENTS(zBranch.toQuaterion(), 0.5, 0.5, 1, 0.5);

    // The same x-branch matrix through Jona: s = sqrt(1 + 2 + 1) = 2, q[0] = 1,
    // then s = 0.25: w = (m6 - m9)/4, y = (m1 + m4)/4, z = (m2 + m8)/4.
    EXPECT_COMPONENTS(xBranch.toQuaternionJona(), 1, 0.25, 0.25, 0.25);
    // z largest through Jona: i = 2, j = 0, k = 1; w = (m1 - m4)/4,
    // x = (m8 + m2)/4, y = (m9 + m6)/4.
    EXPECT_COMPONENTS(zBranch.toQuaternionJona(), 0.5, 0.5, 1, 0.5);
}

TEST(Matrix, ToEulerInDegrees)
{
    K3MMATRIX m;
    m.setRotation(40, 0, 1, 0);
    EXPECT_COMPONENTS_NEAR(1e-4, m.toEuler(), -40, 0, 0);
    m.setRotation(25, 1, 0, 0);
    EXPECT_COMPONENTS_NEAR(1e-4, m.toEuler(), 0, -25, 0);
    m.setRotation(30, 0, 0, 1);
    EXPECT_COMPONENTS_NEAR(1e-4, m.toEuler(), 0, 0, -30);
    // m[4] = 1: the pole, only the first angle is read.
    m.setRotation(-90, 0, 0, 1);
    EXPECT_COMPONENTS_NEAR(1e-4, m.toEuler(), 0, 90, 0);
    K3MMATRIX south(1, 0, 1, 0, -1, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1);
    EXPECT_COMPONENTS_NEAR(1e-4, south.toEuler(), 45, -90, 0);
    // 0.998f lies just above 0.998 in double precision: the pole branch.
    K3MMATRIX edge(1, 0, 0, 0, 0.998f, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1);
    EXPECT_COMPONENTS(edge.toEuler(), 0, 90, 0);
}
