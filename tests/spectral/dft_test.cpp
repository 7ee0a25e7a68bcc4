// Transforms of any length, and the magnitude at one frequency.
#include <gtest/gtest.h>
#include <mensura/spectral.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <numbers>

#include "signals.h"
#include "support/expect.h"
#include "support/reference/spectral.h"

using namespace signals;

TEST(DFT, has_the_bits_of_a_plain_loop) {
    for (const std::size_t n :
         std::initializer_list<std::size_t>{1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11,  12,  13,  14,  15, 16,
                                            17, 23, 24, 25, 31, 32, 33, 63, 64, 65, 100, 127, 128, 243, 512})
        for (const int dir : {0, 1})
            for (const Signal &x : {noise(n), awkward(n, kAwkwardKinds)})
                EXPECT_SAME_BITS(run(DFT, x, 1, dir), run(reference::dft, x, 1, dir)) << n << ", direction " << dir;
}

// Tolerance: five times the worst seen, 30.  The states of Goertzel's recursion grow to 1 / sin(pi f), n at most.
TEST(RealSignals, have_the_bins_of_DFT_but_for_the_one_after_the_middle_of_an_odd_length) {
    for (int n = 1; n <= 243; ++n) {
        SCOPED_TRACE(testing::Message() << n << " points");
        const std::size_t size = static_cast<std::size_t>(n);
        const Signal x = noise(size, 0), full = run(DFT, x, 1, 0);
        std::vector<double> samples;
        for (const Point sample : x) samples.push_back(sample.real());
        const Signal half = run([&](double *re, double *im, int) { RealSigDFT(samples.data(), re, im, n); }, x, 1);
        Signal expected = full;
        for (std::size_t k = size / 2 + 1; k < size; ++k) expected[k] = conj(full[size - k]);
        if (n % 2 == 1 && n > 1) expected[size / 2 + 1] = x[size / 2 + 1];  // as it was
        EXPECT_SAME_BITS(half, expected);
        for (std::size_t k = 0; k < size; ++k) {
            const double f = 2.0 * static_cast<double>(k) / n, power = n * n * std::norm(full[k]);
            const double gain = std::min<double>(n, 1 / std::fabs(std::sin(std::numbers::pi * f)));
            for (const double magnitude : {SingleFreqDFT(samples.data(), n, f), Goertzel(samples.data(), n, f)})
                EXPECT_NEAR(magnitude * magnitude, power, 160 * n * std::sqrt(n) * gain * gain * DBL_EPSILON) << k;
        }
    }
}

TEST(Goertzel, has_a_floor_where_nothing_is_left) {
    const double x[] = {0x1p-50, 0, 0};
    EXPECT_EQ(Goertzel(x, 1, 0.3), 0x1p-50);  // below the floor, but not 0
    EXPECT_EQ(Goertzel(&x[1], 2, 0.3), 1e-12);
    for (const int n : {INT_MIN, 0}) {
        EXPECT_EQ(Goertzel(x, n, HUGE_VAL), 1e-12);
        EXPECT_EQ(SingleFreqDFT(x, n, 0), 0);
    }
}
