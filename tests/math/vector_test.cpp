// Vectors: construction and conversion rules, component-wise arithmetic,
// lengths and the deliberate oddities (reset zeroing w, the 4D distance to a
// 3D point, zero-length normalisation, out-of-range indexing).
#include "math_expect.h"

using mathtest::PI;

TEST(Vector, DefaultsWideningAndReset)
{
    EXPECT_COMPONENTS(K3MVECTOR2D(), 0, 0);
    EXPECT_COMPONENTS(K3MVECTOR3D(), 0, 0, 0);
    EXPECT_COMPONENTS(K3MVECTOR4D(), 0, 0, 0, 1);
    const float source[5] = {9, 8, 7, 6, 5};
    EXPECT_COMPONENTS(K3MVECTOR4D(source), 9, 8, 7, 6);

    // Widening gives z = 0 and w = 1, in construction and assignment alike.
    K3MVECTOR2D v2(4, 5);
    K3MVECTOR3D v3(6, 7, 8);
    EXPECT_COMPONENTS(K3MVECTOR4D(v2), 4, 5, 0, 1);
    EXPECT_COMPONENTS(K3MVECTOR4D(v3), 6, 7, 8, 1);
    K3MVECTOR3D a3(1, 1, 1);
    a3 = v2;
    EXPECT_COMPONENTS(a3, 4, 5, 0);
    K3MVECTOR4D a4(2, 2, 2, 2);
    a4 = v3;
    EXPECT_COMPONENTS(a4, 6, 7, 8, 1);

    // reset zeroes w too, unlike the default constructor.
    K3MVECTOR4D r;
    r.reset();
    EXPECT_COMPONENTS(r, 0, 0, 0, 0);
}

TEST(VectorDeathTest, IndexOutOfRangeExitsWithStatusOneSilently)
{
    K3MVECTOR2D v2;
    K3MVECTOR3D v3;
    const K3MVECTOR4D v4;
    EXPECT_EXIT(v2[2] = 1, ::testing::ExitedWithCode(1), "^$");
    EXPECT_EXIT(v3[-1] = 1, ::testing::ExitedWithCode(1), "^$");
    EXPECT_EXIT(v3[3] = 1, ::testing::ExitedWithCode(1), "^$");
    EXPECT_EXIT(static_cast<void>(v4[4]), ::testing::ExitedWithCode(1), "^$");
}

TEST(Vector, ArithmeticIsComponentWise)
{
    K3MVECTOR3D a(1, 2, 3), b(4, 8, 12);
    EXPECT_COMPONENTS(a + b, 5, 10, 15);
    EXPECT_COMPONENTS(b - a, 3, 6, 9);
    EXPECT_COMPONENTS(a * b, 4, 16, 36);
    EXPECT_COMPONENTS(b / a, 4, 4, 4);
    EXPECT_COMPONENTS(a - 1.0f, 0, 1, 2);
    EXPECT_COMPONENTS(b / 4.0f, 1, 2, 3);
    EXPECT_COMPONENTS(-a, -1, -2, -3);
    K3MVECTOR4D q(1, 2, 3, 4);
    EXPECT_COMPONENTS(q -= K3MVECTOR4D(2, 2, 2, 2), -1, 0, 1, 2);
    EXPECT_COMPONENTS(q /= 2.0f, -0.5, 0, 0.5, 1);

    // Equality is exact.
    EXPECT_TRUE(K3MVECTOR3D(1.0f, 2.0f, 3.0000002f) != a);
    EXPECT_FALSE(K3MVECTOR4D() == K3MVECTOR4D(0, 0, 0, 0));
}

