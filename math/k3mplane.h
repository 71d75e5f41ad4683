/// \file
/// Plane a.x + b.y + c.z + d = 0 (normal a, b, c; offset d).
#ifndef PEVRANO_MATH_K3MPLANE_H
#define PEVRANO_MATH_K3MPLANE_H

#include "math/k3mvector3d.h"

/// Plane a.x + b.y + c.z + d = 0; a plain value type.
class K3MPLANE {
public:
    /// Normal (a, b, c) and offset d.
    ///@{
    float a, b, c, d;
    ///@}

    /// The zero plane, or one from its four coefficients.
    ///@{
    K3MPLANE() : a(0.0f), b(0.0f), c(0.0f), d(0.0f) {}
    K3MPLANE(float a_, float b_, float c_, float d_) : a(a_), b(b_), c(c_), d(d_) {}
    ///@}
    /// The normal is stored as given, not normalised.
    K3MPLANE(const K3MVECTOR3D& normal, float d_) : a(normal.x), b(normal.y), c(normal.z), d(d_) {}
    /// Plane through three points, with the unit normal of (p2 - p1) ^ (p3 - p1).
    K3MPLANE(const K3MVECTOR3D& p1, const K3MVECTOR3D& p2, const K3MVECTOR3D& p3);

    /// Signed distance of p (no absolute value; exact only for a unit normal).
    float signedDistance(const K3MVECTOR3D& p) const { return a * p.x + b * p.y + c * p.z + d; }
    /// Same as signedDistance.
    float distance(const K3MVECTOR3D& p) const { return signedDistance(p); }
    /// True when dir points against the normal or runs along the plane.
    bool isFrontFacingTo(const K3MVECTOR3D& dir) const { return a * dir.x + b * dir.y + c * dir.z <= 0.0f; }
};

static_assert(sizeof(K3MPLANE) == 4 * sizeof(float), "K3MPLANE must be four packed floats");
static_assert(std::is_standard_layout<K3MPLANE>::value, "K3MPLANE must be standard layout");

#endif
