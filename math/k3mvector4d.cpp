#include "math/k3mvector4d.h"
#include "math/k3mvectorops.h"

float K3MVECTOR4D::length() const { return k3mvectorops::length(*this); }

K3MVECTOR4D K3MVECTOR4D::setLength(float l) { return k3mvectorops::setLength(*this, l); }

K3MVECTOR4D K3MVECTOR4D::normalize() { return k3mvectorops::normalize(*this); }

double K3MVECTOR4D::angle(const K3MVECTOR4D& v) const { return k3mvectorops::angle(*this, v); }

// The 3D point has no w, so its z stands in for it in the fourth difference.
float K3MVECTOR4D::distance(const K3MVECTOR3D& v) const
{
    float dx = v.x - x, dy = v.y - y, dz = v.z - z, dw = v.z - w;
    return float(std::sqrt(double(dx * dx + dy * dy + dz * dz + dw * dw)));
}

// a, b, c are the rotations about x, y and z in radians.
K3MVECTOR4D K3MVECTOR4D::quaternionSetEulers(float a, float b, float c)
{
    float sa = float(std::sin(double(a / 2))), ca = float(std::cos(double(a / 2)));
    float sb = float(std::sin(double(b / 2))), cb = float(std::cos(double(b / 2)));
    float sc = float(std::sin(double(c / 2))), cc = float(std::cos(double(c / 2)));
    return set(ca * sb * cc + sa * cb * sc, sa * cb * cc - ca * sb * sc, ca * cb * sc - sa * sb * cc,
               ca * cb * cc + sa * sb * sc);
}

K3MVECTOR4D K3MVECTOR4D::quaternionGetAxisAngles() const
{
    float angle = float(2.0 * std::acos(double(w)));
    if (std::fabs(angle) < 0.0001f)
        return K3MVECTOR4D(0.0f, 1.0f, 0.0f, angle);
    float scale = float(1.0 / std::sin(double(angle / 2)));
    return K3MVECTOR4D(x * scale, y * scale, z * scale, angle);
}