TEST(Vector, DotCrossAndLength)
{
    EXPECT_EQ(32.0f, K3MVECTOR3D(1, 2, 3) % K3MVECTOR3D(4, 5, 6));
    EXPECT_EQ(11.0f, K3MVECTOR2D(1, 2) % K3MVECTOR2D(3, 4));
    // The 4D dot product includes w: 1*5 + 2*6 + 3*7 + 4*8.
    EXPECT_EQ(70.0f, K3MVECTOR4D(1, 2, 3, 4) % K3MVECTOR4D(5, 6, 7, 8));

    // (1,2,3) x (4,5,6) = (2*6 - 3*5, 3*4 - 1*6, 1*5 - 2*4).
    EXPECT_COMPONENTS(K3MVECTOR3D(1, 2, 3) ^ K3MVECTOR3D(4, 5, 6), -3, 6, -3);

    EXPECT_EQ(13.0f, K3MVECTOR3D(3, 4, 12).length());
    EXPECT_EQ(25.0f, K3MVECTOR4D(1, 2, 2, 4).squaredLength());
    // A default 4D vector has length 1 through its w.
    EXPECT_EQ(1.0f, K3MVECTOR4D().length());
}

TEST(Vector, NormalizeAndSetLength)
{
    K3MVECTOR2D v(3, 4);
    EXPECT_COMPONENTS_NEAR(1e-7, v.normalize(), 0.6, 0.8);
    EXPECT_COMPONENTS_NEAR(1e-7, v, 0.6, 0.8);
    EXPECT_COMPONENTS(K3MVECTOR4D(0, 0, 0, 2).normalize(), 0, 0, 0, 1);

    // A zero vector stays zero, with no NaN.
    EXPECT_COMPONENTS(K3MVECTOR3D().normalize(), 0, 0, 0);

    EXPECT_COMPONENTS(K3MVECTOR3D(0, 3, 4).setLength(10), 0, 6, 8);

    // setLength has no such guard.
    K3MVECTOR3D z;
    z.setLength(2);
    EXPECT_TRUE(std::isnan(z.x) && std::isnan(z.y) && std::isnan(z.z));
}

TEST(Vector, AngleDistanceAndLerp)
{
    EXPECT_NEAR(PI / 2, K3MVECTOR3D(1, 0, 0).angle(K3MVECTOR3D(0, 5, 0)), 1e-6);
    EXPECT_NEAR(PI, K3MVECTOR2D(2, 0).angle(K3MVECTOR2D(-3, 0)), 1e-6);
    EXPECT_NEAR(PI / 4, K3MVECTOR2D(1, 0).angle(K3MVECTOR2D(1, 1)), 1e-6);
    EXPECT_NEAR(PI / 3, K3MVECTOR4D(1, 0, 0, 0).angle(K3MVECTOR4D(1.0, 0.0, 0.0, std::sqrt(3.0))), 1e-6);
    // A zero-length operand would give NaN: 0 instead.
    EXPECT_EQ(0.0, K3MVECTOR3D(0, 0, 0).angle(K3MVECTOR3D(1, 2, 3)));
    EXPECT_EQ(0.0, K3MVECTOR4D(1, 2, 3, 4).angle(K3MVECTOR4D(0, 0, 0, 0)));
    // Parallel vectors whose single-precision cosine rounds to 1.00000012:
    // acos gives NaN, reported as 0.
    K3MVECTOR3D u(0.25f, 1.025f, 0.375f);
    EXPECT_EQ(0.0, u.angle(u * 3.0f));

    EXPECT_EQ(5.0f, K3MVECTOR2D(1, 1).distance(K3MVECTOR2D(4, 5)));
    EXPECT_EQ(13.0f, K3MVECTOR3D(1, 1, 1).distance(K3MVECTOR3D(4, 5, 13)));

    // The 4D distance pairs the 3D point's z with this w: dw = 3 - 4.
    EXPECT_EQ(1.0f, K3MVECTOR4D(1, 2, 3, 4).distance(K3MVECTOR3D(1, 2, 3)));
    // dx = 3, dy = 0, dz = 2, dw = 2 - 1: sqrt(9 + 4 + 1).
    EXPECT_EQ(float(std::sqrt(14.0)), K3MVECTOR4D().distance(K3MVECTOR3D(3, 0, 2)));

    K3MVECTOR3D from(0, 10, -4), to(10, 20, 4);
    EXPECT_COMPONENTS(from.lerp(to, 0.25f), 2.5, 12.5, -2);
    EXPECT_COMPONENTS(from, 0, 10, -4);
}
