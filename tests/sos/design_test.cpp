// Designs by the laws that they promise, and against SciPy.

#include <gtest/gtest.h>
#include <mensura/mensura.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

#include "iir/pass_types.h"
#include "iir/proto/limits.h"
#include "support/expect.h"

using mensura::iir::is_band_type;
using std::numbers::pi;

namespace {

constexpr double kRate = 1000, kNyquist = kRate / 2;  // Hz
constexpr double kRounding = 1e-6;                    // dB: what sections of doubles may be off at an edge

using Sections = std::vector<std::array<double, 6>>;

mensura_sos_request request_for(int pass_type, int family, int poles, double first = 80, double second = 130) {
    mensura_sos_request r;
    EXPECT_EQ(mensura_sos_default_request(&r, sizeof r), 0);
    r.pass_type = pass_type;
    r.family = family;
    r.poles = poles;
    r.rate = kRate;
    r.edge[0] = first;
    r.edge[1] = second;
    return r;
}

Sections design(const mensura_sos_request &r) {
    Sections s(MENSURA_SOS_MAX_SECTIONS);
    const int count = mensura_sos_design(&r, s.front().data(), MENSURA_SOS_MAX_SECTIONS);
    EXPECT_EQ(count, is_band_type(r.pass_type) ? r.poles : (r.poles + 1) / 2);
    s.resize(static_cast<std::size_t>(std::max(count, 1)));
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

struct Extremes {
    double lowest, highest;
};

Extremes extremes(const Sections &s, double from, double to) {
    Extremes e{NAN, NAN};
    const int count = static_cast<int>(s.size());
    EXPECT_EQ(mensura_sos_extremes(s.front().data(), count, kRate, from, to, &e.lowest, &e.highest), 0);
    return e;
}

double pole_radius(const Sections &s) {
    double radius = NAN;
    EXPECT_EQ(mensura_sos_pole_radius(s.front().data(), static_cast<int>(s.size()), &radius), 0);
    return radius;
}

// The pass band that begins or ends at each edge, and where the gain is asked for.
struct Edge {
    double at, from, to, reference;
};

std::vector<Edge> edges_of(const mensura_sos_request &r) {
    const double first = r.edge[0], second = r.edge[1];
    const double centre =
        std::atan(std::sqrt(std::tan(pi * first / kRate) * std::tan(pi * second / kRate))) / pi * kRate;
    if (r.pass_type == ptLowPass) return {{first, 0, first, 0}};
    if (r.pass_type == ptHighPass) return {{first, first, kNyquist, kNyquist}};
    if (r.pass_type == ptBandPass) return {{first, first, second, centre}, {second, first, second, centre}};
    return {{first, 0, first, 0}, {second, second, kNyquist, 0}};
}

void expect_levels(const mensura_sos_request &r) {
    const Sections s = design(r);
    EXPECT_LT(pole_radius(s), 1);
    for (const Edge &edge : edges_of(r)) {
        const Extremes pass = extremes(s, edge.from, edge.to);
        const double wanted = pass.highest + r.level_db / r.passes;
        EXPECT_NEAR(level(s, edge.at), wanted, kRounding) << "at " << edge.at << " Hz";
        const double outwards = edge.at == edge.from ? -0.5 : 0.5;  // Hz; the edge is the outermost of its kind
        EXPECT_LT(level(s, edge.at + outwards), wanted);
        EXPECT_NEAR(level(s, edge.reference), r.gain_db / r.passes, kRounding);
    }
}

}  // namespace

TEST(Design, HasTheLevelAtEveryEdgeAndTheGainAtItsReference) {
    for (const auto &family : mensura::iir::kFamilies)
        for (const int type : {ptLowPass, ptHighPass, ptBandPass, ptNotch})
            for (const int poles : {1, 2, 3, 6, 9, 12})
                for (const double level_db : {-0.04, -3.0103, -20.0})
                    for (const int passes : {1, 2}) {
                        mensura_sos_request r = request_for(type, family.code, poles);
                        r.level_db = level_db;
                        r.passes = passes;
                        r.gain_db = poles == 6 ? -20 : 0;
                        r.gamma = 0.3;
                        SCOPED_TRACE(std::string(family.name) + ", type " + std::to_string(type) + ", " +
                                     std::to_string(poles) + " poles, " + std::to_string(level_db) + " dB, passes " +
                                     std::to_string(passes));
                        expect_levels(r);
                    }
}

// The edge is the end of the ripple with the level of its ripple, and the beginning of the stop band with its level.
TEST(Design, RipplesAreAsLargeAsRequested) {
    for (const int poles : {2, 5, 8, 15}) {
        for (const int family : {pfChebyshev, pfElliptic}) {
            mensura_sos_request r = request_for(ptLowPass, family, poles);
            r.level_db = -r.ripple_db;
            const Extremes pass = extremes(design(r), 0, 80);
            EXPECT_NEAR(pass.highest - pass.lowest, r.ripple_db, kRounding);
        }
        for (const int family : {pfInverseChebyshev, pfElliptic}) {
            mensura_sos_request r = request_for(ptNotch, family, poles);
            r.level_db = -r.stop_db;
            const Sections s = design(r);
            EXPECT_NEAR(extremes(s, 0, 80).highest - extremes(s, 80, 130).highest, r.stop_db, kRounding);
        }
    }
}

TEST(Design, MonotoneFamiliesFallFromDcToNyquist) {
    for (const int family : {pfButterworth, pfGaussian, pfBessel, pfPapoulis})
        for (const int poles : {2, 7, 12}) {
            const Sections s = design(request_for(ptLowPass, family, poles));
            double before = 1 + 1e-14;
            for (int f = 0; f <= 500; ++f) {
                const double gain = std::abs(response(s, f));
                EXPECT_LE(gain, before) << family << ' ' << poles << ' ' << f;
                before = gain + 1e-14;
            }
        }
}

// tan(pi f / rate) of two frequencies of equal gain have one product; a centre with a width is a pair of edges.
TEST(Design, BandTypesAreSymmetricInPrewarpedFrequency) {
    for (const int type : {ptBandPass, ptNotch})
        for (const int family : {pfButterworth, pfElliptic, pfBessel}) {
            const mensura_sos_request two = request_for(type, family, 5);
            const Sections s = design(two);
            const double product = std::tan(pi * 80 / kRate) * std::tan(pi * 130 / kRate);
            for (const double f : {3.0, 60.0, 81.0, 95.0}) {
                const double mirrored = std::atan(product / std::tan(pi * f / kRate)) / pi * kRate;
                EXPECT_NEAR(std::abs(response(s, f)), std::abs(response(s, mirrored)), 1e-12);
            }
            mensura_sos_request centre =
                request_for(type, family, 5, edges_of(request_for(ptBandPass, 0, 1))[0].reference, 50);
            centre.band = MENSURA_SOS_CENTRE;
            const Sections same = design(centre);
            for (const double f : {3.0, 80.0, 111.0, 130.0, 400.0})
                EXPECT_CLOSE(response(same, f), response(s, f), 1e-12);
        }
}

TEST(Design, AllPassesReverseTheirDenominators) {
    for (const int poles : {1, 6, 7}) {
        mensura_sos_request r = request_for(ptAllPass, pfChebyshev, poles);
        const Sections s = design(r);
        r.pass_type = ptLowPass;
        const Sections low_pass = design(r);
        for (std::size_t k = 0; k < s.size(); ++k) {
            const double a1 = low_pass[k][4], a2 = low_pass[k][5];
            const bool first_order = a2 == 0;
            const std::array<double, 6> expected = {
                first_order ? a1 : a2, first_order ? 1 : a1, first_order ? 0.0 : 1, 1, a1, a2};
            EXPECT_EQ(s[k], expected);
        }
        for (const double f : {0.0, 33.0, 80.0, 500.0}) EXPECT_NEAR(std::abs(response(s, f)), 1, 1e-14);
    }
}

// SciPy 1.10.1: [complex(x) for x in sosfreqz(FILTER, np.pi * np.array([.1, .25, .6]))[1]] with FILTER =
//     butter(5, .3, output='sos')                    cheby1(4, 1, .2, 'high', output='sos')
//     cheby2(5, 50, [.2, .35], 'band', output='sos') ellip(5, .5, 60, [.2, .35], 'bandstop', output='sos')
//     bessel(6, .4, norm='mag', output='sos')
// Where a ripple has its lowest point at the reference, SciPy's gain is lower by the ripple.
TEST(Design, AgreesWithSciPy) {
    struct Row {
        int type, family, poles;
        double first, second, level, ripple, stop, gain;
        std::array<std::complex<double>, 3> h;
    };
    const double half = 10 * std::log10(0.5);
    const Row rows[] = {
        {ptLowPass,
         pfButterworth,
         5,
         0.3,
         0,
         half,
         0,
         0,
         0,
         {{{0.5242698532852466, -0.8515472376892799},
           {-0.9297991187678919, -0.15337579509925023},
           {0.006529954192517669, -0.0023860418765343496}}}},
        {ptHighPass,
         pfChebyshev,
         4,
         0.2,
         0,
         -1,
         1,
         0,
         -1,
         {{{0.015693024780264356, -0.00886279907669382},
           {-0.8108887576508115, 0.41367272644725217},
           {0.7405428617431761, 0.6096897466388244}}}},
        {ptBandPass,
         pfInverseChebyshev,
         5,
         0.2,
         0.35,
         -50,
         0,
         50,
         0,
         {{{0.00134845329917198, 0.0027553546549985907},
           {0.2610254751490896, 0.9652318979833764},
           {0.00115398766454575, -0.002685877621641954}}}},
        {ptNotch,
         pfElliptic,
         5,
         0.2,
         0.35,
         -0.5,
         0.5,
         60,
         0,
         {{{0.5631079150405952, -0.7656732595121364},
           {0.00025196491547110585, -0.0008963587151220844},
           {0.6376419249263222, 0.7119708024883453}}}},
        {ptLowPass,
         pfBessel,
         6,
         0.4,
         0,
         half,
         0,
         0,
         0,
         {{{0.8182677628993831, -0.5470860590853546},
           {0.026483633854120274, -0.896044621690314},
           {0.06932962161799795, 0.2260762223705927}}}},
    };
    for (const Row &row : rows) {
        mensura_sos_request r =
            request_for(row.type, row.family, row.poles, row.first * kNyquist, row.second * kNyquist);
        r.level_db = row.level;
        r.ripple_db = row.ripple;
        r.stop_db = row.stop;
        r.gain_db = row.gain;
        const Sections s = design(r);
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_CLOSE(response(s, std::array{0.1, 0.25, 0.6}[i] * kNyquist), row.h[i], 1e-12);
    }
}

TEST(Design, LowAndNarrowOnesAreStableAndExactAtTheirEdges) {
    for (const int family : {pfButterworth, pfElliptic})
        for (const int poles : {1, 2, 6, 11}) {
            for (const double edge : {1e-4, 1e-5, 1e-6}) {
                const Sections s = design(request_for(ptLowPass, family, poles, edge * kNyquist));
                EXPECT_LT(pole_radius(s), 1);
                const bool above_dc = family == pfElliptic && poles % 2 == 0;  // by the ripple
                EXPECT_NEAR(level(s, edge * kNyquist), above_dc ? 0.1 - 3.0103 : -3.0103, kRounding);
            }
            const Sections narrow = design(request_for(ptBandPass, family, poles, 10, 10.01));
            EXPECT_NEAR(level(narrow, 10), level(narrow, 10.01), 1e-5);
        }
    mensura_sos_request hum = request_for(ptNotch, pfButterworth, 1, 50, 1);
    hum.band = MENSURA_SOS_CENTRE;
    hum.rate = 192000;
    EXPECT_LT(level(design(hum), 50, hum.rate), -120);

    mensura_sos_request r = request_for(ptLowPass, pfButterworth, 6, 1e-8 * kNyquist);
    Sections untouched(3);
    EXPECT_EQ(mensura_sos_design(&r, untouched.front().data(), 3), MENSURA_SOS_PRECISION);
    EXPECT_EQ(untouched, Sections(3));
}

// Behind each section the gain is at most twice that of the whole filter.
TEST(Design, PartialProductsHardlyPeak) {
    for (const auto &family : mensura::iir::kFamilies)
        for (const auto &[first, second] : {std::pair{80.0, 80.1}, {80.0, 130.0}, {0.4, 400.0}})
            for (const int type : {ptLowPass, ptHighPass, ptBandPass, ptNotch}) {
                Sections s = design(request_for(type, family.code, 12, first, second));
                const double most = extremes(s, 0, kNyquist).highest + 6.1;
                for (; s.size() > 1; s.pop_back()) EXPECT_LT(extremes(s, 0, kNyquist).highest, most) << family.name;
            }
}

TEST(Design, RefusesWhatItCannotDesignAndWritesNothing) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN(), kInfinity = HUGE_VAL;
    using Request = mensura_sos_request;
    const auto expect = [](int code, const auto &change) {
        Request r = request_for(ptBandPass, pfElliptic, 6);
        change(r);
        Sections s(6);
        EXPECT_EQ(mensura_sos_design(&r, s.front().data(), 6), code);
        EXPECT_EQ(s, Sections(6));
    };
    for (const int size : {0, static_cast<int>(sizeof(Request)) + 8})
        expect(MENSURA_SOS_SIZE, [=](Request &r) { r.size = size; });
    for (const int bad : {-1, 8}) {
        expect(MENSURA_SOS_TYPE, [=](Request &r) { r.pass_type = bad; });
        expect(MENSURA_SOS_FAMILY, [=](Request &r) { r.family = bad; });
        expect(MENSURA_SOS_PASSES, [=](Request &r) { r.passes = bad; });
        expect(MENSURA_SOS_EDGES, [=](Request &r) { r.band = bad; });
    }
    for (const int poles : {0, 16}) expect(MENSURA_SOS_POLES, [=](Request &r) { r.poles = poles; });
    for (const double rate : {0.0, -1.0, kNaN, kInfinity}) expect(MENSURA_SOS_RATE, [=](Request &r) { r.rate = rate; });
    for (const double f : {0.0, -1.0, kNyquist, kInfinity, kNaN}) {
        expect(MENSURA_SOS_FREQUENCY, [=](Request &r) { r.edge[0] = f; });
        expect(MENSURA_SOS_FREQUENCY, [=](Request &r) { r.edge[1] = f; });
    }
    for (const double f : {80.0, 10.0}) expect(MENSURA_SOS_EDGES, [=](Request &r) { r.edge[1] = f; });
    for (const double db : {0.0, 1.0, -60.01, -200.0, kNaN})
        expect(MENSURA_SOS_LEVEL, [=](Request &r) { r.level_db = db; });
    for (const double db : {0.0, 0.00009, 10.01, kNaN})
        expect(MENSURA_SOS_RIPPLE, [=](Request &r) { r.ripple_db = db; });
    for (const double db : {9.99, 200.01, kNaN}) expect(MENSURA_SOS_STOP_BAND, [=](Request &r) { r.stop_db = db; });
    expect(MENSURA_SOS_STOP_BAND, [](Request &r) { r.ripple_db = r.stop_db = 10; });
    for (const double gamma : {-1.01, 1.01, kNaN})
        expect(MENSURA_SOS_GAMMA, [=](Request &r) {
            r.family = pfAdjustable;
            r.gamma = gamma;
        });
    for (const double db : {-200.1, 200.1, kNaN}) expect(MENSURA_SOS_GAIN, [=](Request &r) { r.gain_db = db; });
    expect(MENSURA_SOS_CAPACITY, [](Request &r) { r.poles = 7; });
    expect(MENSURA_SOS_PRECISION, [](Request &r) { r.edge[1] = 80 + 1e-11; });

    Request r = request_for(ptLowPass, pfButterworth, 6);
    EXPECT_EQ(mensura_sos_design(&r, nullptr, 20), MENSURA_SOS_NULL);
    EXPECT_EQ(mensura_sos_design(nullptr, Sections(6).front().data(), 6), MENSURA_SOS_NULL);
    EXPECT_EQ(mensura_sos_default_request(nullptr, sizeof r), MENSURA_SOS_NULL);
    EXPECT_EQ(mensura_sos_default_request(&r, 8), MENSURA_SOS_SIZE);
    EXPECT_EQ(r.poles, 6);
}
