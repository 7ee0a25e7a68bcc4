// Designs by the laws that they promise, and against SciPy.

#include <gtest/gtest.h>
#include <mensura/mensura.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <tuple>
#include <utility>
#include <vector>

#include "iir/pass_types.h"
#include "iir/proto/limits.h"
#include "support/expect.h"

using mensura::iir::is_band_type, mensura::iir::kFamilies;
using std::numbers::pi;
using Request = mensura_sos_request;
using Sections = std::vector<std::array<double, 6>>;

namespace {

constexpr double kRate = 1000, kNyquist = kRate / 2;  // Hz
constexpr double kRounding = 1e-6;                    // dB
constexpr std::array kLevelTypes = {ptLowPass, ptHighPass, ptBandPass, ptNotch};

Request request_for(int pass_type, int family, int poles, double first = 80, double second = 130) {
    Request r;
    EXPECT_EQ(mensura_sos_default_request(&r, sizeof r), 0);
    r.pass_type = pass_type;
    r.family = family;
    r.poles = poles;
    r.rate = kRate;
    r.edge[0] = first;
    r.edge[1] = second;
    return r;
}

Sections design(const Request &r) {
    Sections s(MENSURA_SOS_MAX_SECTIONS);
    const int count = mensura_sos_design(&r, s.front().data(), MENSURA_SOS_MAX_SECTIONS);
    EXPECT_EQ(count, is_band_type(r.pass_type) ? r.poles : (r.poles + 1) / 2);
    s.resize(static_cast<std::size_t>(std::max(count, 1)));
    double radius = 2;
    EXPECT_EQ(mensura_sos_pole_radius(s.front().data(), count, &radius), 0);
    EXPECT_LT(radius, 1);
    return s;
}

std::complex<double> response(const Sections &s, double f, double rate = kRate) {
    double re = NAN, im = NAN;
    EXPECT_EQ(mensura_sos_response(s.front().data(), static_cast<int>(s.size()), rate, &f, &re, &im, 1), 0);
    return {re, im};
}

double level(const Sections &s, double f, double rate = kRate) {
    return 20 * std::log10(std::abs(response(s, f, rate)));
}

std::pair<double, double> extremes(const Sections &s, double from, double to) {
    double lowest = NAN, highest = NAN;
    const int count = static_cast<int>(s.size());
    EXPECT_EQ(mensura_sos_extremes(s.front().data(), count, kRate, from, to, &lowest, &highest), 0);
    return {lowest, highest};
}

double prewarped(double f) { return std::tan(pi * f / kRate); }
double unwarped(double w) { return std::atan(w) / pi * kRate; }

// An edge, the pass band beside it, and where the gain is taken.
struct Edge {
    double at, from, to, reference;
};

std::vector<Edge> edges_of(const Request &r) {
    const auto [first, second] = r.edge;
    const double centre = unwarped(std::sqrt(prewarped(first) * prewarped(second)));
    if (r.pass_type == ptLowPass) return {{first, 0, first, 0}};
    if (r.pass_type == ptHighPass) return {{first, first, kNyquist, kNyquist}};
    if (r.pass_type == ptBandPass) return {{first, first, second, centre}, {second, first, second, centre}};
    return {{first, 0, first, 0}, {second, second, kNyquist, 0}};
}

}  // namespace

TEST(Design, HasTheLevelAtEveryEdgeAndTheGainAtItsReference) {
    for (const auto &family : kFamilies)
        for (const int type : kLevelTypes)
            for (const int poles : {1, 2, 3, 6, 9, 12})
                for (const auto &[level_db, passes] : {std::pair{-0.04, 1}, {-3.0103, 1}, {-20.0, 1}, {-3.0103, 2}}) {
                    Request r = request_for(type, family.code, poles);
                    r.level_db = level_db;
                    r.passes = passes;
                    r.gamma = 0.3;
                    r.gain_db = poles == 6 ? -20 : 0;
                    SCOPED_TRACE(testing::Message() << family.name << ' ' << type << ' ' << poles << ' ' << level_db);
                    const Sections s = design(r);
                    for (const Edge &edge : edges_of(r)) {
                        const double wanted = extremes(s, edge.from, edge.to).second + r.level_db / passes;
                        EXPECT_NEAR(level(s, edge.at), wanted, kRounding);
                        EXPECT_LT(level(s, edge.at + (edge.at == edge.from ? -0.5 : 0.5)), wanted);  // the outermost
                        EXPECT_NEAR(level(s, edge.reference), r.gain_db / passes, kRounding);
                    }
                }
}

