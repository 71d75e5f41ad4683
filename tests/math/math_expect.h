// Comparison helpers for the math tests: whole vectors and matrices at once,
// with the index of the first differing component in the failure message.
#ifndef PEVRANO_TESTS_MATH_EXPECT_H
#define PEVRANO_TESTS_MATH_EXPECT_H

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <string>

namespace mathtest {

inline ::testing::AssertionResult nearAll(const float *actual, std::initializer_list<double> expected,
                                          double tolerance)
{
    int i = 0;
    for (double e : expected) {
        if (!(std::fabs(actual[i] - e) <= tolerance))
            return ::testing::AssertionFailure()
                   << "component " << i << " is " << actual[i] << ", expected " << e;
        i++;
    }
    return ::testing::AssertionSuccess();
}

inline ::testing::AssertionResult nearArray(const float *actual, const float *expected, int count,
                                            double tolerance)
{
    for (int i = 0; i < count; i++)
        if (!(std::fabs(double(actual[i]) - expected[i]) <= tolerance))
            return ::testing::AssertionFailure()
                   << "element " << i << " is " << actual[i] << ", expected " << expected[i];
    return ::testing::AssertionSuccess();
}

}  // namespace mathtest

// Exact comparison, component by component.
#define EXPECT_COMPONENTS(actual, ...) EXPECT_TRUE(mathtest::nearAll(actual, {__VA_ARGS__}, 0.0))
// Comparison within a tolerance.
#define EXPECT_COMPONENTS_NEAR(tolerance, actual, ...) \
    EXPECT_TRUE(mathtest::nearAll(actual, {__VA_ARGS__}, tolerance))

#endif
