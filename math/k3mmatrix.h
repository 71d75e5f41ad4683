/// \file
/// 4x4 single-precision transform stored in GL column-major order, so that it
/// can be loaded into the fixed-function pipeline as it is: m[4*c + r] is row
/// r, column c; the translation sits in m[12], m[13], m[14].
#ifndef PEVRANO_MATH_K3MMATRIX_H
#define PEVRANO_MATH_K3MMATRIX_H

#include "math/k3mvector4d.h"

/// 4x4 transform in GL column-major order; a plain value type.
class K3MMATRIX {
public:
    /// The sixteen elements, column by column.
    float m[16];

    /// The identity, a copy of 16 packed floats, or the 16 elements in
    /// column-major order.
    ///@{
    K3MMATRIX() { setIdentity(); }
    K3MMATRIX(const float* v)
    {
        for (int i = 0; i < 16; i++)
            m[i] = v[i];
    }
    K3MMATRIX(float m0, float m1, float m2, float m3, float m4, float m5, float m6, float m7, float m8,
              float m9, float m10, float m11, float m12, float m13, float m14, float m15) :
        m {m0, m1, m2, m3, m4, m5, m6, m7, m8, m9, m10, m11, m12, m13, m14, m15}
    {
    }
    ///@}

    /// Makes this the identity.
    void setIdentity()
    {
        for (int i = 0; i < 16; i++)
            m[i] = (i % 5 == 0) ? 1.0f : 0.0f;
    }

    /// Row r or column c as a 4D vector; (0, 0, 0, 0) outside 0..3.
    ///@{
    K3MVECTOR4D getRow(int r) const
    {
        if (r < 0 || r > 3)
            return K3MVECTOR4D(0.0f, 0.0f, 0.0f, 0.0f);
        return K3MVECTOR4D(m[r], m[4 + r], m[8 + r], m[12 + r]);
    }
    K3MVECTOR4D getColumn(int c) const
    {
        if (c < 0 || c > 3)
            return K3MVECTOR4D(0.0f, 0.0f, 0.0f, 0.0f);
        return K3MVECTOR4D(&m[4 * c]);
    }

    ///@}
    /// The translation column (m[12], m[13], m[14]), read or written.
    ///@{
    K3MVECTOR3D getTranslation() const { return K3MVECTOR3D(m[12], m[13], m[14]); }
    void setTranslation(float x, float y, float z)
    {
        m[12] = x;
        m[13] = y;
        m[14] = z;
    }
    void setTranslation(const K3MVECTOR3D& t) { setTranslation(t.x, t.y, t.z); }
    ///@}
    /// Overwrites the three diagonal elements only.
    void setScaling(const K3MVECTOR3D& s)
    {
        m[0] = s.x;
        m[5] = s.y;
        m[10] = s.z;
    }

    /// C = A * B: C[4c + r] = sum over k of A[4c + k] * B[4k + r]. In GL terms
    /// this is B.A: the right-hand operand is applied after the left one, as a
    /// parent's transform after its child's.
    K3MMATRIX operator*(const K3MMATRIX& b) const
    {
        K3MMATRIX c;
        for (int col = 0; col < 4; col++)
            for (int row = 0; row < 4; row++)
                c.m[4 * col + row] = m[4 * col] * b.m[row] + m[4 * col + 1] * b.m[4 + row] +
                                     m[4 * col + 2] * b.m[8 + row] + m[4 * col + 3] * b.m[12 + row];
        return c;
    }
    /// Replaces this with this * b.
    K3MMATRIX operator*=(const K3MMATRIX& b) { return *this = *this * b; }

    /// Swaps rows and columns in place.
    void transpose();
    /// Determinant of the 3x3 rotation/scale block.
    float determinant() const;
    /// Affine inverse (bottom row ignored, no test for a zero determinant).
    K3MMATRIX inverse() const;
    /// Replaces this with inverse().
    void invert() { *this = inverse(); }

    /// R.v with the 3x3 block only.
    ///@{
    K3MVECTOR3D rotate(const K3MVECTOR2D& v) const
    {
        return K3MVECTOR3D(v.x * m[0] + v.y * m[4], v.x * m[1] + v.y * m[5], v.x * m[2] + v.y * m[6]);
    }
    K3MVECTOR3D rotate(const K3MVECTOR3D& v) const
    {
        return K3MVECTOR3D(v.x * m[0] + v.y * m[4] + v.z * m[8], v.x * m[1] + v.y * m[5] + v.z * m[9],
                           v.x * m[2] + v.y * m[6] + v.z * m[10]);
    }
    K3MVECTOR3D rotate(const K3MVECTOR4D& v) const { return rotate(K3MVECTOR3D(v.x, v.y, v.z)); }
    ///@}

    /// M.(v, 1); a 4D argument scales the translation column by its w.
    ///@{
    K3MVECTOR4D transform(const K3MVECTOR2D& v) const { return transform(K3MVECTOR4D(v.x, v.y, 0.0f, 1.0f)); }
    K3MVECTOR4D transform(const K3MVECTOR3D& v) const { return transform(K3MVECTOR4D(v.x, v.y, v.z, 1.0f)); }
    K3MVECTOR4D transform(const K3MVECTOR4D& v) const
    {
        return K3MVECTOR4D(v.x * m[0] + v.y * m[4] + v.z * m[8] + v.w * m[12],
                           v.x * m[1] + v.y * m[5] + v.z * m[9] + v.w * m[13],
                           v.x * m[2] + v.y * m[6] + v.z * m[10] + v.w * m[14],
                           v.x * m[3] + v.y * m[7] + v.z * m[11] + v.w * m[15]);
    }
    ///@}

    /// Rotations about one axis, angle in degrees. These three put 1 into
    /// m[12] and leave m[15] as it was; the engine builds its own rotations
    /// with setRotation.
    ///@{
    void setRotationX(float angle);
    void setRotationY(float angle);
    void setRotationZ(float angle);
    ///@}
    /// Rotation of angle degrees about the axis (x, y, z), taken as given (not
    /// normalised); the translation is cleared.
    void setRotation(float angle, float x, float y, float z);

    /// Conversions between this rotation and a unit quaternion (x, y, z, w);
    /// fromQuaternion also returns the new matrix.
    ///@{
    K3MMATRIX fromQuaternion(const K3MVECTOR4D& q);
    K3MVECTOR4D toQuaterion() const;
    ///@}
    /// The variant the skeletal animation uses; its signs are those of the
    /// conjugate of toQuaterion's first case.
    K3MVECTOR4D toQuaternionJona() const;
    /// Euler angles in degrees.
    K3MVECTOR3D toEuler() const;
};

static_assert(sizeof(K3MMATRIX) == 16 * sizeof(float), "K3MMATRIX must be sixteen packed floats");
static_assert(std::is_standard_layout<K3MMATRIX>::value, "K3MMATRIX must be standard layout");
static_assert(std::is_trivially_copyable<K3MMATRIX>::value, "K3MMATRIX must be trivially copyable");
static_assert(!std::is_polymorphic<K3MMATRIX>::value, "K3MMATRIX must have no virtuals");

#endif