// With the level of its ripple, the edge is the end of the ripple; with that of the stop band, its beginning.
TEST(Design, RipplesAreAsLargeAsRequested) {
    for (const int poles : {2, 5, 8, 15})
        for (const int passes : {1, 2})
            for (const int family : {pfChebyshev, pfInverseChebyshev, pfElliptic}) {
                Request r = request_for(ptNotch, family, poles);
                r.passes = passes;
                r.level_db = family == pfInverseChebyshev ? -r.stop_db : -r.ripple_db;
                const auto [lowest, highest] = extremes(design(r), 0, 80);
                EXPECT_NEAR(highest - lowest, -r.level_db / passes, kRounding);
                if (family == pfChebyshev) continue;
                r.level_db = -r.stop_db;
                const Sections s = design(r);
                EXPECT_NEAR(extremes(s, 0, 80).second - extremes(s, 80, 130).second, r.stop_db / passes, kRounding);
            }
}

TEST(Design, MonotoneFamiliesFallFromDcToNyquist) {
    for (const int family : {pfButterworth, pfGaussian, pfBessel, pfPapoulis})
        for (const int poles : {2, 7, 12}) {
            const Sections s = design(request_for(ptLowPass, family, poles));
            for (int f = 0; f < 500; ++f)
                EXPECT_LE(std::abs(response(s, f + 1)), std::abs(response(s, f)) + 1e-14) << family << ' ' << f;
        }
}

// Prewarped, two frequencies of equal gain have the centre as their geometric mean.
TEST(Design, BandTypesAreSymmetricAndAPairOfEdgesIsACentreWithAWidth) {
    for (const int type : {ptBandPass, ptNotch})
        for (const int family : {pfButterworth, pfElliptic, pfBessel}) {
            const double product = prewarped(80) * prewarped(130);
            const Sections s = design(request_for(type, family, 5));
            Request centre = request_for(type, family, 5, unwarped(std::sqrt(product)), 130 - 80);
            centre.band = MENSURA_SOS_CENTRE;
            const Sections same = design(centre);
            for (const double f : {3.0, 60.0, 81.0, 95.0}) {
                EXPECT_NEAR(std::abs(response(s, f)), std::abs(response(s, unwarped(product / prewarped(f)))), 1e-12);
                EXPECT_CLOSE(response(same, f), response(s, f), 1e-12);
            }
        }
}

TEST(Design, AllPassesReverseTheDenominatorsOfTheLowPass) {
    for (const int poles : {1, 6, 7}) {
        const Sections s = design(request_for(ptAllPass, pfChebyshev, poles));
        Sections expected = design(request_for(ptLowPass, pfChebyshev, poles));
        for (auto &[b0, b1, b2, a0, a1, a2] : expected)
            std::tie(b0, b1, b2) = a2 == 0 ? std::tuple(a1, 1.0, 0.0) : std::tuple(a2, a1, 1.0);
        EXPECT_EQ(s, expected);
    }
}

// SciPy 1.10.1: sosfreqz(FILTER, [np.pi * .25])[1] with FILTER = butter(5, .3, output='sos'),
// cheby1(4, 1, .2, 'high', output='sos'), cheby2(5, 50, [.2, .35], 'band', output='sos'),
// ellip(5, .5, 60, [.2, .35], 'bandstop', output='sos'), bessel(6, .4, norm='mag', output='sos').
// Where a ripple has its lowest point at the reference, SciPy's gain is lower by the ripple.
TEST(Design, AgreesWithSciPy) {
    const auto expect = [](Request r, double level_db, double gain_db, std::complex<double> scipy) {
        r.level_db = level_db;
        r.gain_db = gain_db;
        r.ripple_db = r.family == pfChebyshev ? 1 : 0.5;
        r.stop_db = r.family == pfElliptic ? 60 : 50;
        EXPECT_CLOSE(response(design(r), 0.25 * kNyquist), scipy, 1e-12);
    };
    const double half_power = 10 * std::log10(0.5);
    expect(request_for(ptLowPass, pfButterworth, 5, 150), half_power, 0, {-0.9297991187678919, -0.15337579509925023});
    expect(request_for(ptHighPass, pfChebyshev, 4, 100), -1, -1, {-0.8108887576508115, 0.41367272644725217});
    expect(request_for(ptBandPass, pfInverseChebyshev, 5, 100, 175), -50, 0, {0.2610254751490896, 0.9652318979833764});
    expect(request_for(ptNotch, pfElliptic, 5, 100, 175), -.5, 0, {0.00025196491547110585, -0.0008963587151220844});
    expect(request_for(ptLowPass, pfBessel, 6, 200), half_power, 0, {0.026483633854120274, -0.896044621690314});
}

TEST(Design, LowAndNarrowOnesAreExactAtTheirEdges) {
    for (const int family : {pfButterworth, pfElliptic})
        for (const int poles : {1, 2, 6, 11}) {
            const double expected = family == pfElliptic && poles % 2 == 0 ? 0.1 - 3.0103 : -3.0103;  // ripple above DC
            for (const double edge : {1e-3, 1e-4, 1e-5, 1e-6}) {
                const double tolerance = edge == 1e-6 ? 1e-5 : kRounding;
                const double f = edge * kNyquist;
                EXPECT_NEAR(level(design(request_for(ptLowPass, family, poles, f)), f), expected, tolerance);
                EXPECT_NEAR(level(design(request_for(ptHighPass, family, poles, f)), f), expected, tolerance);
            }
            const Sections narrow = design(request_for(ptBandPass, family, poles, 10, 10.01));
            for (const double f : {10.0, 10.01}) EXPECT_NEAR(level(narrow, f), expected, kRounding);
        }
    Request hum = request_for(ptNotch, pfButterworth, 1, 50, 1);
    hum.band = MENSURA_SOS_CENTRE;
    hum.rate = 192000;
    EXPECT_LT(level(design(hum), 50, hum.rate), -120);
}

