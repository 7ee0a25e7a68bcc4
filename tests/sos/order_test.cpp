// The least order that meets a requirement: judged point by point here, and against SciPy.

#include <gtest/gtest.h>
#include <mensura/mensura.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "iir/proto/limits.h"

namespace {

using Requirement = mensura_sos_requirement;

Requirement require(int type, double pass0, double pass1, double stop0, double stop1, double loss, double attenuation) {
    return {sizeof(Requirement), type, 1, 0, 2, {pass0, pass1}, {stop0, stop1}, loss, attenuation};
}

const Requirement kLowPass = require(ptLowPass, .2, 0, .3, 0, 1, 40);
const Requirement kHighPass = require(ptHighPass, .3, 0, .2, 0, .1, 50);
const Requirement kBandPass = require(ptBandPass, .2, .4, .15, .5, .5, 60);
const Requirement kNotch = require(ptNotch, .15, .5, .2, .4, .5, 60);
const Requirement kLow = require(ptLowPass, 1e-4, 0, 1.5e-4, 0, .5, 60);

int order(const Requirement &r, int family, mensura_sos_request *request = nullptr) {
    return mensura_sos_order(&r, family, 0.5, request, sizeof *request);
}

// The closed band between two edges, or what is left of it on both sides.
bool is_inside(const double *edge, double f) { return f >= edge[0] && f <= edge[1]; }
bool is_outside(const double *edge, double f) { return f <= edge[0] || f >= edge[1]; }

bool is_passed(const Requirement &r, double f) {
    if (r.pass_type == ptLowPass) return f <= r.pass_edge[0];
    if (r.pass_type == ptHighPass) return f >= r.pass_edge[0];
    return r.pass_type == ptBandPass ? is_inside(r.pass_edge, f) : is_outside(r.pass_edge, f);
}

bool is_stopped(const Requirement &r, double f) {
    if (r.pass_type == ptLowPass) return f >= r.stop_edge[0];
    if (r.pass_type == ptHighPass) return f <= r.stop_edge[0];
    return r.pass_type == ptNotch ? is_inside(r.stop_edge, f) : is_outside(r.stop_edge, f);
}

bool meets(const Requirement &r, const mensura_sos_request &request) {
    std::vector<double> sos(std::size_t{6} * MENSURA_SOS_MAX_SECTIONS), frequency;
    const int sections = mensura_sos_design(&request, sos.data(), MENSURA_SOS_MAX_SECTIONS);
    for (const double edge : {r.pass_edge[0], r.pass_edge[1], r.stop_edge[0], r.stop_edge[1]})
        for (int i = 0; i <= 1000; ++i)
            frequency.insert(frequency.end(), {edge * i / 1000, edge + (1 - edge) * i / 1000});
    double peak = 0, lowest = 1e9, stopped = 0;
    for (const double f : frequency) {
        double re = NAN, im = NAN;
        if (mensura_sos_response(sos.data(), sections, r.rate, &f, &re, &im, 1) != 0) return false;
        const double gain = std::hypot(re, im);
        if (is_passed(r, f)) {
            peak = std::max(peak, gain);
            lowest = std::min(lowest, gain);
        }
        if (is_stopped(r, f)) stopped = std::max(stopped, gain);
    }
    constexpr double kRounding = 2e-6;  // dB
    return 20 * r.passes * std::log10(peak / lowest) <= r.loss_db + kRounding &&
           20 * r.passes * std::log10(peak / stopped) >= r.attenuation_db - kRounding;
}

}  // namespace

