// Length-based operations shared by the three vector classes. Internal to
// the math folder: each vector class forwards to these.
#ifndef PEVRANO_MATH_K3MVECTOROPS_H
#define PEVRANO_MATH_K3MVECTOROPS_H

#include <cmath>

namespace k3mvectorops {

// Square root taken in double precision, rounded to float.
template <class V> float length(const V& v) { return float(std::sqrt(double(v.squaredLength()))); }

// No guard against a zero length: a zero vector becomes NaN.
template <class V> V setLength(V& v, float l) { return v *= l / length(v); }

// A zero vector is divided by 1 and stays zero.
template <class V> V normalize(V& v)
{
    float len = length(v);
    if (len == 0.0f)
        len = 1.0f;
    return v /= len;
}

// Angle in radians; a NaN (zero-length operand, cosine rounded past 1) gives 0.
template <class V> double angle(const V& a, const V& b)
{
    double result = std::acos(double((a % b) / (length(a) * length(b))));
    return std::isnan(result) ? 0.0 : result;
}

}  // namespace k3mvectorops

#endif
