#include "math/k3mvector2d.h"
#include "math/k3mvectorops.h"

float K3MVECTOR2D::length() const { return k3mvectorops::length(*this); }

K3MVECTOR2D K3MVECTOR2D::setLength(float l) { return k3mvectorops::setLength(*this, l); }

K3MVECTOR2D K3MVECTOR2D::normalize() { return k3mvectorops::normalize(*this); }

double K3MVECTOR2D::angle(const K3MVECTOR2D& v) const { return k3mvectorops::angle(*this, v); }

float K3MVECTOR2D::distance(const K3MVECTOR2D& v) const { return (v - *this).length(); }
