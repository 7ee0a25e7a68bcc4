// Filters measured, against closed forms and point by point.

#include <gtest/gtest.h>
#include <mensura/mensura.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <set>
#include <string>
#include <vector>

#include "support/expect.h"
#include "support/noise.h"

using Sections = std::vector<std::array<double, 6>>;
using std::numbers::pi;

namespace {

constexpr double kRate = 1000;  // Hz

const double *rows(const Sections &s) { return s.front().data(); }
int count(const Sections &s) { return static_cast<int>(s.size()); }

std::complex<double> response(const Sections &s, double f) {
    double re = NAN, im = NAN;
    EXPECT_EQ(mensura_sos_response(rows(s), count(s), kRate, &f, &re, &im, 1), 0);
    return {re, im};
}

double level(const Sections &s, double f) { return 20 * std::log10(std::abs(response(s, f))); }

double group_delay(const Sections &s, double f) {
    double delay = NAN;
    EXPECT_EQ(mensura_sos_group_delay(rows(s), count(s), kRate, &f, &delay, 1), 0);
    return delay;
}

struct Range {
    double lowest, highest;
};

Range extremes(const Sections &s, double from = 0, double to = kRate / 2) {
    Range found{NAN, NAN};
    EXPECT_EQ(mensura_sos_extremes(rows(s), count(s), kRate, from, to, &found.lowest, &found.highest), 0);
    return found;
}

std::vector<double> crossings(const Sections &s, double level_db) {
    std::vector<double> found(100);
    const int n = mensura_sos_crossings(rows(s), count(s), kRate, level_db, found.data(), 100);
    found.resize(static_cast<std::size_t>(n));
    return found;
}

// 1 / (1 - r z^-1)^2 with a pole so near to 1 that the coefficients are exact and their sum has eleven bits left.
constexpr double kOneMinusR = 0x1p-20, kR = 1 - kOneMinusR;
const Sections kSlow = {{1, 0, 0, 1, -2 * kR, kR *kR}};

// A resonance; its magnitude is largest, 1 / ((1 - r^2) sin(theta)), where cos(omega) = cos(theta) (1 + r^2) / (2 r).
Sections resonance(double r, double theta) { return {{1, 0, 0, 1, -2 * r * std::cos(theta), r * r}}; }

// H, and the delay, that of Q = c0 + c1 z^-1 + c2 z^-2 being the real part of (c1 z^-1 + 2 c2 z^-2) / Q.
void expect_response_and_delay(const Sections &s, double f) {
    const auto w = std::polar(1.0L, -2 * std::numbers::pi_v<long double> * f / kRate), w2 = w * w;
    std::complex<long double> h = 1, delay = 0;
    for (const std::array<double, 6> &row : s) {
        std::array<long double, 6> c;
        std::ranges::copy(row, c.begin());
        const auto numerator = c[0] + c[1] * w + c[2] * w2, denominator = c[3] + c[4] * w + c[5] * w2;
        h *= numerator / denominator;
        delay += (c[1] * w + 2 * c[2] * w2) / numerator - (c[4] * w + 2 * c[5] * w2) / denominator;
    }
    EXPECT_CLOSE(response(s, f), std::complex<double>(h), 1e-9 * static_cast<double>(std::abs(h)) + 1e-15) << f;
    EXPECT_NEAR(group_delay(s, f), static_cast<double>(delay.real()), 1e-7 * (1 + std::fabs(group_delay(s, f)))) << f;
}

}  // namespace

TEST(Measure, KeepsItsDigitsAtLowAndHighFrequencies) {
    const Sections high = {{1, 0, 0, 1, 2 * kR, kR * kR}};  // the same with its poles at -r
    constexpr double a1 = -1.9999987654321, a2 = 0.99999878, g = 1.0000005;
    const Sections all_pass = {{g * a2, g * a1, g, 1, a1, a2}};  // the sum b0 + b1 is not exact
    for (const double f : {0.0, 1e-7, 1e-5, 1e-3, 0.1}) {
        expect_response_and_delay(all_pass, f);
        const double s = std::sin(pi * f / kRate);
        const double expected = 1 / (kOneMinusR * kOneMinusR + 4 * kR * s * s);  // 1 / |1 - r z^-1|^2
        EXPECT_NEAR(std::abs(response(kSlow, f)) / expected, 1, 1e-14) << f;
        EXPECT_NEAR(std::abs(response(high, 0.5 * kRate - f)) / expected, 1, 1e-10) << f;  // f itself is rounded
        const double delay = 2 * kR * (kOneMinusR - 2 * s * s) * expected;  // 2 r (cos(omega) - r) / |1 - r z^-1|^2
        EXPECT_NEAR(group_delay(kSlow, f) / delay, 1, 1e-13) << f;
    }
}

