#include <gtest/gtest.h>
#include <mensura/iir.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <numbers>
#include <random>
#include <vector>

namespace {

using Long = long double;

// The same bits, or both NaN.
bool same(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b)); }

std::mt19937 source(5);
double random_value() { return static_cast<double>(source()) * 0x1p-32 - 0.5; }

// FilterWithIIR for n samples, in place or not, and SectCalc for the 20 after them, against direct form I with
// registers of its own: after a sum beyond 1e20 the next section finds all of them at rest.
void expect_guarded_filter(const IIRCoeffs &c, const std::vector<double> &x, int n) {
    std::vector out = x;
    const bool in_place = (n + c.NumSections) % 2 != 0;
    FilterWithIIR(in_place ? out.data() : x.data(), out.data(), n > 0 ? n : -1, c);
    TIIRFilter r{};
    double s = 0, y = 0;
    for (int i = 0; i < n + 20; ++i) {
        double u = x.data()[i];
        for (int k = 0; k < std::clamp(c.NumSections, 1, 50); ++k) {
            if (std::fabs(s) > 1e20 || std::fabs(y) > 1e20) r = {};
            s = c.b0[k] * u + c.b1[k] * r.RegX1[k] + c.b2[k] * r.RegX2[k];
            y = c.a0[k] * s - c.a1[k] * r.RegY1[k] - c.a2[k] * r.RegY2[k];
            // The inner call has no such section: it gives back its input and changes nothing.
            EXPECT_TRUE(i < n || same(SectCalc(SectCalc(u, 0, k % 2 == 0 ? -1 : 50, c), i, k, c), y)) << i << ' ' << k;
            r.RegX2[k] = r.RegX1[k];
            r.RegX1[k] = u;
            r.RegY2[k] = r.RegY1[k];
            r.RegY1[k] = y;
            u = y;
        }
        EXPECT_TRUE(same(out.data()[i], i < n ? y : x.data()[i])) << i;
    }
}

void expect_zero_phase(const IIRCoeffs &c, const std::vector<double> &x, int n) {
    TIIRFilter looped{{}, c, {}, {}, {}, {}, n % 3};
    for (double *r : {looped.RegX1, looped.RegX2, looped.RegY1, looped.RegY2}) std::generate_n(r, 50, random_value);
    TIIRFilter f = looped;
    std::vector in = x, out = x, y = x;
    const bool in_place = (n + c.NumSections) % 2 != 0;
    double *const result =
        IIRFilterZeroPhase(&f, in.data(), in_place ? nullptr : out.data(), n > 0 ? n : std::min(-c.NumSections, 0));
    EXPECT_EQ(result, in_place ? in.data() : out.data());
    for (int i = 0; i < n; ++i) y.data()[i] = IIRFilter(&looped, y.data()[i]);
    looped.Primed = 0;
    for (int i = n; i-- > 0;) y.data()[i] = IIRFilter(&looped, y.data()[i]);
    EXPECT_EQ(in, in_place ? y : x);
    EXPECT_EQ(out, in_place ? x : y);
    EXPECT_EQ(std::memcmp(&f, &looped, sizeof f), 0);
}

// Sections that fill their groups of four lanes and do not; fewer samples than the lanes lag behind, and the border of
// a piece.  Spikes: an ordinary record; a last section that is unstable; one with too large a feed-forward sum alone;
// inputs at the guard's threshold, just beyond it, infinite and NaN.
TEST(IirRecords, have_the_bits_of_loops_over_samples) {
    for (const double spike : {0.0, 1.0, 1e12, 1e20, std::nextafter(1e20, HUGE_VAL), HUGE_VAL, std::nan("")})
        for (const int sections : {-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 50, 60})
            for (int n = 0; n <= 1100 && !HasFailure(); n = n == 40 ? 511 : n == 515 ? 1100 : n + 1) {
                SCOPED_TRACE(testing::Message() << sections << " sections, " << n << " samples, spike of " << spike);
                IIRCoeffs c{};
                for (double *v : {c.a1, c.a2, c.b1, c.b2}) std::generate_n(v, 50, random_value);
                for (int k = 0; k < 50; ++k) {
                    c.a0[k] = 1 + k / 64.0;
                    c.b0[k] = 1 / c.a0[k];
                }
                c.NumSections = sections;
                const int last = std::clamp(sections, 1, 50) - 1, places[] = {0, n / 2, 511, 512, n - 1};
                if (spike == 1) c.a2[last] += 16;
                if (spike == 1e12) {
                    c.a0[last] = 1e-12;
                    c.b0[last] = 1e12;
                }
                std::vector<double> x(static_cast<std::size_t>(n) + 20);
                std::ranges::generate(x, random_value);
                x.data()[std::clamp(places[source() % 5], 0, n)] = spike;
                expect_guarded_filter(c, x, n);
                if (spike == 0) expect_zero_phase(c, x, n);
            }
}

