// The least order that meets a requirement, by what its neighbours do, and against SciPy.

#include <gtest/gtest.h>
#include <mensura/mensura.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

#include "iir/proto/limits.h"

using Requirement = mensura_sos_requirement;

namespace {

using Bands = std::vector<std::pair<double, double>>;

struct Case {
    Requirement requirement;
    Bands pass, stop;
    int family, order;  // SciPy's
};

// SciPy 1.10.1: buttord(.2, .3, 1, 40)[0], cheb2ord(.3, .2, .1, 50)[0], cheb1ord([.2, .4], [.15, .5], .5, 60)[0],
// ellipord([.15, .5], [.2, .4], .5, 60)[0], buttord(1e-4, 1.5e-4, .5, 60)[0]
constexpr int kSize = sizeof(Requirement);
const Case kCases[] = {
    {{kSize, ptLowPass, 1, 0, 2, {.2, 0}, {.3, 0}, 1, 40}, {{0, .2}}, {{.3, 1}}, pfButterworth, 12},
    {{kSize, ptHighPass, 1, 0, 2, {.3, 0}, {.2, 0}, .1, 50}, {{.3, 1}}, {{0, .2}}, pfInverseChebyshev, 9},
    {{kSize, ptBandPass, 1, 0, 2, {.2, .4}, {.15, .5}, .5, 60}, {{.2, .4}}, {{0, .15}, {.5, 1}}, pfChebyshev, 8},
    {{kSize, ptNotch, 1, 0, 2, {.15, .5}, {.2, .4}, .5, 60}, {{0, .15}, {.5, 1}}, {{.2, .4}}, pfElliptic, 5},
    {{kSize, ptLowPass, 1, 0, 2, {1e-4, 0}, {1.5e-4, 0}, .5, 60}, {{0, 1e-4}}, {{1.5e-4, 1}}, pfButterworth, 20},
};

int order(const Requirement &r, int family, mensura_sos_request *request) {
    return mensura_sos_order(&r, family, 0.5, request, sizeof *request);
}

// In dB, of a design at 1000 points of each band.
std::pair<double, double> extremes(const mensura_sos_request &request, const Bands &bands) {
    std::vector<double> sos(std::size_t{6} * MENSURA_SOS_MAX_SECTIONS);
    const int sections = mensura_sos_design(&request, sos.data(), MENSURA_SOS_MAX_SECTIONS);
    double lowest = HUGE_VAL, highest = -HUGE_VAL, re = NAN, im = NAN;
    for (const auto &[from, to] : bands)
        for (int i = 0; i <= 1000; ++i) {
            const double f = i == 1000 ? to : from + (to - from) * i / 1000;
            EXPECT_EQ(mensura_sos_response(sos.data(), sections, 2, &f, &re, &im, 1), 0);
            lowest = std::min(lowest, 20 * std::log10(std::hypot(re, im)));
            highest = std::max(highest, 20 * std::log10(std::hypot(re, im)));
        }
    return {lowest, highest};
}

bool meets(const Case &c, const mensura_sos_request &request) {
    constexpr double kRounding = 2e-6;  // dB
    const auto [lowest, highest] = extremes(request, c.pass);
    return request.passes * (highest - lowest) <= c.requirement.loss_db + kRounding &&
           request.passes * (highest - extremes(request, c.stop).second) >= c.requirement.attenuation_db - kRounding;
}

}  // namespace

TEST(Order, IsTheLeastThatMeetsTheRequirement) {
    for (Case c : kCases)
        for (const int passes : {1, 2}) {
            c.requirement.passes = passes;
            std::pair fewest = {100, -1};  // poles, family
            mensura_sos_request request{};
            for (const auto &family : mensura::iir::kFamilies) {
                const int poles = order(c.requirement, family.code, &request);
                if (family.code == c.family && passes == 1) {
                    EXPECT_EQ(poles, c.order);
                }
                if (poles == MENSURA_SOS_UNREACHABLE) continue;
                EXPECT_EQ(poles, request.poles);
                EXPECT_TRUE(meets(c, request)) << family.name << ", type " << request.pass_type;
                fewest = std::min(fewest, {poles, family.code});
                --request.poles;
                EXPECT_FALSE(meets(c, request)) << family.name << ", type " << request.pass_type;
            }
            EXPECT_EQ(order(c.requirement, -1, &request), fewest.first);
            EXPECT_EQ(request.family, fewest.second);
        }
}

TEST(Order, RefusesWhatCannotBeMetAndWritesNothing) {
    const auto expect = [](int code, const auto &values, const auto &set) {
        for (const auto value : values) {
            Requirement r = kCases[2].requirement;
            set(r, value);
            mensura_sos_request request{};
            EXPECT_EQ(order(r, -1, &request), code) << value;
            EXPECT_EQ(request.size, 0);
        }
    };
    const std::array bad = {0.0, std::nan("")};
    expect(MENSURA_SOS_SIZE, std::array{0, 8}, [](Requirement &r, int x) { r.size = x; });
    expect(MENSURA_SOS_SIZE, std::array{1}, [](Requirement &r, int x) { r.reserved = x; });
    expect(MENSURA_SOS_TYPE, std::array{-1, 4}, [](Requirement &r, int x) { r.pass_type = x; });
    expect(MENSURA_SOS_PASSES, std::array{0, 3}, [](Requirement &r, int x) { r.passes = x; });
    expect(MENSURA_SOS_RATE, bad, [](Requirement &r, double x) { r.rate = x; });
    expect(MENSURA_SOS_FREQUENCY, bad, [](Requirement &r, double x) { r.pass_edge[1] = x; });
    expect(MENSURA_SOS_FREQUENCY, bad, [](Requirement &r, double x) { r.stop_edge[0] = x; });
    expect(MENSURA_SOS_EDGES, std::array{.4, .1}, [](Requirement &r, double x) { r.stop_edge[1] = x; });
    expect(MENSURA_SOS_EDGES, std::array{ptLowPass, ptNotch}, [](Requirement &r, int x) { r.pass_type = x; });
    expect(MENSURA_SOS_LEVEL, bad, [](Requirement &r, double x) { r.loss_db = x; });
    expect(MENSURA_SOS_LEVEL, std::array{.5, 200.1}, [](Requirement &r, double x) { r.attenuation_db = x; });
    expect(MENSURA_SOS_UNREACHABLE, std::array{.2 - 1e-6}, [](Requirement &r, double x) { r.stop_edge[0] = x; });

    mensura_sos_request request{};
    const Requirement &notch = kCases[3].requirement;
    EXPECT_EQ(mensura_sos_order(nullptr, -1, 0, &request, sizeof request), MENSURA_SOS_NULL);
    EXPECT_EQ(mensura_sos_order(&notch, -1, 0, &request, 4), MENSURA_SOS_SIZE);
    EXPECT_EQ(mensura_sos_order(&notch, 8, 0, &request, sizeof request), MENSURA_SOS_FAMILY);
    EXPECT_EQ(mensura_sos_order(&notch, pfAdjustable, std::nan(""), &request, sizeof request), MENSURA_SOS_GAMMA);
}
