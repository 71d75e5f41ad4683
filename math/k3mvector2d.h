/// \file
/// Two-component single-precision vector: positions, sizes and texture
/// coordinates. A plain value type: arrays of it are packed float arrays.
#ifndef PEVRANO_MATH_K3MVECTOR2D_H
#define PEVRANO_MATH_K3MVECTOR2D_H

#include <cstdlib>
#include <type_traits>

/// Enabled when every argument type is a built-in number.
template <class... T> using K3MNumbers = std::enable_if_t<(std::is_arithmetic<T>::value && ...)>;

/// A value of 2 floats (x, y) with component-wise arithmetic.
class K3MVECTOR2D {
public:
    /// The components, packed in this order.
    ///@{
    float x, y;
    ///@}

    /// Construction from components (converted to float) or from 2 packed floats.
    ///@{
    K3MVECTOR2D() : x(0.0f), y(0.0f) {}
    K3MVECTOR2D(float x_, float y_) : x(x_), y(y_) {}
    K3MVECTOR2D(double x_, double y_) : x(float(x_)), y(float(y_)) {}
    K3MVECTOR2D(int x_, int y_) : x(float(x_)), y(float(y_)) {}
    K3MVECTOR2D(const float* v) : x(v[0]), y(v[1]) {}
    ///@}
    /// Mixed argument types (ints with floats, say) convert each to float.
    template <class X, class Y, class = K3MNumbers<X, Y>> K3MVECTOR2D(X x_, Y y_) : x(float(x_)), y(float(y_))
    {
    }

    /// Sets the components (any number types) and returns the new value;
    /// reset() zeroes them.
    ///@{
    K3MVECTOR2D set(float x_, float y_)
    {
        x = x_;
        y = y_;
        return *this;
    }
    K3MVECTOR2D set(double x_, double y_) { return set(float(x_), float(y_)); }
    K3MVECTOR2D set(int x_, int y_) { return set(float(x_), float(y_)); }
    K3MVECTOR2D set(const float* v) { return set(v[0], v[1]); }
    template <class X, class Y, class = K3MNumbers<X, Y>> K3MVECTOR2D set(X x_, Y y_)
    {
        return set(float(x_), float(y_));
    }
    void reset() { x = y = 0.0f; }
    ///@}

    /// An index outside 0..1 ends the process with status 1.
    float& operator[](int i)
    {
        switch (i) {
        case 0:
            return x;
        case 1:
            return y;
        default:
            std::exit(1);
        }
    }
    /// The components as an array of 2 floats.
    ///@{
    const float& operator[](int i) const { return const_cast<K3MVECTOR2D&>(*this)[i]; }
    operator float*() { return &x; }
    operator const float*() const { return &x; }
    ///@}

    /// Exact comparison of every component.
    ///@{
    int operator==(const K3MVECTOR2D& v) const { return x == v.x && y == v.y; }
    int operator!=(const K3MVECTOR2D& v) const { return !(*this == v); }
    ///@}

    /// Component-wise arithmetic, with a vector or with the same float for
    /// every component.
    ///@{
    K3MVECTOR2D operator+() const { return *this; }
    K3MVECTOR2D operator-() const { return K3MVECTOR2D(-x, -y); }

    K3MVECTOR2D operator+(const K3MVECTOR2D& v) const { return K3MVECTOR2D(x + v.x, y + v.y); }
    K3MVECTOR2D operator-(const K3MVECTOR2D& v) const { return K3MVECTOR2D(x - v.x, y - v.y); }
    K3MVECTOR2D operator*(const K3MVECTOR2D& v) const { return K3MVECTOR2D(x * v.x, y * v.y); }
    K3MVECTOR2D operator/(const K3MVECTOR2D& v) const { return K3MVECTOR2D(x / v.x, y / v.y); }
    K3MVECTOR2D operator+(float f) const { return K3MVECTOR2D(x + f, y + f); }
    K3MVECTOR2D operator-(float f) const { return K3MVECTOR2D(x - f, y - f); }
    K3MVECTOR2D operator*(float f) const { return K3MVECTOR2D(x * f, y * f); }
    K3MVECTOR2D operator/(float f) const { return K3MVECTOR2D(x / f, y / f); }

    K3MVECTOR2D operator+=(const K3MVECTOR2D& v) { return *this = *this + v; }
    K3MVECTOR2D operator-=(const K3MVECTOR2D& v) { return *this = *this - v; }
    K3MVECTOR2D operator*=(const K3MVECTOR2D& v) { return *this = *this * v; }
    K3MVECTOR2D operator/=(const K3MVECTOR2D& v) { return *this = *this / v; }
    K3MVECTOR2D operator*=(float f) { return *this = *this * f; }
    K3MVECTOR2D operator/=(float f) { return *this = *this / f; }
    ///@}

    /// Dot product.
    float operator%(const K3MVECTOR2D& v) const { return x * v.x + y * v.y; }

    /// Length (Euclidean norm), its square, and setters that scale the
    /// vector to a given length or to 1; each setter returns the new value.
    ///@{
    float squaredLength() const { return *this % *this; }
    float length() const;
    K3MVECTOR2D setLength(float l);
    K3MVECTOR2D normalize();
    ///@}
    /// Angle to v in radians.
    double angle(const K3MVECTOR2D& v) const;
    /// Distance between the two points.
    float distance(const K3MVECTOR2D& v) const;
    /// Linear interpolation: this at t = 0, b at t = 1.
    K3MVECTOR2D lerp(const K3MVECTOR2D& b, float t) const { return *this + (b - *this) * t; }
};

static_assert(sizeof(K3MVECTOR2D) == 2 * sizeof(float), "K3MVECTOR2D must be two packed floats");
static_assert(std::is_standard_layout<K3MVECTOR2D>::value, "K3MVECTOR2D must be standard layout");
static_assert(std::is_trivially_copyable<K3MVECTOR2D>::value, "K3MVECTOR2D must be trivially copyable");
static_assert(!std::is_polymorphic<K3MVECTOR2D>::value, "K3MVECTOR2D must have no virtuals");

#endif
