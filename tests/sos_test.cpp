// Cascades measured, against closed forms and against the library's own response.

#include <gtest/gtest.h>
#include <mensura/iir.h>

#include <array>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <vector>

#include "iir/pass_types.h"
#include "iir/proto/limits.h"
#include "sos/measure.h"
#include "support/expect.h"

using namespace mensura::sos;
using std::numbers::pi;

constexpr double kRate = 1000, kCutoff = 150;  // Hz

// With a gain of 3 dB; the band types are 50 Hz wide.
static IIRCoeffs design(int pass_type, int family, int poles) {
    return CalcIIRFilterCoeff({pass_type, 2 * kCutoff / kRate, 0.1, 3, {family, poles, 0.5, 60, 0.5}});
}

static double sine_of_half(double frequency) { return std::sin(pi * frequency / kRate); }

// 1 / (1 - r z^-1)^2 with a pole so near to 1 that the coefficients are exact and their sum has eleven bits left.
constexpr double kOneMinusR = 0x1p-20, kR = 1 - kOneMinusR;
constexpr Section kSlow[] = {{1, 0, 0, 1, -2 * kR, kR *kR}};

// A resonance; its magnitude is largest, 1 / ((1 - r^2) sin(theta)), where cos(omega) = cos(theta) (1 + r^2) / (2 r).
static Section resonance(double r, double theta) { return {1, 0, 0, 1, -2 * r * std::cos(theta), r * r}; }

TEST(Sos, ResponseIsThatOfIIRFreqResponse) {
    constexpr int kPoints = 200;
    std::array<double, kPoints> re, im;
    for (const auto &type : mensura::iir::kPassTypes)
        for (const auto &family : mensura::iir::kFamilies) {
            SCOPED_TRACE(std::string(type.name) + " " + family.name);
            const IIRCoeffs record = design(type.code, family.code, 5);
            const RecordSections sections(record);
            IIRFreqResponse(record, record.NumSections, re.data(), im.data(), kPoints);
            for (std::size_t i = 0; i < kPoints; ++i) {
                const std::complex<double> expected(re[i], im[i]);
                const double frequency = static_cast<double>(i) * (0.5 * kRate / kPoints);
                EXPECT_CLOSE(response(sections.cascade(), frequency, kRate), expected, 1e-11);
            }
        }
}

TEST(Sos, KeepsItsDigitsAtLowAndHighFrequencies) {
    const Section high[] = {{1, 0, 0, 1, 2 * kR, kR * kR}};  // the same with its poles at -r
    for (const double f : {0.0, 1e-7, 1e-5, 1e-3, 0.1}) {
        const double s = sine_of_half(f);
        const double expected = 1 / (kOneMinusR * kOneMinusR + 4 * kR * s * s);  // 1 / |1 - r z^-1|^2
        EXPECT_NEAR(magnitude(kSlow, f, kRate) / expected, 1, 1e-14) << f;
        EXPECT_NEAR(magnitude(high, 0.5 * kRate - f, kRate) / expected, 1, 1e-10) << f;  // f itself is rounded
        const double delay = 2 * kR * (kOneMinusR - 2 * s * s) * expected;  // 2 r (cos(omega) - r) / |1 - r z^-1|^2
        EXPECT_NEAR(group_delay(kSlow, f, kRate) / delay, 1, 1e-13) << f;
    }
    for (const double a2 : {0.9999987654331, std::nextafter(0.9999987654331, 1)}) {
        const Section rounded[] = {{1, 2, 1, 1, -1.9999987654321, a2}};
        EXPECT_NEAR(magnitude(rounded, 0, kRate) * static_cast<double>(1.0L + rounded[0].a1 + a2), 4, 1e-14);
        EXPECT_EQ(magnitude(rounded, 0.5 * kRate, kRate), 0);
    }
}

TEST(Sos, DelaysOfDelaysAndOfZerosOnTheCircle) {
    const double nudged = 1 + 4 * std::numeric_limits<double>::epsilon();  // as roots found numerically are
    for (const double f : {0.0, 1e-9, 125.0, 250.0, 499.999999, 500.0}) {
        // (1 +- z^-1) (1 - z^-1 / 2), whose second factor delays by (1 - 2 cos(omega)) / (5 - 4 cos(omega))
        const double cosine = std::cos(2 * pi * f / kRate), second = (1 - 2 * cosine) / (5 - 4 * cosine);
        const std::pair<Section, double> cases[] = {{{0, 0, 1, 1, 0, 0}, 2},
                                                    {{1, -1, 0, 1, 0, 0}, 0.5},
                                                    {{1, 2, nudged, 1, 0, 0}, 1},
                                                    {{1, 0, 1, 1, 0, 0}, 1},        // zeros at 250 Hz
                                                    {{1, 0, -nudged, 1, 0, 0}, 1},  // at 0 and 500 Hz
                                                    {{1, -1.5, 0.5, 1, 0, 0}, 0.5 + second},
                                                    {{1, 0.5, -0.5, 1, 0, 0}, 0.5 + second}};
        for (const auto &[s, delay] : cases)
            EXPECT_NEAR(group_delay({&s, 1}, f, kRate), delay, 1e-14) << f << ' ' << s.b1 << ' ' << s.b2;
    }
    constexpr Section kSilent[] = {{0, 0, 0, 1, 0, 0}};
    EXPECT_TRUE(std::isnan(group_delay(kSilent, 100, kRate)));
}

