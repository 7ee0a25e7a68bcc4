// The fast transform, its plain steps and its sizes.
#include <gtest/gtest.h>
#include <mensura/spectral.h>

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <numbers>
#include <thread>

#include "signals.h"
#include "support/expect.h"
#include "support/reference/spectral.h"

using namespace signals;

constexpr int kLargest = 1048576;

TEST(FFT, has_the_bits_of_its_plain_steps_in_two_threads_at_once) {
    for (std::size_t n = 8; n <= kLargest; n *= 2)
        for (std::size_t kinds = 0; kinds <= (n <= 4096 ? kAwkwardKinds : 0); ++kinds)
            for (const int dir : {0, 1}) {
                SCOPED_TRACE(testing::Message() << n << " points, direction " << dir << ", awkward kinds " << kinds);
                const Signal x = kinds == 0 ? noise(n) : awkward(n, kinds), plain = run(reference::fft, x, 1, dir);
                std::jthread other([&] { EXPECT_SAME_BITS(run(FFT, x, 3, dir), plain) << n << ", " << kinds; });
                EXPECT_SAME_BITS(run(FFT, x, 1, dir), plain);
            }
}

// Tolerance: each stage rounds by an ulp of the rms of its values, at most sqrt(2 n / 3).
TEST(FFT, is_the_sum_of_its_definition) {
    for (std::size_t n = 8; n <= kLargest; n *= 2) {
        const auto w = reference::unit_circle(n);
        const auto size = static_cast<double>(n), tolerance = std::log2(size) * std::sqrt(size / 1.5) * DBL_EPSILON;
        const Signal x = noise(n), forward = run(FFT, x, 1, 0), inverse = run(FFT, x, 1, 1);
        for (std::size_t k = n > 512 ? n / 3 : 0; k < n; k += n * n / 262144 | 1) {  // up to 512 points all bins
            EXPECT_CLOSE(forward[k] * size, reference::dft_sum(w, x, n - k), tolerance) << k << " of " << n;
            EXPECT_CLOSE(inverse[k], reference::dft_sum(w, x, k), tolerance) << k << " of " << n;
        }
    }
}

TEST(FillTwiddleArray, has_exact_values_at_eighths_of_the_circle) {
    for (int n = 8; n <= kLargest; n *= 2)
        for (const int dir : {0, 1, -3}) {
            std::vector<double> re(static_cast<std::size_t>(n) / 2), im = re;
            FillTwiddleArray(re.data(), im.data(), n, dir);
            const double sign = dir == 0 ? -1 : 1, half = std::sqrt(0.5);
            EXPECT_SAME_BITS(im.data()[n / 8], sign * half) << n << " points, direction " << dir;
            EXPECT_SAME_BITS(re.data()[3 * n / 8], -half) << n << " points, direction " << dir;
            EXPECT_SAME_BITS(re.data()[n / 4], 0.0) << n << " points, direction " << dir;
            EXPECT_DOUBLE_EQ(im[1], sign * std::sin(2 * std::numbers::pi / n)) << n << " points, direction " << dir;
        }
}

TEST(FFT, takes_powers_of_two_from_8_to_1048576) {
    for (int p = 0; p <= 30; ++p) {
        const int n = 1 << p, valid = std::clamp(n, 8, kLargest);
        EXPECT_EQ(IsValidFFTSize(n), n == valid ? p : 0);
        EXPECT_EQ(IsValidFFTSize(n + 1), 0) << n;
        EXPECT_EQ(IsValidFFTSize(-n), 0) << n;
        EXPECT_EQ(RequiredFFTSize(n), valid);
        EXPECT_EQ(RequiredFFTSize(n / 2 + 1), valid) << n;
        EXPECT_EQ(RequiredFFTSize(-n), 8) << n;
    }
}

TEST(Spectral, sizes_and_arguments_that_are_not_valid_change_nothing) {
    const auto call_all = [](double *x, double *y, int) {
        for (const int dir : {INT_MIN, -1, 2, INT_MAX}) {
            FFT(x, y, 8, dir);
            FFT(x, y, 16, dir);
            DFT(x, y, 16, dir);
        }
        for (const int n : {INT_MIN, -8, 0, 1, 2, 4, 12, 2 * kLargest, INT_MAX}) FFT(x, y, n, 0);
        for (const int n : {INT_MIN, 0}) {
            DFT(x, y, n, 0);
            RealSigDFT(y, x, x, n);
            WindowData(x, n, wkSine, 0, 1, 1);
        }
        for (const int kind : {INT_MIN, -1, 0, 1, 15, INT_MAX}) WindowData(x, 16, kind, 0.1, 2, 1);
    };
    EXPECT_SAME_BITS(run(call_all, noise(16), 1), noise(16));
}
