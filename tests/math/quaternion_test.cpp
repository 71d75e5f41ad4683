// The 4D vector as a quaternion: identity, conjugate, Hamilton product,
// Euler construction, axis/angle extraction. Expected values come from the
// scalar/vector form of the product, q1 q2 = (w1 w2 - v1.v2, w1 v2 + w2 v1 + v1 x v2),
// and from the closed form (sin(t/2) axis, cos(t/2)); a combined Euler rotation
// is checked against the product of its single-axis ones.
#include "math_expect.h"

using mathtest::axisAngle;
using mathtest::PI;

TEST(Quaternion, IdentityConjugateAndComponents)
{
    K3MVECTOR4D q(5, 6, 7, 8);
    EXPECT_COMPONENTS(q.quaternionSetIdentity(), 0, 0, 0, 1);
    EXPECT_COMPONENTS(q, 0, 0, 0, 1);

    // The conjugate, not divided by the squared norm (30 here).
    K3MVECTOR4D p(1, 2, 3, 4);
    EXPECT_COMPONENTS(p.quaternionInverted(), -1, -2, -3, 4);
    EXPECT_COMPONENTS(p, 1, 2, 3, 4);
    EXPECT_COMPONENTS(p.quaternionInvert(), -1, -2, -3, 4);
    EXPECT_COMPONENTS(p, -1, -2, -3, 4);

    // "Eulers" are the vector part as it is, without any conversion.
    EXPECT_COMPONENTS(K3MVECTOR4D(0.1f, 0.2f, 0.3f, 0.9f).quaternionGetEulers(), 0.1f, 0.2f, 0.3f);
}

TEST(Quaternion, HamiltonProduct)
{
    K3MVECTOR4D i(1, 0, 0, 0), j(0, 1, 0, 0), k(0, 0, 1, 0);
    EXPECT_COMPONENTS(i.quaternionMultiply(j), 0, 0, 1, 0);
    EXPECT_COMPONENTS(j.quaternionMultiply(i), 0, 0, -1, 0);
    EXPECT_COMPONENTS(j.quaternionMultiply(k), 1, 0, 0, 0);
    EXPECT_COMPONENTS(k.quaternionMultiply(k), 0, 0, 0, -1);

    // (v=(1,2,3), w=4)(v=(5,6,7), w=8): w = 32 - 38, v = 4(5,6,7) + 8(1,2,3) + (-4,8,-4).
    EXPECT_COMPONENTS(K3MVECTOR4D(1, 2, 3, 4).quaternionMultiply(K3MVECTOR4D(5, 6, 7, 8)), 24, 48, 48, -6);

    // A unit quaternion times its conjugate is the identity.
    K3MVECTOR4D r = axisAngle(0.8, 0.6, 0.0, 0.8);
    EXPECT_COMPONENTS_NEAR(1e-6, r.quaternionMultiply(r.quaternionInverted()), 0, 0, 0, 1);
}

TEST(Quaternion, SetEulers)
{
    const double a = 0.4, b = -1.1, c = 2.3;
    // Each angle alone: a turns about y, b about x, c about z.
    K3MVECTOR4D q;
    EXPECT_VECTOR4_NEAR(1e-7, q.quaternionSetEulers(float(a), 0.0f, 0.0f), axisAngle(a, 0, 1, 0));
    EXPECT_VECTOR4_NEAR(1e-7, q.quaternionSetEulers(0.0f, float(b), 0.0f), axisAngle(b, 1, 0, 0));
    EXPECT_VECTOR4_NEAR(1e-7, q.quaternionSetEulers(0.0f, 0.0f, float(c)), axisAngle(c, 0, 0, 1));

    // All three: the product (about y by a)(about x by b)(about z by c).
    K3MVECTOR4D expected = axisAngle(a, 0, 1, 0)
                               .quaternionMultiply(axisAngle(b, 1, 0, 0))
                               .quaternionMultiply(axisAngle(c, 0, 0, 1));
    K3MVECTOR4D combined;
    combined.quaternionSetEulers(float(a), float(b), float(c));
    EXPECT_VECTOR4_NEAR(1e-6, combined, expected);
    K3MVECTOR4D fromVector;
    EXPECT_VECTOR4_NEAR(0.0, fromVector.quaternionSetEulers(K3MVECTOR3D(float(a), float(b), float(c))),
                        combined);
    EXPECT_COMPONENTS(K3MVECTOR4D(1, 1, 1, 1).quaternionSetEulers(0.0f, 0.0f, 0.0f), 0, 0, 0, 1);
}

TEST(Quaternion, AxisAngles)
{
    EXPECT_COMPONENTS(K3MVECTOR4D().quaternionGetAxisAngles(), 0, 1, 0, 0);
    // Below the angle threshold the axis is (0, 1, 0) whatever x, y, z hold.
    EXPECT_COMPONENTS(K3MVECTOR4D(0.5f, 0.0f, 0.25f, 1.0f).quaternionGetAxisAngles(), 0, 1, 0, 0);

    EXPECT_COMPONENTS_NEAR(1e-6, axisAngle(PI / 2, 0, 0, 1).quaternionGetAxisAngles(), 0, 0, 1, PI / 2);
    const double k = 1 / std::sqrt(3.0);
    EXPECT_COMPONENTS_NEAR(1e-6, axisAngle(2.0, k, -k, k).quaternionGetAxisAngles(), k, -k, k, 2.0);
    // A non-unit vector part is scaled by 1 / sin(angle / 2) only.
    EXPECT_COMPONENTS_NEAR(1e-6, K3MVECTOR4D(2.0, 0.0, 0.0, std::cos(0.5)).quaternionGetAxisAngles(),
                           2 / std::sin(0.5), 0, 0, 1.0);
}
