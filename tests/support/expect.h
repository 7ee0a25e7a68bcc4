// Assertions for numbers whose failures say what was compared, the values, and their difference.
//
//     EXPECT_SAME_BITS(actual, expected)              numbers, or arrays of them: vector, array, span
//     EXPECT_CLOSE(actual, expected, tolerance)       complex numbers: |actual - expected| <= tolerance
#pragma once

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>

#include "bits.h"

#define EXPECT_SAME_BITS(actual, expected) EXPECT_PRED_FORMAT2(support::compare_bits, actual, expected)
#define ASSERT_SAME_BITS(actual, expected) ASSERT_PRED_FORMAT2(support::compare_bits, actual, expected)
#define EXPECT_CLOSE(actual, expected, tolerance) \
    EXPECT_PRED_FORMAT3(support::compare_distance, actual, expected, tolerance)

namespace support {

template <std::floating_point Real>
std::string describe(Real actual, std::type_identity_t<Real> expected) {
    const Real size = std::fabs(expected), ulp = std::nextafter(size, std::numeric_limits<Real>::infinity()) - size;
    std::ostringstream text;
    text.precision(std::numeric_limits<Real>::max_digits10);
    text << actual << " instead of " << expected;
    text.precision(3);
    text << ", a difference of " << actual - expected << " or " << std::fabs(actual - expected) / ulp << " ulps";
    return text.str();
}

template <std::floating_point Real>
std::string describe(std::complex<Real> actual, std::complex<Real> expected) {
    return "real part " + describe(actual.real(), expected.real()) + "; imaginary part " +
           describe(actual.imag(), expected.imag());
}

inline std::complex<double> as_complex(CplxD z) { return {z.re, z.im}; }
template <std::floating_point Real>
std::complex<Real> as_complex(std::complex<Real> z) {
    return z;
}

inline std::string describe(CplxD actual, CplxD expected) { return describe(as_complex(actual), as_complex(expected)); }

template <typename Actual, typename Expected>
testing::AssertionResult compare_bits(const char *actual_text, const char *expected_text, const Actual &actual,
                                      const Expected &expected) {
    if (same_bits(actual, expected)) return testing::AssertionSuccess();
    testing::AssertionResult failure = testing::AssertionFailure();
    failure << actual_text << " differs from " << expected_text << ": ";
    if constexpr (!std::ranges::range<Actual>) return failure << describe(actual, expected);
    if constexpr (std::ranges::range<Actual>) {
        const auto size = std::ranges::size(actual);
        if (size != std::ranges::size(expected))
            return failure << size << " elements instead of " << std::ranges::size(expected);
        const auto same = [](const auto &x, const auto &y) { return same_bits(x, y); };
        const auto [a, e] = std::ranges::mismatch(actual, expected, same);
        return failure << "first at index " << a - std::ranges::begin(actual) << " of " << size << ": "
                       << describe(*a, *e);
    }
}

template <typename Actual, typename Expected>
testing::AssertionResult compare_distance(const char *actual_text, const char *expected_text, const char *,
                                          const Actual &actual, const Expected &expected, double tolerance) {
    const std::complex<long double> a(as_complex(actual)), e(as_complex(expected));
    const auto distance = static_cast<double>(std::abs(a - e));
    if (distance <= tolerance) return testing::AssertionSuccess();
    return testing::AssertionFailure() << actual_text << " is " << distance << " away from " << expected_text
                                       << ", more than " << tolerance << ": "
                                       << describe(std::complex<double>(a), std::complex<double>(e));
}

}  // namespace support
