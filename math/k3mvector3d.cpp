#include "math/k3mvector3d.h"
#include "math/k3mvectorops.h"

float K3MVECTOR3D::length() const { return k3mvectorops::length(*this); }

K3MVECTOR3D K3MVECTOR3D::setLength(float l) { return k3mvectorops::setLength(*this, l); }

K3MVECTOR3D K3MVECTOR3D::normalize() { return k3mvectorops::normalize(*this); }

double K3MVECTOR3D::angle(const K3MVECTOR3D& v) const { return k3mvectorops::angle(*this, v); }

float K3MVECTOR3D::distance(const K3MVECTOR3D& v) const { return (v - *this).length(); }
