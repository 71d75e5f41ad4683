/// \file
/// Three-component single-precision vector: positions, directions, Euler
/// rotations in degrees, normals. A plain value type: arrays of it are packed
/// float arrays handed to GL as they are.
#ifndef PEVRANO_MATH_K3MVECTOR3D_H
#define PEVRANO_MATH_K3MVECTOR3D_H

#include "math/k3mvector2d.h"

/// A value of 3 floats (x, y, z) with component-wise arithmetic.
class K3MVECTOR3D {
public:
    /// The components, packed in this order.
    ///@{
    float x, y, z;
    ///@}

    /// Construction from components (converted to float) or from 3 packed floats.
    ///@{
    K3MVECTOR3D() : x(0.0f), y(0.0f), z(0.0f) {}
    K3MVECTOR3D(float x_, float y_, float z_) : x(x_), y(y_), z(z_) {}
    K3MVECTOR3D(double x_, double y_, double z_) : x(float(x_)), y(float(y_)), z(float(z_)) {}
    K3MVECTOR3D(int x_, int y_, int z_) : x(float(x_)), y(float(y_)), z(float(z_)) {}
    K3MVECTOR3D(const float* v) : x(v[0]), y(v[1]), z(v[2]) {}
    ///@}
    /// Mixed argument types (ints with floats, say) convert each to float.
    template <class X, class Y, class Z, class = K3MNumbers<X, Y, Z>>
    K3MVECTOR3D(X x_, Y y_, Z z_) : x(float(x_)), y(float(y_)), z(float(z_))
    {
    }
    /// A 2D vector gains z = 0 (also used for assignment from a 2D vector).
    K3MVECTOR3D(const K3MVECTOR2D& v) : x(v.x), y(v.y), z(0.0f) {}

    /// Sets the components (any number types) and returns the new value;
    /// reset() zeroes them.
    ///@{
    K3MVECTOR3D set(float x_, float y_, float z_)
    {
        x = x_;
        y = y_;
        z = z_;
        return *this;
    }
    K3MVECTOR3D set(double x_, double y_, double z_) { return set(float(x_), float(y_), float(z_)); }
    K3MVECTOR3D set(int x_, int y_, int z_) { return set(float(x_), float(y_), float(z_)); }
    K3MVECTOR3D set(const float* v) { return set(v[0], v[1], v[2]); }
    template <class X, class Y, class Z, class = K3MNumbers<X, Y, Z>> K3MVECTOR3D set(X x_, Y y_, Z z_)
    {
        return set(float(x_), float(y_), float(z_));
    }
    void reset() { x = y = z = 0.0f; }
    ///@}

    /// An index outside 0..2 ends the process with status 1.
    float& operator[](int i)
    {
        switch (i) {
        case 0:
            return x;
        case 1:
            return y;
        case 2:
            return z;
        default:
            std::exit(1);
        }
    }
    /// The components as an array of 3 floats.
    ///@{
    const float& operator[](int i) const { return const_cast<K3MVECTOR3D&>(*this)[i]; }
    operator float*() { return &x; }
    operator const float*() const { return &x; }
    ///@}

    /// Exact comparison of every component.
    ///@{
    int operator==(const K3MVECTOR3D& v) const { return x == v.x && y == v.y && z == v.z; }
    int operator!=(const K3MVECTOR3D& v) const { return !(*this == v); }
    ///@}

    /// Component-wise arithmetic, with a vector or with the same float for
    /// every component.
    ///@{
    K3MVECTOR3D operator+() const { return *this; }
    K3MVECTOR3D operator-() const { return K3MVECTOR3D(-x, -y, -z); }

    K3MVECTOR3D operator+(const K3MVECTOR3D& v) const { return K3MVECTOR3D(x + v.x, y + v.y, z + v.z); }
    K3MVECTOR3D operator-(const K3MVECTOR3D& v) const { return K3MVECTOR3D(x - v.x, y - v.y, z - v.z); }
    K3MVECTOR3D operator*(const K3MVECTOR3D& v) const { return K3MVECTOR3D(x * v.x, y * v.y, z * v.z); }
    K3MVECTOR3D operator/(const K3MVECTOR3D& v) const { return K3MVECTOR3D(x / v.x, y / v.y, z / v.z); }
    K3MVECTOR3D operator+(float f) const { return K3MVECTOR3D(x + f, y + f, z + f); }
    K3MVECTOR3D operator-(float f) const { return K3MVECTOR3D(x - f, y - f, z - f); }
    K3MVECTOR3D operator*(float f) const { return K3MVECTOR3D(x * f, y * f, z * f); }
    K3MVECTOR3D operator/(float f) const { return K3MVECTOR3D(x / f, y / f, z / f); }

    K3MVECTOR3D operator+=(const K3MVECTOR3D& v) { return *this = *this + v; }
    K3MVECTOR3D operator-=(const K3MVECTOR3D& v) { return *this = *this - v; }
    K3MVECTOR3D operator*=(const K3MVECTOR3D& v) { return *this = *this * v; }
    K3MVECTOR3D operator/=(const K3MVECTOR3D& v) { return *this = *this / v; }
    K3MVECTOR3D operator*=(float f) { return *this = *this * f; }
    K3MVECTOR3D operator/=(float f) { return *this = *this / f; }
    ///@}

    /// Dot product.
    float operator%(const K3MVECTOR3D& v) const { return x * v.x + y * v.y + z * v.z; }
    /// Cross product.
    K3MVECTOR3D operator^(const K3MVECTOR3D& v) const
    {
        return K3MVECTOR3D(y * v.z - z * v.y, z * v.x - x * v.z, x * v.y - y * v.x);
    }

    /// Length (Euclidean norm), its square, and setters that scale the
    /// vector to a given length or to 1; each setter returns the new value.
    ///@{
    float squaredLength() const { return *this % *this; }
    float length() const;
    K3MVECTOR3D setLength(float l);
    K3MVECTOR3D normalize();
    ///@}
    /// Angle to v in radians.
    double angle(const K3MVECTOR3D& v) const;
    /// Distance between the two points.
    float distance(const K3MVECTOR3D& v) const;
    /// Linear interpolation: this at t = 0, b at t = 1.
    K3MVECTOR3D lerp(const K3MVECTOR3D& b, float t) const { return *this + (b - *this) * t; }
};

static_assert(sizeof(K3MVECTOR3D) == 3 * sizeof(float), "K3MVECTOR3D must be three packed floats");
static_assert(std::is_standard_layout<K3MVECTOR3D>::value, "K3MVECTOR3D must be standard layout");
static_assert(std::is_trivially_copyable<K3MVECTOR3D>::value, "K3MVECTOR3D must be trivially copyable");
static_assert(!std::is_polymorphic<K3MVECTOR3D>::value, "K3MVECTOR3D must have no virtuals");

#endif
