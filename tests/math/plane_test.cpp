// Plane: constructors, signed distance, facing test.
#include "math/k3mplane.h"
#include "math_expect.h"

#include <array>

// The plane's four numbers, for whole comparisons.
static std::array<float, 4> values(const K3MPLANE& p) { return {p.a, p.b, p.c, p.d}; }

TEST(Plane, ConstructionAndSignedDistance)
{
    EXPECT_COMPONENTS(values(K3MPLANE()).data(), 0, 0, 0, 0);
    EXPECT_COMPONENTS(values(K3MPLANE(1, 2, 3, 4)).data(), 1, 2, 3, 4);

    // A normal passed in is kept as it is: (0, 2, 0) and d = 1 give 2y + 1.
    K3MPLANE scaled(K3MVECTOR3D(0, 2, 0), 1);
    EXPECT_EQ(7.0f, scaled.distance(K3MVECTOR3D(5, 3, 5)));
    EXPECT_EQ(-5.0f, scaled.signedDistance(K3MVECTOR3D(0, -3, 0)));

    // Through (0,0,1), (1,0,1), (0,1,1): counter-clockwise from +z, so z - 1 = 0.
    K3MPLANE floor(K3MVECTOR3D(0, 0, 1), K3MVECTOR3D(1, 0, 1), K3MVECTOR3D(0, 1, 1));
    EXPECT_COMPONENTS(values(floor).data(), 0, 0, 1, -1);
    EXPECT_EQ(2.0f, floor.distance(K3MVECTOR3D(5, 5, 3)));
    EXPECT_EQ(-1.5f, floor.signedDistance(K3MVECTOR3D(-2, 7, -0.5f)));

    // Through the three unit points: normal (1,1,1)/sqrt(3), d = -1/sqrt(3).
    K3MPLANE slanted(K3MVECTOR3D(1, 0, 0), K3MVECTOR3D(0, 1, 0), K3MVECTOR3D(0, 0, 1));
    const double k = 1 / std::sqrt(3.0);
    EXPECT_COMPONENTS_NEAR(1e-7, values(slanted).data(), k, k, k, -k);
    EXPECT_NEAR(-1 / std::sqrt(3.0), slanted.distance(K3MVECTOR3D(0, 0, 0)), 1e-7);
    // Reversed winding flips the normal.
    K3MPLANE reversed(K3MVECTOR3D(0, 0, 1), K3MVECTOR3D(0, 1, 0), K3MVECTOR3D(1, 0, 0));
    EXPECT_COMPONENTS_NEAR(1e-7, values(reversed).data(), -k, -k, -k, k);

    // Collinear points: the zero normal stays zero, d = 0.
    K3MPLANE collinear(K3MVECTOR3D(1, 1, 1), K3MVECTOR3D(2, 2, 2), K3MVECTOR3D(4, 4, 4));
    EXPECT_COMPONENTS(values(collinear).data(), 0, 0, 0, 0);
}

TEST(Plane, FrontFacing)
{
    K3MPLANE p(K3MVECTOR3D(0, 1, 0), -2);
    EXPECT_TRUE(p.isFrontFacingTo(K3MVECTOR3D(0, -1, 0)));
    EXPECT_TRUE(p.isFrontFacingTo(K3MVECTOR3D(3, -0.1f, 0)));
    EXPECT_FALSE(p.isFrontFacingTo(K3MVECTOR3D(0, 1, 0)));
    EXPECT_FALSE(p.isFrontFacingTo(K3MVECTOR3D(-5, 0.01f, 2)));
    // Perpendicular to the normal counts as facing.
    EXPECT_TRUE(p.isFrontFacingTo(K3MVECTOR3D(1, 0, 1)));
}
