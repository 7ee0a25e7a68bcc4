// SetCornerFreq passes over most of its grid by a faster test and must stop at the point of the plain search.
#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "designs.h"
#include "support/expect.h"
#include "support/noise.h"
#include "support/reference/iir.h"

using namespace designs;

// Section `count` becomes 1/1, which changes no magnitude and comes back with the scale in its Den0.
static void expect_plain_corner(int count, LowPassProto p) {
    p.Den2[count] = p.Den1[count] = p.Num2[count] = p.Num1[count] = 0.0;
    p.Den0[count] = p.Num0[count] = 1.0;
    const double corner = reference::corner(p, count + 1);
    SetCornerFreq(count + 1, p.Den2, p.Den1, p.Den0, p.Num2, p.Num1, p.Num0);
    EXPECT_SAME_BITS(p.Den0[count], 1.0 / corner);
}

TEST(SetCornerFreq, moves_the_corner_of_every_family_to_one_radian_per_second) {
    for (const auto &family : kFamilies)
        for (int n = 2; n <= family.max_poles && !HasFailure(); ++n) {
            SCOPED_TRACE(testing::Message() << family.name << ", order " << n);
            const LowPassProto p = prototype(family.code, n, 0.5, 50 + n, 0.1 * n - 1);
            for (const double w : {0.02, 2.0}) {
                LowPassProto moved = p;
                for (int k = 0; k < n; ++k) {
                    moved.Den1[k] *= p.Den2[k] != 0 ? w : 1;
                    moved.Den0[k] *= p.Den2[k] != 0 ? w * w : w;
                    moved.Num0[k] *= p.Num2[k] != 0 ? w * w : 1;
                }
                expect_plain_corner(n, moved);
            }
            if (n % 2 != 0 && mensura::iir::depends_on(family.code, mensura::iir::kStopBand)) {
                EXPECT_EQ(p.Den2[0], 0);  // the real pole has no zeros
                EXPECT_EQ(p.Num2[0], 0);
                EXPECT_EQ(p.Num0[0], 1);
                EXPECT_EQ(p.Num2[1], 1);
                EXPECT_EQ(p.Num2[n - 1], 1);
            }
            if (family.code == pfButterworth) continue;  // is not moved
            // One step of the grid is at most 1/20 of the unscaled corner: inverse Chebyshev, 2 poles.
            const double level = reference::magnitude(p, 0) * 0.7071;
            EXPECT_LT(reference::magnitude(p, 1), level * (1 + 1e-12));
            EXPECT_GE(reference::magnitude(p, 0.95), level);
        }
}

TEST(SetCornerFreq, finds_the_plain_corner_of_hostile_cascades) {
    constexpr double kHostile[] = {0.0,   -1.0,  NAN,    HUGE_VAL, -HUGE_VAL, 1e200,   1e-200, 1e-320, 1e-9,
                                   1e-30, 1e-12, 9999.9, 1e4,      10001.0,   DBL_MAX, 1.0,    0.3,    -0.3};
    enum Round { kOneHostile, kTwoHostile, kOverflow, kUnderflow };  // by round % 4
    support::Noise noise(20240611);
    for (int round = 0; round < 80 && !HasFailure(); ++round) {
        SCOPED_TRACE(testing::Message() << "round " << round);
        LowPassProto p{};
        double *const arrays[] = {p.Den2, p.Den1, p.Den0, p.Num2, p.Num1, p.Num0};
        const int count = 1 + noise.below(round % 8 == 0 ? 49 : 12), hostile = noise.below(3), kind = round % 4;
        for (int k = 0; k < count; ++k) {
            const double w0 = std::exp(0.01 * noise.below(600) - 2);
            p.Den2[k] = p.Num2[k] = 1.0;
            p.Den1[k] = 0.01 * noise.below(200) * w0;
            p.Num1[k] = noise.below(2) * w0;
            p.Den0[k] = p.Num0[k] = w0 * w0;
            if (kind < kOverflow && k < hostile) noise.pick(arrays)[k] = noise.pick(kHostile);
            // Squares that overflow on the way, or end among the subnormals, where the exact evaluation does neither.
            const double there_and_back = k < count / 2 ? 340.0 : -340.0;
            const double scale = std::pow(10, (kind == kOverflow ? there_and_back : -161.45) / count);
            for (double *coefficient : {p.Num2 + k, p.Num1 + k, p.Num0 + k})
                if (kind == kOverflow && count % 2 == 0) *coefficient *= scale;
            for (double *coefficient : {p.Den2 + k, p.Den1 + k, p.Den0 + k})
                if (kind == kUnderflow) *coefficient *= scale;
        }
        expect_plain_corner(count, p);
    }
    LowPassProto pole_on_the_grid{};
    std::ranges::fill(pole_on_the_grid.Den2, 1.0);
    for (double *constant : {pole_on_the_grid.Den0, pole_on_the_grid.Num0}) std::fill_n(constant, 50, 4.0);
    for (const int count : {0, 1, 3, 49}) expect_plain_corner(count, pole_on_the_grid);
    SetCornerFreq(-3, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);  // touches nothing
}

TEST(SetCornerFreq, finds_the_plain_corner_on_a_plateau_at_the_level) {
    // L (s^2 + n1 s + w0^2) / (s^2 + d1 s + w0^2), w0 far below the grid, comes down to L as 1 + 5e-15 / w^2: the last
    // bits decide where it is below.
    for (const int count : {1, 5, 19, 20})
        for (const double deviation : {1e-8, 1e-10, 0.0, -1e-16, -3e-15, -1e-13, -1e-11, -1e-9}) {
            SCOPED_TRACE(testing::Message() << count << " sections, deviation " << deviation);
            const double L = std::pow(0.7071 * (1 + deviation), 1.0 / count), d1 = 1.2e-6, w0_squared = 1e-12;
            const double n1 = L * std::sqrt(d1 * d1 + 2 * w0_squared * (1 / L - 1) + 1e-14 / count);
            LowPassProto p{};
            std::fill_n(p.Num2, count, L);
            std::fill_n(p.Num1, count, n1);
            std::fill_n(p.Den2, count, 1.0);
            std::fill_n(p.Den1, count, d1);
            for (double *constant : {p.Num0, p.Den0}) std::fill_n(constant, count, w0_squared);
            expect_plain_corner(count, p);
        }
}