// An ulp of a coefficient or angle counts as often as a polynomial's sum fits into its terms, here up to 27 times: 16
// ulps of them in three sections and two passes come to 6e-13.
TEST(IIRFreqResponse, is_the_product_of_the_sections_and_squared_the_gain_of_zero_phase) {
    double re[101], im[101], x[2001];
    for (int design = 0; design < 40; ++design)
        for (const int points : {1, 3, 4, 5, 7, 100}) {
            TIIRFilter f{};
            IIRCoeffs &c = f.Coeffs = CalcIIRFilterCoeff({design % 5, 0.3, 0.2, 0, {design / 5, 7, 0.1, 60, 0}});
            c.NumSections = 3;
            re[points] = im[points] = 7;
            IIRFreqResponse(c, 3, re, im, points);
            IIRFreqResponse(c, 3, nullptr, nullptr, -points);
            EXPECT_TRUE(re[points] == 7 && im[points] == 7);
            EXPECT_TRUE(design % 5 != ptLowPass || std::fabs(re[0] - 1) < 1e-12);
            for (int i = 0; i < points && !HasFailure(); ++i) {
                const double w = i * std::numbers::pi / points;
                std::complex<Long> h = 1, z = std::polar(1.0L, -Long(w));
                const auto at = [&z](double p, double q, double r) { return Long(p) + z * (Long(q) + z * Long(r)); };
                for (int k = 0; k < 3; ++k) h *= at(c.b0[k], c.b1[k], c.b2[k]) / at(1, c.a1[k], c.a2[k]);
                EXPECT_LT(std::abs(h - std::complex<Long>(Long(re[i]), Long(im[i]))), 1e-12);
                for (int t = -1000; t <= 1000; ++t) x[1000 + t] = std::cos(w * t);
                f.Primed = 0;
                IIRFilterZeroPhase(&f, x, nullptr, 2001);
                for (int t = -100; t <= (design % 5 == ptLowPass && i == 0 ? 1000 : 100); ++t)
                    EXPECT_NEAR(x[1000 + t], (re[i] * re[i] + im[i] * im[i]) * std::cos(w * t), 1e-12);
            }
        }
    IIRCoeffs c{};
    // The first denominator is 0 and counts as 1e-12, the others are 1.8e-12.
    for (int k = 0; k < 50; ++k) {
        c.a0[k] = 0x1p-38;
        c.b0[k] = 1;
        c.a1[k] = -2;
        c.a2[k] = k == 0 ? 1 : 1 + 0x1p-39;
    }
    IIRFreqResponse(c, 60, re, im, 1);
    EXPECT_DOUBLE_EQ(re[0], 1e12 * 0x1p11);
    IIRFreqResponse(c, -5, re, im, 1);  // no section
    EXPECT_TRUE(re[0] == 1 && im[0] == 0);
}

TEST(dataZeroPhaseFilter, prints_and_uses_the_cutoff_of_the_formula) {
    const double inf = HUGE_VAL, nan = std::nan("");
    // n, fs, ratio, fc, and the last bin printed.  The spectrum has lines at DC, bin 2 and, half as high, bin 4.
    const double cases[][5] = {{200, 100, 0.6, -1, 2}, {200, 100, 1, 0, 1},    {200, 100, nan, 0, 99},
                               {200, inf, 0.4, 0, 4},  {1, 100, 0.4, 0, -1},   {0, 100, 0.4, 0, -1},
                               {-5, 100, 0.4, 0, -3},  {200, 100, 0.4, 10, 0}, {200, 100, 0.4, nan, 0}};
    for (const auto &[n, fs, ratio, fc, k] : cases) {
        double x[200], y[200];
        for (int t = 0; t < 200; ++t)
            x[t] = y[t] = 3 + std::cos(t * std::numbers::pi / 50) + std::cos(t * std::numbers::pi / 25) / 2;
        TIIRFilter f{};
        initTIIRFilter(&f, ptLowPass, std::min(fc <= 0 ? k * fs / (n - 1) * 15 : fc, fs / 2), fs);
        IIRFilterZeroPhase(&f, y, nullptr, static_cast<int>(n));
        testing::internal::CaptureStdout();
        dataZeroPhaseFilter(x, static_cast<int>(n), 1 / fs, ratio, fc);
        const auto line = testing::Message() << std::to_string(fs) << ',' << k << ',' << n << (n > 9 ? ",2\n" : ",0\n");
        EXPECT_EQ(testing::internal::GetCapturedStdout(), fc <= 0 ? line.GetString() : "");
        EXPECT_TRUE(std::ranges::equal(x, y, same)) << n;
    }
}

}  // namespace
