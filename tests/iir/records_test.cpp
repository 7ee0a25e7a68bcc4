// Whole records: the block filter, the zero-phase filters, and the response that they have.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "designs.h"
#include "support/expect.h"
#include "support/noise.h"
#include "support/reference/iir.h"

using namespace designs;

// FilterWithIIR for n of the samples, and SectCalc for those after them.
static void expect_block_filter(const IIRCoeffs &c, const std::vector<double> &x, int n) {
    std::vector out = x, expected = x;
    const bool in_place = (n + c.NumSections) % 2 != 0;
    FilterWithIIR(in_place ? out.data() : x.data(), out.data(), n > 0 ? n : -1, c);
    reference::BlockFilter filter(c);
    std::size_t i = 0;
    for (; i < static_cast<std::size_t>(n); ++i) expected[i] = filter.run(x[i]);
    ASSERT_SAME_BITS(out, expected);
    for (; i < x.size(); ++i) {
        double u = x[i];
        for (int k = 0; k < reference::sections_to_run(c); ++k) {
            const double same_u = SectCalc(u, 0, k % 2 == 0 ? -1 : 50, c);  // no such section: gives back its input
            const double y = filter.run_section(k, u);
            ASSERT_SAME_BITS(SectCalc(same_u, static_cast<int>(i), k, c), y) << "sample " << i << ", section " << k;
            u = y;
        }
    }
}

static void expect_zero_phase(const IIRCoeffs &c, const std::vector<double> &x, int n, support::Noise &noise) {
    TIIRFilter looped{{}, c, {}, {}, {}, {}, n % 3};
    std::ranges::generate(registers(looped), std::ref(noise));
    TIIRFilter f = looped;
    std::vector in = x, out = x, y = x;
    const bool in_place = (n + c.NumSections) % 2 != 0;
    double *const result =
        IIRFilterZeroPhase(&f, in.data(), in_place ? nullptr : out.data(), n > 0 ? n : std::min(-c.NumSections, 0));
    EXPECT_EQ(result, in_place ? in.data() : out.data());
    reference::filter_zero_phase(looped, {y.data(), static_cast<std::size_t>(n)});
    ASSERT_SAME_BITS(in, in_place ? y : x);
    ASSERT_SAME_BITS(out, in_place ? x : y);
    ASSERT_SAME_BITS(registers(f), registers(looped));
    EXPECT_EQ(f.Primed, looped.Primed);
}

// Sections that fill their groups of four or eight lanes and do not, with a scale and without; fewer samples than the
// lanes lag behind, and the border of a block.  Spikes: an ordinary record; a last section that is unstable; one with too
// large a feed-forward sum alone; inputs at the guard's threshold, just beyond it, infinite and NaN.
TEST(IirRecords, have_the_bits_of_loops_over_samples) {
    constexpr double kOrdinary = 0, kUnstable = 1, kLargeSum = 1e12;
    support::Noise noise(5);
    for (const double spike :
         {kOrdinary, kUnstable, kLargeSum, 1e20, std::nextafter(1e20, HUGE_VAL), HUGE_VAL, std::nan("")})
        for (const int sections : {-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 50, 60})
            for (const int n : {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,   10,  11,  12,  13,  14,  15,
                                16, 17, 18, 20, 21, 22, 23, 31, 33, 511, 512, 513, 514, 515, 1100}) {
                SCOPED_TRACE(testing::Message() << sections << " sections, " << n << " samples, spike of " << spike);
                IIRCoeffs c{};
                for (auto *values : {&c.a1, &c.a2, &c.b1, &c.b2})
                    std::ranges::generate(*values, [&] { return noise() / 2; });
                for (int k = 0; k < MAX_IIR_SECTIONS; ++k) {
                    c.a0[k] = n % 3 == 0 ? 1 : 1 + k / 64.0;
                    c.b0[k] = 1 / c.a0[k];
                }
                c.NumSections = sections;
                const int last = reference::sections_to_run(c) - 1, places[] = {0, n / 2, 511, 512, n - 1};
                if (spike == kUnstable) c.a2[last] += 16;
                if (spike == kLargeSum) {
                    c.a0[last] = 1 / spike;
                    c.b0[last] = spike;
                }
                std::vector<double> x = noise(static_cast<std::size_t>(n) + 20);
                x.data()[std::clamp(noise.pick(places), 0, n)] = spike;
                expect_block_filter(c, x, n);
                if (spike == kOrdinary) expect_zero_phase(c, x, n, noise);
                if (HasFailure()) return;
            }
}