TEST(Order, IsTheLeastThatMeetsTheRequirement) {
    for (Requirement r : {kLowPass, kHighPass, kBandPass, kNotch, kLow})
        for (const int passes : {1, 2}) {
            r.passes = passes;
            int fewest = 100, best = -1;
            for (const auto &family : mensura::iir::kFamilies) {
                mensura_sos_request request{};
                const int poles = order(r, family.code, &request);
                if (poles == MENSURA_SOS_UNREACHABLE) {
                    EXPECT_EQ(request.size, 0);
                    continue;
                }
                EXPECT_EQ(request.poles, poles);
                EXPECT_EQ(request.family, family.code);
                EXPECT_TRUE(meets(r, request)) << family.name << ", type " << r.pass_type;
                --request.poles;
                EXPECT_FALSE(meets(r, request)) << family.name << ", type " << r.pass_type;
                if (poles < fewest) best = family.code;
                fewest = std::min(fewest, poles);
            }
            mensura_sos_request request{};
            EXPECT_EQ(order(r, -1, &request), fewest);
            EXPECT_EQ(request.family, best);
        }
}

// SciPy 1.10.1: buttord(.2, .3, 1, 40)[0], cheb2ord(.3, .2, .1, 50)[0], cheb1ord([.2, .4], [.15, .5], .5, 60)[0],
// ellipord([.15, .5], [.2, .4], .5, 60)[0], buttord(1e-4, 1.5e-4, .5, 60)[0]
TEST(Order, AgreesWithSciPy) {
    EXPECT_EQ(order(kLowPass, pfButterworth), 12);
    EXPECT_EQ(order(kHighPass, pfInverseChebyshev), 9);
    EXPECT_EQ(order(kBandPass, pfChebyshev), 8);
    EXPECT_EQ(order(kNotch, pfElliptic), 5);
    EXPECT_EQ(order(kLow, pfButterworth), 20);
}

TEST(Order, RefusesWhatCannotBeMet) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    const auto expect = [](int code, const auto &change) {
        Requirement r = kBandPass;
        change(r);
        mensura_sos_request request{};
        EXPECT_EQ(order(r, -1, &request), code);
        EXPECT_EQ(request.size, 0);
    };
    expect(MENSURA_SOS_SIZE, [](Requirement &r) { --r.size; });
    expect(MENSURA_SOS_SIZE, [](Requirement &r) { r.reserved = 1; });
    expect(MENSURA_SOS_TYPE, [](Requirement &r) { r.pass_type = ptAllPass; });
    expect(MENSURA_SOS_PASSES, [](Requirement &r) { r.passes = 3; });
    for (const double bad : {0.0, kNaN}) {
        expect(MENSURA_SOS_RATE, [=](Requirement &r) { r.rate = bad; });
        expect(MENSURA_SOS_FREQUENCY, [=](Requirement &r) { r.pass_edge[1] = bad; });
        expect(MENSURA_SOS_FREQUENCY, [=](Requirement &r) { r.stop_edge[0] = bad; });
        expect(MENSURA_SOS_LEVEL, [=](Requirement &r) { r.loss_db = bad; });
    }
    for (const int type : {ptLowPass, ptNotch}) expect(MENSURA_SOS_EDGES, [=](Requirement &r) { r.pass_type = type; });
    expect(MENSURA_SOS_EDGES, [](Requirement &r) { r.stop_edge[1] = r.pass_edge[1]; });
    for (const double db : {0.5, 200.1, kNaN})
        expect(MENSURA_SOS_LEVEL, [=](Requirement &r) { r.attenuation_db = db; });
    expect(MENSURA_SOS_UNREACHABLE, [](Requirement &r) { r.stop_edge[0] = 0.2 - 1e-6; });

    mensura_sos_request request{};
    EXPECT_EQ(mensura_sos_order(nullptr, -1, 0, &request, sizeof request), MENSURA_SOS_NULL);
    EXPECT_EQ(mensura_sos_order(&kNotch, -1, 0, &request, 4), MENSURA_SOS_SIZE);
    EXPECT_EQ(mensura_sos_order(&kNotch, 8, 0, &request, sizeof request), MENSURA_SOS_FAMILY);
    for (const double gamma : {1.5, kNaN})
        EXPECT_EQ(mensura_sos_order(&kNotch, pfAdjustable, gamma, &request, sizeof request), MENSURA_SOS_GAMMA);
    EXPECT_EQ(request.size, 0);
}