TEST(Sos, GroupDelayIsTheSlopeOfThePhase) {
    constexpr double kStep = 1e-4;  // Hz
    for (const auto &family : mensura::iir::kFamilies) {
        const RecordSections sections(design(ptLowPass, family.code, 5));
        for (const double f : {20.0, 120.0, 150.0, 170.0}) {
            const auto before = response(sections.cascade(), f - kStep, kRate);
            const auto after = response(sections.cascade(), f + kStep, kRate);
            const double slope = -std::arg(after / before) / (2 * kStep) * kRate / (2 * pi);
            EXPECT_NEAR(group_delay(sections.cascade(), f, kRate), slope, 1e-6) << family.name << ' ' << f;
        }
    }
}

TEST(Sos, PoleRadius) {
    const double half = 0.9876543210987, product = half * half - 1e-14;  // 2e-7 apart
    const double root = std::sqrt(static_cast<double>(static_cast<long double>(half) * half - product));
    const std::array<double, 4> cases[] = {{-1.2, 0.81, 0.9, 1e-15},
                                           {-2 * half, product, half + root, 1e-12},
                                           {0, 0, 0.5, 0},
                                           {0, -4, 2, 0},
                                           {-2 * kR, kR * kR, kR, 0}};
    const auto radius_with = [](double a1, double a2) {
        const Section s[] = {{1, 0, 0, 1, 0.5, 0}, {1, 0, 0, 1, a1, a2}};
        return pole_radius(s);
    };
    for (const auto &[a1, a2, radius, tolerance] : cases) EXPECT_NEAR(radius_with(a1, a2), radius, tolerance) << a1;
    EXPECT_TRUE(std::isnan(radius_with(NAN, 0)));
}

TEST(Sos, CrossingsAreAtTheThresholdAndEndTheBandAroundAFrequency) {
    constexpr struct {
        int pass_type;
        double inside, from, to, tolerance;
    } kCases[] = {{ptLowPass, 100, 0, kCutoff, 1e-9},
                  {ptHighPass, 300, kCutoff, 500, 1e-9},
                  {ptBandPass, kCutoff, 125, 175, 25},
                  {ptNotch, kCutoff, 125, 175, 25},
                  {ptAllPass, kCutoff, 0, 500, 0}};
    const double threshold = kHalfPower * std::pow(10.0, 3.0 / 20);  // of a gain of 3 dB
    for (const auto &[pass_type, inside, from, to, tolerance] : kCases) {
        SCOPED_TRACE(pass_type);
        const RecordSections sections(design(pass_type, pfButterworth, 3));
        const std::vector<double> grid = frequency_grid(sections.cascade(), kRate);
        for (const double f : crossings(sections.cascade(), kRate, threshold, grid))
            EXPECT_NEAR(magnitude(sections.cascade(), f, kRate), threshold, 1e-12) << f;
        const Band band = band_around(sections.cascade(), kRate, threshold, inside, grid);
        EXPECT_NEAR(band.from, from, tolerance);
        EXPECT_NEAR(band.to, to, tolerance);
        const double last = band.to < 500 ? band.to : band.from > 0 ? band.from : NAN;
        EXPECT_SAME_BITS(nearest_crossing(sections.cascade(), kRate, threshold, 500, grid), last);
    }
}

TEST(Sos, BandAroundEachOfTwoPeaks) {
    const Section peaks[] = {resonance(0.99, 0.5), resonance(0.99, 2)};
    const std::vector<double> grid = frequency_grid(peaks, kRate);
    const std::vector<double> found = crossings(peaks, kRate, 20, grid);
    ASSERT_EQ(found.size(), 4U);
    for (const std::size_t peak : {0U, 1U}) {
        const Band band = band_around(peaks, kRate, 20, (peak == 0 ? 0.5 : 2) * kRate / (2 * pi), grid);
        EXPECT_EQ(band.from, found[2 * peak]);
        EXPECT_EQ(band.to, found[2 * peak + 1]);
    }
}

TEST(Sos, GridIsFineNearPolesAndEvenElsewhere) {
    const double width = 1e-6, centre = 1;
    const Section peak[] = {resonance(1 - width, centre)};
    const std::vector<double> grid = frequency_grid(peak, 2 * pi);
    EXPECT_EQ(grid.front(), 0);
    EXPECT_EQ(grid.back(), pi);
    for (std::size_t i = 1; i < grid.size(); ++i) {
        const double gap = grid[i] - grid[i - 1];
        const double distance = std::min(std::abs(grid[i] - centre), std::abs(grid[i - 1] - centre));
        ASSERT_LE(gap, std::min(0.011 * width + 0.051 * distance, 1.001 * pi / 4000)) << grid[i];
    }
}

TEST(Sos, ExtremesOfANarrowPeakAndOfANotch) {
    for (const double r : {0.9, 0.999, 1 - 1e-6}) {
        const double theta = 1;
        const Section peak[] = {resonance(r, theta)};
        const double expected = 1 / ((1 - r * r) * std::sin(theta));
        const Extremes found = extremes(peak, kRate, 0, 0.5 * kRate, frequency_grid(peak, kRate));
        EXPECT_NEAR(found.highest / expected, 1, 1e-9) << r;
        EXPECT_EQ(found.lowest, magnitude(peak, 0.5 * kRate, kRate)) << r;
        EXPECT_EQ(extremes(peak, kRate, 0, 100, frequency_grid(peak, kRate)).highest, magnitude(peak, 100, kRate)) << r;
    }
    const Section notch[] = {{1, -2 * std::cos(1), 1, 1, -1.998 * std::cos(1), 0.998001}};
    const std::vector<double> grid = frequency_grid(notch, kRate);
    EXPECT_LT(extremes(notch, kRate, 0, 0.5 * kRate, grid).lowest, 1e-12);
    EXPECT_NEAR(extremes(notch, kRate, 300, 400, grid).highest, magnitude(notch, 400, kRate), 1e-3);
}
