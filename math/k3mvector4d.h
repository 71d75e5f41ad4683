/// \file
/// Four-component single-precision vector. Also the engine's quaternion
/// (x, y, z vector part, w scalar part) and its RGBA colour. A plain value
/// type: arrays of it are packed float arrays.
#ifndef PEVRANO_MATH_K3MVECTOR4D_H
#define PEVRANO_MATH_K3MVECTOR4D_H

#include "math/k3mvector3d.h"

/// A value of 4 floats (x, y, z, w) with component-wise arithmetic.
class K3MVECTOR4D {
public:
    /// The components, packed in this order.
    ///@{
    float x, y, z, w;
    ///@}

    /// Construction from components (converted to float) or from 4 packed floats.
    ///@{
    K3MVECTOR4D() : x(0.0f), y(0.0f), z(0.0f), w(1.0f) {}
    K3MVECTOR4D(float x_, float y_, float z_, float w_) : x(x_), y(y_), z(z_), w(w_) {}
    K3MVECTOR4D(double x_, double y_, double z_, double w_) :
        x(float(x_)),
        y(float(y_)),
        z(float(z_)),
        w(float(w_))
    {
    }
    K3MVECTOR4D(int x_, int y_, int z_, int w_) : x(float(x_)), y(float(y_)), z(float(z_)), w(float(w_)) {}
    K3MVECTOR4D(const float* v) : x(v[0]), y(v[1]), z(v[2]), w(v[3]) {}
    ///@}
    /// Mixed argument types (ints with floats, say) convert each to float.
    template <class X, class Y, class Z, class W, class = K3MNumbers<X, Y, Z, W>>
    K3MVECTOR4D(X x_, Y y_, Z z_, W w_) : x(float(x_)), y(float(y_)), z(float(z_)), w(float(w_))
    {
    }
    /// Smaller vectors gain z = 0 and w = 1 (also used for assignment).
    ///@{
    K3MVECTOR4D(const K3MVECTOR2D& v) : x(v.x), y(v.y), z(0.0f), w(1.0f) {}
    K3MVECTOR4D(const K3MVECTOR3D& v) : x(v.x), y(v.y), z(v.z), w(1.0f) {}
    ///@}

    /// Sets the components (any number types) and returns the new value;
    /// reset() zeroes them.
    ///@{
    K3MVECTOR4D set(float x_, float y_, float z_, float w_)
    {
        x = x_;
        y = y_;
        z = z_;
        w = w_;
        return *this;
    }
    K3MVECTOR4D set(double x_, double y_, double z_, double w_)
    {
        return set(float(x_), float(y_), float(z_), float(w_));
    }
    K3MVECTOR4D set(int x_, int y_, int z_, int w_)
    {
        return set(float(x_), float(y_), float(z_), float(w_));
    }
    K3MVECTOR4D set(const float* v) { return set(v[0], v[1], v[2], v[3]); }
    template <class X, class Y, class Z, class W, class = K3MNumbers<X, Y, Z, W>>
    K3MVECTOR4D set(X x_, Y y_, Z z_, W w_)
    {
        return set(float(x_), float(y_), float(z_), float(w_));
    }
    /// Zeroes w as well, unlike the default constructor.
    void reset() { x = y = z = w = 0.0f; }
    ///@}

    /// An index outside 0..3 ends the process with status 1.
    float& operator[](int i)
    {
        switch (i) {
        case 0:
            return x;
        case 1:
            return y;
        case 2:
            return z;
        case 3:
            return w;
        default:
            std::exit(1);
        }
    }
    /// The components as an array of 4 floats.
    ///@{
    const float& operator[](int i) const { return const_cast<K3MVECTOR4D&>(*this)[i]; }
    operator float*() { return &x; }
    operator const float*() const { return &x; }
    ///@}

    /// Exact comparison of every component.
    ///@{
    int operator==(const K3MVECTOR4D& v) const { return x == v.x && y == v.y && z == v.z && w == v.w; }
    int operator!=(const K3MVECTOR4D& v) const { return !(*this == v); }
    ///@}

    /// Component-wise arithmetic, with a vector or with the same float for
    /// every component.
    ///@{
    K3MVECTOR4D operator+() const { return *this; }
    K3MVECTOR4D operator-() const { return K3MVECTOR4D(-x, -y, -z, -w); }

