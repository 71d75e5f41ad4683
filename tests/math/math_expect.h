// Helpers of the math tests: whole vectors and matrices compared at once,
// with the index of the first differing component in the failure message,
// and reference rotations written from their closed forms.
#ifndef PEVRANO_TESTS_MATH_MATH_EXPECT_H
#define PEVRANO_TESTS_MATH_MATH_EXPECT_H

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>

#include "math/k3mvector4d.h"

namespace mathtest {

const double PI = std::acos(-1.0);
const double RAD = PI / 180.0;

// Quaternion of a rotation by angle radians about a unit axis: (sin(t/2) axis, cos(t/2)).
inline K3MVECTOR4D axisAngle(double angle, double x, double y, double z)
{
    double s = std::sin(angle / 2);
    return K3MVECTOR4D(x * s, y * s, z * s, std::cos(angle / 2));
}

// The first count elements against the expected ones, within a tolerance.
template <typename T>
::testing::AssertionResult nearArray(const float* actual, const T* expected, int count, double tolerance)
{
    for (int i = 0; i < count; i++)
        if (!(std::fabs(double(actual[i]) - expected[i]) <= tolerance))
            return ::testing::AssertionFailure()
                   << "element " << i << " is " << actual[i] << ", expected " << expected[i];
    return ::testing::AssertionSuccess();
}

inline ::testing::AssertionResult nearAll(const float* actual, std::initializer_list<double> expected,
                                          double tolerance)
{
    return nearArray(actual, expected.begin(), int(expected.size()), tolerance);
}

}  // namespace mathtest

// Exact comparison, component by component.
#define EXPECT_COMPONENTS(actual, ...) EXPECT_TRUE(mathtest::nearAll(actual, {__VA_ARGS__}, 0.0))
// Comparison within a tolerance.
#define EXPECT_COMPONENTS_NEAR(tolerance, actual, ...)                                                       \
    EXPECT_TRUE(mathtest::nearAll(actual, {__VA_ARGS__}, tolerance))
// Two 4D vectors, component by component, within a tolerance.
#define EXPECT_VECTOR4_NEAR(tolerance, actual, expected)                                                     \
    EXPECT_TRUE(mathtest::nearArray<float>(actual, expected, 4, tolerance))

#endif