TEST(Measure, DelaysOfDelaysAndOfZerosOnTheCircle) {
    const double nudged = 1 + 4 * std::numeric_limits<double>::epsilon();  // as roots found numerically are
    for (const double f : {0.0, 1e-9, 125.0, 250.0, 499.999999, 500.0}) {
        // (1 +- z^-1) (1 - z^-1 / 2), whose second factor delays by (1 - 2 cos(omega)) / (5 - 4 cos(omega))
        const double cosine = std::cos(2 * pi * f / kRate), second = (1 - 2 * cosine) / (5 - 4 * cosine);
        const std::array<double, 4> cases[] = {{0, 0, 1, 2},
                                               {1, -1, 0, 0.5},
                                               {1, 2, nudged, 1},
                                               {1, 0, 1, 1},        // zeros at 250 Hz
                                               {1, 0, -nudged, 1},  // at 0 and 500 Hz
                                               {1, -1.5, 0.5, 0.5 + second},
                                               {1, 0.5, -0.5, 0.5 + second}};
        for (const auto &[b0, b1, b2, delay] : cases)
            EXPECT_NEAR(group_delay({{b0, b1, b2, 1, 0, 0}}, f), delay, 1e-14) << f << ' ' << b1 << ' ' << b2;
    }
    EXPECT_TRUE(std::isnan(group_delay({{0, 0, 0, 1, 0, 0}}, 100)));
}

TEST(Measure, PoleRadius) {
    const double half = 0.9876543210987, product = half * half - 1e-14;  // 2e-7 apart
    const double root = std::sqrt(static_cast<double>(static_cast<long double>(half) * half - product));
    const std::array<double, 4> cases[] = {{-1.2, 0.81, 0.9, 1e-15},
                                           {-2 * half, product, half + root, 1e-12},
                                           {0, 0, 0.5, 0},
                                           {0, -4, 2, 0},
                                           {-2 * kR, kR * kR, kR, 0},
                                           {0, HUGE_VAL, NAN, 0}};
    for (const auto &[a1, a2, expected, tolerance] : cases) {
        const Sections s = {{1, 0, 0, 1, 0.5, 0}, {1, 0, 0, 1, a1, a2}};
        double radius = -1;
        EXPECT_EQ(mensura_sos_pole_radius(rows(s), 2, &radius), 0);
        EXPECT_TRUE(std::abs(radius - expected) <= tolerance || std::isnan(expected + radius)) << a1 << ' ' << radius;
    }
}

TEST(Measure, ExtremesOfANarrowPeakAndOfNotches) {
    for (const double r : {0.9, 0.999, 1 - 1e-6}) {
        const double theta = 1;
        const Sections peak = resonance(r, theta);
        EXPECT_NEAR(extremes(peak).highest, -20 * std::log10((1 - r * r) * std::sin(theta)), 1e-8) << r;
        EXPECT_NEAR(extremes(peak).lowest, level(peak, 500), 1e-12) << r;
        EXPECT_NEAR(extremes(peak, 0, 100).highest, level(peak, 100), 1e-12) << r;
    }
    const Sections notch = {{1, -2 * std::cos(1), 1, 1, -1.998 * std::cos(1), 0.998001}};
    EXPECT_LT(extremes(notch).lowest, -250);
    EXPECT_NEAR(extremes(notch, 300, 400).highest, level(notch, 400), 1e-2);
    // Between two zeros at 0.001 +- 1e-6 the gain is largest midway: (1e-6)^2 2 sin(0.001), near enough.
    Sections lobe;
    for (const double at : {0.001 - 1e-6, 0.001 + 1e-6}) lobe.push_back({1, -2 * std::cos(at), 1, 1, 0, 0});
    const double first = (0.001 - 1e-6) * kRate / (2 * pi), last = (0.001 + 1e-6) * kRate / (2 * pi);
    EXPECT_NEAR(extremes(lobe, first, last).highest, 20 * std::log10(1e-12 * 4e-6), 1e-2);
}

// Cascades with poles and zeros anywhere near the circle, seen at evenly spaced points and near each of the roots.
TEST(Measure, ExtremesAndCrossingsMissNothing) {
    support::Noise noise(20);
    for (int trial = 0; trial < 60; ++trial) {
        Sections s;
        std::vector<double> points;
        for (int k = noise.below(trial < 50 ? 4 : 30); k >= 0; --k) {
            const double middle = pi * std::abs(noise()), spread = std::pow(10, -3 * std::abs(noise()));
            const auto root = [&](double least) {  // c1 and c2
                const double theta = std::clamp(middle + spread * noise(), 0.0, pi);
                const double r = 1 - std::max(least, std::pow(10, -5 * std::abs(noise())));
                for (int i = -40; i <= 40; ++i)
                    points.push_back(std::clamp((theta + 0.1 * i * (1 - r)) / (2 * pi) * kRate, 0.0, 0.5 * kRate));
                return std::array{-2 * r * std::cos(theta), r * r};
            };
            const auto [b1, b2] = root(0);
            const auto [a1, a2] = root(1e-5);
            s.push_back({1, b1, b2, 1, a1, a2});
        }
        for (int i = 0; i <= 2000; ++i) points.push_back(0.5 * kRate * i / 2000);
        std::ranges::sort(points);
        const double from = points[static_cast<std::size_t>(noise.below(1000))];
        const double to = points[points.size() - 1 - static_cast<std::size_t>(noise.below(1000))];
        const Range whole = extremes(s), part = extremes(s, from, to);
        EXPECT_TRUE(whole.lowest <= part.lowest + 1e-7 && part.highest <= whole.highest + 1e-9) << trial;
        const double middle = 0.5 * (std::max(whole.lowest, -200.0) + whole.highest);
        const std::vector<double> found = crossings(s, middle);
        for (const double f : found) EXPECT_NEAR(level(s, f), middle, 1e-6) << trial;
        EXPECT_TRUE(std::ranges::is_sorted(found));
        std::size_t changes = 0;
        for (std::size_t i = 0; i < points.size(); ++i) {
            const double here = level(s, points[i]);
            EXPECT_TRUE(here >= whole.lowest - 1e-7 && here <= whole.highest + 1e-9) << trial << ' ' << points[i];
            const bool inside = points[i] >= from && points[i] <= to;
            EXPECT_TRUE(!inside || (here >= part.lowest - 1e-7 && here <= part.highest + 1e-9)) << trial;
            if (i % 10 == 0) expect_response_and_delay(s, points[i]);
            changes += i > 0 && (here >= middle) != (level(s, points[i - 1]) >= middle);
        }
        EXPECT_GE(found.size(), changes) << trial;
        EXPECT_EQ(found.size() % 2, changes % 2) << trial;
    }
}

