// The table of sines and cosines that the fast transform has instead of libm.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <numbers>

#include "spectral/circle_table.h"
#include "support/expect.h"

using mensura::spectral::CosSin;
using mensura::spectral::kCircle, mensura::spectral::kCirclePoints;

constexpr double kPoints = kCirclePoints;

TEST(CircleTable, is_within_an_ulp_of_the_rounded_values) {
    if (LDBL_MANT_DIG < 64) GTEST_SKIP() << "long double is too coarse to tell";
    const auto expect = [](double value, long double exact) {
        const auto rounded = static_cast<double>(exact);
        EXPECT_GE(value, std::nextafter(rounded, -1)) << exact;
        EXPECT_LE(value, std::nextafter(rounded, 2)) << exact;
    };
    for (std::size_t i = 0; i < std::size(kCircle); ++i) {
        const long double angle = 2 * std::numbers::pi_v<long double> * static_cast<long double>(i) / kPoints;
        expect(kCircle[i].cos, std::cos(angle));
        expect(kCircle[i].sin, std::sin(angle));
    }
}

// With these bits the transform has kept its results; other versions and processors may round a last bit differently.
TEST(CircleTable, has_the_bits_of_glibc_2_36_with_FMA) {
#if defined(__x86_64__) && defined(__GLIBC__) && __GLIBC__ == 2 && __GLIBC_MINOR__ == 36
    if (!__builtin_cpu_supports("fma") || !__builtin_cpu_supports("avx2")) GTEST_SKIP() << "no FMA";
    for (std::size_t i = 0; i < kCirclePoints / 8; ++i) {
        const double angle = static_cast<double>(i) * (2 * std::numbers::pi / kPoints);
        EXPECT_SAME_BITS(kCircle[i].cos, std::cos(angle)) << i;
        EXPECT_SAME_BITS(kCircle[i].sin, std::sin(angle)) << i;
    }
#else
    GTEST_SKIP() << "another libm";
#endif
}
