// The one matrix reference of the tests: transforms written the textbook way
// (double precision, row-major, column vectors) so that they check the
// engine's own column-major float code instead of repeating it, and the
// comparison of an engine matrix (16 floats, column-major) with one.
#ifndef PEVRANO_TESTS_SUPPORT_VIEWMATH_H
#define PEVRANO_TESTS_SUPPORT_VIEWMATH_H

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace pvtest {

struct Vec3 {
    double x, y, z;
};

inline Vec3 operator-(Vec3 a, Vec3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Vec3 operator+(Vec3 a, Vec3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Vec3 operator*(Vec3 a, double k) { return {a.x * k, a.y * k, a.z * k}; }
inline double dot(Vec3 a, Vec3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Vec3 cross(Vec3 a, Vec3 b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline Vec3 unit(Vec3 a)
{
    const double l = std::sqrt(dot(a, a));
    return l == 0.0 ? a : a * (1.0 / l);
}

// a[r][c]: row r, column c; points are column vectors (p' = M p).
struct Mat4 {
    double a[4][4];

    static Mat4 identity()
    {
        Mat4 m {};
        for (int i = 0; i < 4; i++)
            m.a[i][i] = 1.0;
        return m;
    }
    static Mat4 translation(double x, double y, double z)
    {
        Mat4 m = identity();
        m.a[0][3] = x;
        m.a[1][3] = y;
        m.a[2][3] = z;
        return m;
    }
    // Right-handed rotation of deg degrees about the X, Y or Z axis: in the
    // plane of the two other axes i, j (cyclic order), i turns towards j.
    static Mat4 rotationX(double deg) { return rotation(0, deg); }
    static Mat4 rotationY(double deg) { return rotation(1, deg); }
    static Mat4 rotationZ(double deg) { return rotation(2, deg); }
    static Mat4 rotation(int axis, double deg)
    {
        const double r = deg * M_PI / 180.0, c = std::cos(r), s = std::sin(r);
        const int i = (axis + 1) % 3, j = (axis + 2) % 3;
        Mat4 m = identity();
        m.a[i][i] = c;
        m.a[i][j] = -s;
        m.a[j][i] = s;
        m.a[j][j] = c;
        return m;
    }
    // Right-handed rotation of deg degrees about the axis (x, y, z), unit
    // length (Rodrigues' formula).
    static Mat4 rotation(double deg, double x, double y, double z)
    {
        const double r = deg * M_PI / 180.0, c = std::cos(r), s = std::sin(r), t = 1.0 - c;
        const double rows[3][3] = {{t * x * x + c, t * x * y - s * z, t * x * z + s * y},
                                   {t * x * y + s * z, t * y * y + c, t * y * z - s * x},
                                   {t * x * z - s * y, t * y * z + s * x, t * z * z + c}};
        Mat4 m = identity();
        for (int i = 0; i < 3; i++)
            for (int j = 0; j < 3; j++)
                m.a[i][j] = rows[i][j];
        return m;
    }
    // From 16 values in GL's column-major order.
    static Mat4 fromGl(const float* v)
    {
        Mat4 m {};
        for (int i = 0; i < 16; i++)
            m.a[i % 4][i / 4] = v[i];
        return m;
    }
    // The classic look-at view: forward F = centre - eye, side S = F x up,
    // true up U = S x F; rows S, U, -F, then a move of the eye to the origin.
    static Mat4 lookAt(Vec3 eye, Vec3 centre, Vec3 up)
    {
        const Vec3 f = unit(centre - eye);
        const Vec3 s = unit(cross(f, up));
        const Vec3 u = cross(s, f);
        Mat4 m = identity();
        const Vec3 rows[3] = {s, u, f * -1.0};
        for (int r = 0; r < 3; r++) {
            m.a[r][0] = rows[r].x;
            m.a[r][1] = rows[r].y;
            m.a[r][2] = rows[r].z;
        }
        return m * translation(-eye.x, -eye.y, -eye.z);
    }
    // Perspective projection with a vertical angle in degrees.
    static Mat4 perspective(double fovyDeg, double aspect, double zNear, double zFar)
    {
        const double f = 1.0 / std::tan(fovyDeg * M_PI / 360.0);
        Mat4 m {};
        m.a[0][0] = f / aspect;
        m.a[1][1] = f;
        m.a[2][2] = (zFar + zNear) / (zNear - zFar);
        m.a[2][3] = 2.0 * zFar * zNear / (zNear - zFar);
        m.a[3][2] = -1.0;
        return m;
    }

    Mat4 operator*(const Mat4& b) const
    {
        Mat4 m {};
        for (int r = 0; r < 4; r++)
            for (int c = 0; c < 4; c++)
                for (int k = 0; k < 4; k++)
                    m.a[r][c] += a[r][k] * b.a[k][c];
        return m;
    }
    // M (p, w), returned as x, y, z, w.
    void apply(Vec3 p, double w, double out[4]) const
    {
        for (int r = 0; r < 4; r++)
            out[r] = a[r][0] * p.x + a[r][1] * p.y + a[r][2] * p.z + a[r][3] * w;
    }
    Vec3 transformPoint(Vec3 p) const
    {
        double o[4];
        apply(p, 1.0, o);
        return {o[0], o[1], o[2]};
    }
    // Element in GL's column-major storage order.
    double gl(int i) const { return a[i % 4][i / 4]; }
    // All 16 in that order, as an engine matrix stores them.
    void toGl(float* out) const
    {
        for (int i = 0; i < 16; i++)
            out[i] = float(gl(i));
    }
};

// The 16 floats of an engine matrix (column-major) against the reference.
inline void expectMatrixNear(const Mat4& expected, const float* actual, const std::string& what,
                             double tolerance = 1e-4)
{
    for (int i = 0; i < 16; i++)
        EXPECT_NEAR(expected.gl(i), actual[i], tolerance) << what << ", element " << i;
}

}  // namespace pvtest

#endif