TEST(Measure, CrossingsAreCountedAndThoseThatFitAreWritten) {
    Sections peaks = resonance(0.99, 0.5);
    peaks.push_back(resonance(0.99, 2).front());
    const std::vector<double> found = crossings(peaks, 26);
    ASSERT_EQ(found.size(), 4U);
    EXPECT_TRUE(found[0] < 0.5 * kRate / (2 * pi) && found[1] > 0.5 * kRate / (2 * pi));
    std::array<double, 4> few = {-1, -1, -1, -1};
    EXPECT_EQ(mensura_sos_crossings(rows(peaks), 2, kRate, 26, few.data(), 2), 4);
    EXPECT_SAME_BITS(few, (std::array{found[0], found[1], -1.0, -1.0}));
    EXPECT_EQ(mensura_sos_crossings(rows(peaks), 2, kRate, 26, nullptr, 0), 4);
    // A level that the lower peak just reaches, and one that it just misses.
    const double top = extremes(peaks, 200, 500).highest;
    EXPECT_EQ(crossings(peaks, top - 1e-9).size(), 4U);
    EXPECT_EQ(crossings(peaks, top + 1e-9).size(), 2U);
    EXPECT_TRUE(crossings({{0.5, -1.2, 1, 1, -1.2, 0.5}}, 1).empty());  // an all-pass
}

TEST(Measure, BadArgumentsAreRefused) {
    double out[3] = {7, 7, 7};
    const double f[] = {1, 500, 501}, tilted[] = {1, 0, 0, 2, 0, 0}, one[] = {1, 0, 0, 1, 0, 0};
    const auto delay = mensura_sos_group_delay;
    EXPECT_EQ(delay(nullptr, 1, kRate, f, out, 1), MENSURA_SOS_NULL);
    EXPECT_EQ(delay(one, 1, kRate, nullptr, out, 1), MENSURA_SOS_NULL);
    EXPECT_EQ(delay(one, 1, kRate, nullptr, nullptr, 0), 0);
    EXPECT_EQ(delay(one, 0, kRate, f, out, 1), MENSURA_SOS_COUNT);
    EXPECT_EQ(delay(tilted, 1, kRate, f, out, 1), MENSURA_SOS_SECTION);
    EXPECT_EQ(delay(one, 1, HUGE_VAL, f, out, 1), MENSURA_SOS_RATE);
    EXPECT_EQ(delay(one, 1, kRate, f, out, 3), MENSURA_SOS_FREQUENCY);
    EXPECT_EQ(mensura_sos_crossings(one, 1, kRate, NAN, out, 3), MENSURA_SOS_LEVEL);
    EXPECT_EQ(mensura_sos_extremes(one, 1, kRate, NAN, 1, out, out), MENSURA_SOS_FREQUENCY);
    EXPECT_EQ(mensura_sos_extremes(one, 1, kRate, 2, 1, out, out), MENSURA_SOS_EDGES);
    EXPECT_SAME_BITS(out, (std::array{7.0, 7.0, 7.0}));
}

TEST(Measure, EachCodeHasASentence) {
    std::set<std::string> sentences;
    for (int code = 0; code >= MENSURA_SOS_UNSETTLED - 1; --code) sentences.insert(mensura_sos_message(code));
    EXPECT_EQ(std::ssize(sentences), 2 - MENSURA_SOS_UNSETTLED);
    EXPECT_STREQ(mensura_sos_message(INT_MAX), mensura_sos_message(0));
    EXPECT_STREQ(mensura_sos_message(INT_MIN), mensura_sos_message(MENSURA_SOS_UNSETTLED - 1));
    EXPECT_STREQ(mensura_sos_message(MENSURA_SOS_PASSES), "passes is neither 1 nor 2");  // the table is in order
    EXPECT_STREQ(mensura_sos_message(MENSURA_SOS_SECTION), "the fourth number of a section is not 1");
}