    K3MVECTOR4D operator+(const K3MVECTOR4D& v) const
    {
        return K3MVECTOR4D(x + v.x, y + v.y, z + v.z, w + v.w);
    }
    K3MVECTOR4D operator-(const K3MVECTOR4D& v) const
    {
        return K3MVECTOR4D(x - v.x, y - v.y, z - v.z, w - v.w);
    }
    K3MVECTOR4D operator*(const K3MVECTOR4D& v) const
    {
        return K3MVECTOR4D(x * v.x, y * v.y, z * v.z, w * v.w);
    }
    K3MVECTOR4D operator/(const K3MVECTOR4D& v) const
    {
        return K3MVECTOR4D(x / v.x, y / v.y, z / v.z, w / v.w);
    }
    K3MVECTOR4D operator+(float f) const { return K3MVECTOR4D(x + f, y + f, z + f, w + f); }
    K3MVECTOR4D operator-(float f) const { return K3MVECTOR4D(x - f, y - f, z - f, w - f); }
    K3MVECTOR4D operator*(float f) const { return K3MVECTOR4D(x * f, y * f, z * f, w * f); }
    K3MVECTOR4D operator/(float f) const { return K3MVECTOR4D(x / f, y / f, z / f, w / f); }

    K3MVECTOR4D operator+=(const K3MVECTOR4D& v) { return *this = *this + v; }
    K3MVECTOR4D operator-=(const K3MVECTOR4D& v) { return *this = *this - v; }
    K3MVECTOR4D operator*=(const K3MVECTOR4D& v) { return *this = *this * v; }
    K3MVECTOR4D operator/=(const K3MVECTOR4D& v) { return *this = *this / v; }
    K3MVECTOR4D operator*=(float f) { return *this = *this * f; }
    K3MVECTOR4D operator/=(float f) { return *this = *this / f; }
    ///@}

    /// Dot product over all four components.
    float operator%(const K3MVECTOR4D& v) const { return x * v.x + y * v.y + z * v.z + w * v.w; }

    /// Length (Euclidean norm), its square, and setters that scale the
    /// vector to a given length or to 1; each setter returns the new value.
    ///@{
    float squaredLength() const { return *this % *this; }
    float length() const;
    K3MVECTOR4D setLength(float l);
    K3MVECTOR4D normalize();
    ///@}
    /// Angle to v in radians.
    double angle(const K3MVECTOR4D& v) const;
    /// Takes a 3D point; the fourth difference pairs its z with this w.
    float distance(const K3MVECTOR3D& v) const;
    /// Linear interpolation: this at t = 0, b at t = 1.
    K3MVECTOR4D lerp(const K3MVECTOR4D& b, float t) const { return *this + (b - *this) * t; }

    /// Quaternion operations; angles in radians. The setters return the new
    /// value: the identity, or the rotation by Euler angles a, b, c about x, y, z.
    ///@{
    K3MVECTOR4D quaternionSetIdentity() { return set(0.0f, 0.0f, 0.0f, 1.0f); }
    K3MVECTOR4D quaternionSetEulers(float a, float b, float c);
    K3MVECTOR4D quaternionSetEulers(const K3MVECTOR3D& angles)
    {
        return quaternionSetEulers(angles.x, angles.y, angles.z);
    }
    ///@}
    /// Hands back x, y, z as they are, without converting to angles.
    K3MVECTOR3D quaternionGetEulers() const { return K3MVECTOR3D(x, y, z); }
    /// (axis x, axis y, axis z, angle).
    K3MVECTOR4D quaternionGetAxisAngles() const;
    /// Conjugate, not divided by the squared norm: returned, or stored in place.
    ///@{
    K3MVECTOR4D quaternionInverted() const { return K3MVECTOR4D(-x, -y, -z, w); }
    K3MVECTOR4D quaternionInvert() { return *this = quaternionInverted(); }
    ///@}
    /// Hamilton product this * q.
    K3MVECTOR4D quaternionMultiply(const K3MVECTOR4D& q) const
    {
        return K3MVECTOR4D(w * q.x + x * q.w + y * q.z - z * q.y, w * q.y + y * q.w + z * q.x - x * q.z,
                           w * q.z + z * q.w + x * q.y - y * q.x, w * q.w - x * q.x - y * q.y - z * q.z);
    }
};

static_assert(sizeof(K3MVECTOR4D) == 4 * sizeof(float), "K3MVECTOR4D must be four packed floats");
static_assert(std::is_standard_layout<K3MVECTOR4D>::value, "K3MVECTOR4D must be standard layout");
static_assert(std::is_trivially_copyable<K3MVECTOR4D>::value, "K3MVECTOR4D must be trivially copyable");
static_assert(!std::is_polymorphic<K3MVECTOR4D>::value, "K3MVECTOR4D must have no virtuals");

#endif
