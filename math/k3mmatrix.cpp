#include "math/k3mmatrix.h"

#include <cmath>
#include <utility>

namespace {

// Degrees per radian as the single-axis rotations use it.
const float DEGREES_PER_RADIAN = 57.295776f;
const float PI_FLOAT = 3.1415927f;

// Sine and cosine in double precision, rounded to float.
float sinf64(float r) { return float(std::sin(double(r))); }
float cosf64(float r) { return float(std::cos(double(r))); }
float sqrtf64(float v) { return float(std::sqrt(double(v))); }
// Radians (double) to degrees, rounded to float.
float degrees(double r) { return float(r * 180.0 / 3.1415927410125732); }

// Common part of setRotationX/Y/Z: the 3x3 block, the bottom row and the
// y, z translation zeroed, 1 in m[12], m[15] left as it is.
void clearForAxisRotation(float* m)
{
    for (int i = 0; i < 12; i++)
        m[i] = 0.0f;
    m[12] = 1.0f;
    m[13] = m[14] = 0.0f;
}

}  // namespace

void K3MMATRIX::transpose()
{
    for (int r = 0; r < 4; r++)
        for (int c = r + 1; c < 4; c++)
            std::swap(m[4 * c + r], m[4 * r + c]);
}

float K3MMATRIX::determinant() const
{
    return m[0] * (m[5] * m[10] - m[6] * m[9]) - m[1] * (m[4] * m[10] - m[6] * m[8]) +
           m[2] * (m[4] * m[9] - m[5] * m[8]);
}

K3MMATRIX K3MMATRIX::inverse() const
{
    float inv = 1.0f / determinant();
    K3MMATRIX r;
    // Adjugate of the 3x3 block over the determinant.
    r.m[0] = (m[5] * m[10] - m[6] * m[9]) * inv;
    r.m[1] = (m[2] * m[9] - m[1] * m[10]) * inv;
    r.m[2] = (m[1] * m[6] - m[2] * m[5]) * inv;
    r.m[3] = 0.0f;
    r.m[4] = (m[6] * m[8] - m[4] * m[10]) * inv;
    r.m[5] = (m[0] * m[10] - m[2] * m[8]) * inv;
    r.m[6] = (m[2] * m[4] - m[0] * m[6]) * inv;
    r.m[7] = 0.0f;
    r.m[8] = (m[4] * m[9] - m[5] * m[8]) * inv;
    r.m[9] = (m[1] * m[8] - m[0] * m[9]) * inv;
    r.m[10] = (m[0] * m[5] - m[1] * m[4]) * inv;
    r.m[11] = 0.0f;
    // Translation: -(R^-1 . t).
    for (int i = 0; i < 3; i++)
        r.m[12 + i] = -(m[12] * r.m[i] + m[13] * r.m[4 + i] + m[14] * r.m[8 + i]);
    r.m[15] = 1.0f;
    return r;
}

void K3MMATRIX::setRotationX(float angle)
{
    float r = angle / DEGREES_PER_RADIAN;
    clearForAxisRotation(m);
    m[0] = 1.0f;
    m[5] = cosf64(r);
    m[6] = sinf64(r);
    m[9] = -sinf64(r);
    m[10] = cosf64(r);
}

void K3MMATRIX::setRotationY(float angle)
{
    float r = angle / DEGREES_PER_RADIAN;
    clearForAxisRotation(m);
    m[0] = cosf64(r);
    m[2] = -sinf64(r);
    m[5] = 1.0f;
    m[8] = sinf64(r);
    m[10] = cosf64(r);
}

void K3MMATRIX::setRotationZ(float angle)
{
    float r = angle / DEGREES_PER_RADIAN;
    clearForAxisRotation(m);
    m[0] = cosf64(r);
    m[1] = sinf64(r);
    m[4] = -sinf64(r);
    m[5] = cosf64(r);
    m[10] = 1.0f;
}