// Tolerance: an ulp of a coefficient or angle counts as often as a polynomial's sum fits into its terms, up to 27 times.
TEST(IIRFreqResponse, is_the_product_of_the_sections) {
    constexpr int kSections = 3;
    double re[101], im[101];
    for (const int pass : kPassTypes)
        for (const auto &family : kFamilies)
            for (const int points : {1, 3, 4, 5, 7, 100}) {
                SCOPED_TRACE(testing::Message() << "pass type " << pass << ", " << family.name << ", " << points);
                const IIRCoeffs c = CalcIIRFilterCoeff({pass, 0.3, 0.2, 0, {family.code, 7, 0.1, 60, 0}});
                re[points] = im[points] = 7;
                IIRFreqResponse(c, kSections, re, im, points);
                IIRFreqResponse(c, kSections, nullptr, nullptr, -points);
                for (int i = 0; i < points; ++i) {
                    const auto h = reference::response(c, kSections, i * std::numbers::pi / points);
                    EXPECT_CLOSE(std::complex(re[i], im[i]), h, 1e-13) << "point " << i;
                }
                EXPECT_EQ(re[points], 7);
                EXPECT_EQ(im[points], 7);
            }
    IIRCoeffs c{};
    // The first denominator is 0 and counts as 1e-12, the others are 1.8e-12.
    for (int k = 0; k < MAX_IIR_SECTIONS; ++k) {
        c.a0[k] = 0x1p-38;
        c.b0[k] = 1;
        c.a1[k] = -2;
        c.a2[k] = k == 0 ? 1 : 1 + 0x1p-39;
    }
    IIRFreqResponse(c, 60, re, im, 1);
    EXPECT_DOUBLE_EQ(re[0], 1e12 * 0x1p11);
    IIRFreqResponse(c, -5, re, im, 1);  // no section
    EXPECT_EQ(re[0], 1);
    EXPECT_EQ(im[0], 0);
}

TEST(dataZeroPhaseFilter, prints_and_uses_the_cutoff_of_the_formula) {
    // The spectrum has lines at DC, bin 2 and, half as high, bin 4.
    constexpr struct {
        int n;
        double fs, ratio, fc;
        int last_bin;  // printed
    } kCases[] = {{200, 100, 0.6, -1, 2},     {200, 100, 1, 0, 1},    {200, 100, NAN, 0, 99},
                  {200, HUGE_VAL, 0.4, 0, 4}, {1, 100, 0.4, 0, -1},   {0, 100, 0.4, 0, -1},
                  {-5, 100, 0.4, 0, -3},      {200, 100, 0.4, 10, 0}, {200, 100, 0.4, NAN, 0}};
    for (const auto &[n, fs, ratio, fc, k] : kCases) {
        SCOPED_TRACE(testing::Message() << n << " samples, rate " << fs << ", ratio " << ratio << ", cut-off " << fc);
        double x[200], y[200];
        for (int t = 0; t < 200; ++t)
            x[t] = y[t] = 3 + std::cos(t * std::numbers::pi / 50) + std::cos(t * std::numbers::pi / 25) / 2;
        TIIRFilter f{};
        initTIIRFilter(&f, ptLowPass, std::min(fc <= 0 ? k * fs / (n - 1) * 15 : fc, fs / 2), fs);
        IIRFilterZeroPhase(&f, y, nullptr, n);
        testing::internal::CaptureStdout();
        dataZeroPhaseFilter(x, n, 1 / fs, ratio, fc);
        const auto line = testing::Message() << std::to_string(fs) << ',' << k << ',' << n << (n > 9 ? ",2\n" : ",0\n");
        EXPECT_EQ(testing::internal::GetCapturedStdout(), fc <= 0 ? line.GetString() : "");
        EXPECT_SAME_BITS(x, y);
    }
}