// Behind each section the gain is at most twice that of the whole filter.
TEST(Design, PartialProductsHardlyPeak) {
    for (const auto &family : kFamilies)
        for (const auto &[first, second] : {std::pair{80.0, 80.1}, {80.0, 130.0}, {0.4, 400.0}})
            for (const int type : kLevelTypes) {
                Sections s = design(request_for(type, family.code, 12, first, second));
                const double most = extremes(s, 0, kNyquist).second + 6.1;  // dB
                for (; s.size() > 1; s.pop_back()) EXPECT_LT(extremes(s, 0, kNyquist).second, most) << family.name;
            }
}

TEST(Design, RefusesWhatItCannotDesignAndWritesNothing) {
    const auto expect = [](int code, const auto &values, const auto &set) {
        for (const auto value : values) {
            Request r = request_for(ptBandPass, pfElliptic, 6);
            set(r, value);
            Sections s(6);
            EXPECT_EQ(mensura_sos_design(&r, s.front().data(), 6), code) << value;
            EXPECT_EQ(s, Sections(6));
        }
    };
    constexpr std::array kNoCodes = {-1, 8};
    constexpr std::array kNoFrequencies = {0.0, -1.0, kNyquist, HUGE_VAL, std::numeric_limits<double>::quiet_NaN()};
    constexpr std::array kNoDecibels = {-200.1, 200.1, std::numeric_limits<double>::quiet_NaN()};
    expect(MENSURA_SOS_SIZE, kNoCodes, [](Request &r, int x) { r.size = x; });
    expect(MENSURA_SOS_TYPE, kNoCodes, [](Request &r, int x) { r.pass_type = x; });
    expect(MENSURA_SOS_FAMILY, kNoCodes, [](Request &r, int x) { r.family = x; });
    expect(MENSURA_SOS_POLES, std::array{0, 16}, [](Request &r, int x) { r.poles = x; });
    expect(MENSURA_SOS_PASSES, kNoCodes, [](Request &r, int x) { r.passes = x; });
    expect(MENSURA_SOS_EDGES, kNoCodes, [](Request &r, int x) { r.band = x; });
    expect(MENSURA_SOS_RATE, std::array{0.0, HUGE_VAL, std::nan("")}, [](Request &r, double x) { r.rate = x; });
    expect(MENSURA_SOS_FREQUENCY, kNoFrequencies, [](Request &r, double x) { r.edge[0] = x; });
    expect(MENSURA_SOS_FREQUENCY, kNoFrequencies, [](Request &r, double x) { r.edge[1] = x; });
    expect(MENSURA_SOS_EDGES, std::array{80.0, 10.0}, [](Request &r, double x) { r.edge[1] = x; });
    expect(MENSURA_SOS_LEVEL, kNoDecibels, [](Request &r, double x) { r.level_db = x; });
    expect(MENSURA_SOS_LEVEL, std::array{0.0, -60.01}, [](Request &r, double x) { r.level_db = x; });
    expect(MENSURA_SOS_RIPPLE, std::array{0.00009, 10.01, std::nan("")}, [](Request &r, double x) { r.ripple_db = x; });
    expect(MENSURA_SOS_STOP_BAND, kNoDecibels, [](Request &r, double x) { r.stop_db = x; });
    expect(MENSURA_SOS_STOP_BAND, std::array{10.0}, [](Request &r, double x) { r.ripple_db = r.stop_db = x; });
    expect(MENSURA_SOS_GAMMA, kNoDecibels, [](Request &r, double x) {
        r.family = pfAdjustable;
        r.gamma = x;
    });
    expect(MENSURA_SOS_GAIN, kNoDecibels, [](Request &r, double x) { r.gain_db = x; });
    expect(MENSURA_SOS_CAPACITY, std::array{7}, [](Request &r, int x) { r.poles = x; });
    expect(MENSURA_SOS_PRECISION, std::array{80 + 1e-11}, [](Request &r, double x) { r.edge[1] = x; });

    Request r = request_for(ptLowPass, pfButterworth, 6);
    EXPECT_EQ(mensura_sos_design(&r, nullptr, 20), MENSURA_SOS_NULL);
    EXPECT_EQ(mensura_sos_design(nullptr, Sections(6).front().data(), 6), MENSURA_SOS_NULL);
    EXPECT_EQ(mensura_sos_default_request(nullptr, sizeof r), MENSURA_SOS_NULL);
    EXPECT_EQ(mensura_sos_default_request(&r, 8), MENSURA_SOS_SIZE);
}