void K3MMATRIX::setRotation(float angle, float x, float y, float z)
{
    float r = angle / 180.0f * PI_FLOAT;
    float c = cosf64(r), s = sinf64(r), t = 1.0f - c;
    *this = K3MMATRIX(x * x * t + c, x * y * t + z * s, x * z * t - y * s, 0.0f, y * x * t - z * s,
                      y * y * t + c, y * z * t + x * s, 0.0f, x * z * t + y * s, y * z * t - x * s,
                      z * z * t + c, 0.0f, 0.0f, 0.0f, 0.0f, 1.0f);
}

K3MMATRIX K3MMATRIX::fromQuaternion(const K3MVECTOR4D& q)
{
    float x = q.x, y = q.y, z = q.z, w = q.w;
    *this = K3MMATRIX(1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w), 0.0f,
                      2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w), 0.0f,
                      2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y), 0.0f, 0.0f, 0.0f,
                      0.0f, 1.0f);
    return *this;
}

// The branches after the first give w the opposite sign convention to the
// first; both are relied upon as they are.
K3MVECTOR4D K3MMATRIX::toQuaterion() const
{
    float t = m[0] + m[5] + m[10] + 1.0f;
    if (t > 0.0f) {
        float s = 0.5f / sqrtf64(t);
        return K3MVECTOR4D((m[9] - m[6]) * s, (m[2] - m[8]) * s, (m[4] - m[1]) * s, 0.25f / s);
    }
    if (m[0] > m[5] && m[0] > m[10]) {
        float s = 2.0f * sqrtf64(1.0f + m[0] - m[5] - m[10]);
        return K3MVECTOR4D(0.25f * s, (m[1] + m[4]) / s, (m[2] + m[8]) / s, (m[6] - m[9]) / s);
    }
    if (m[5] > m[10]) {
        float s = 2.0f * sqrtf64(1.0f + m[5] - m[0] - m[10]);
        return K3MVECTOR4D((m[1] + m[4]) / s, 0.25f * s, (m[6] + m[9]) / s, (m[2] - m[8]) / s);
    }
    float s = 2.0f * sqrtf64(1.0f + m[10] - m[0] - m[5]);
    return K3MVECTOR4D((m[2] + m[8]) / s, (m[6] + m[9]) / s, 0.25f * s, (m[1] - m[4]) / s);
}

K3MVECTOR4D K3MMATRIX::toQuaternionJona() const
{
    float tr = m[0] + m[5] + m[10];
    if (tr > 0.0f) {
        float s = sqrtf64(tr + 1.0f);
        float w = s / 2.0f;
        s = 0.5f / s;
        return K3MVECTOR4D((m[6] - m[9]) * s, (m[8] - m[2]) * s, (m[1] - m[4]) * s, w);
    }
    // Start from the largest diagonal element.
    static const int next[3] = {1, 2, 0};
    int i = 0;
    if (m[5] > m[0])
        i = 1;
    if (m[10] > m[5 * i])
        i = 2;
    int j = next[i], k = next[j];
    float q[3];
    float s = sqrtf64(m[5 * i] - (m[5 * j] + m[5 * k]) + 1.0f);
    q[i] = s * 0.5f;
    if (s != 0.0f)
        s = 0.5f / s;
    float w = (m[4 * j + k] - m[4 * k + j]) * s;
    q[j] = (m[4 * i + j] + m[4 * j + i]) * s;
    q[k] = (m[4 * i + k] + m[4 * k + i]) * s;
    return K3MVECTOR4D(q[0], q[1], q[2], w);
}

K3MVECTOR3D K3MMATRIX::toEuler() const
{
    // Near the poles only the first angle is determined.
    if (m[4] > 0.998)
        return K3MVECTOR3D(degrees(std::atan2(double(m[2]), double(m[10]))), 90.0f, 0.0f);
    if (m[4] < -0.998)
        return K3MVECTOR3D(degrees(std::atan2(double(m[2]), double(m[10]))), -90.0f, 0.0f);
    return K3MVECTOR3D(degrees(std::atan2(double(-m[8]), double(m[0]))),
                       degrees(std::atan2(double(-m[6]), double(m[5]))), degrees(std::asin(double(m[4]))));
}
