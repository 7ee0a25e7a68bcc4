// Filters run: sample by sample like IIRFilter, alone, side by side, both ways, and from rest.

#include <gtest/gtest.h>
#include <mensura/mensura.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "support/expect.h"
#include "support/noise.h"

namespace {

using support::Noise;
using Values = std::vector<double>;

constexpr double kMark = -77.7;  // no result
constexpr double kOdd[] = {NAN, HUGE_VAL, 1e308, 5e-324, -0.0};

Values random_sections(Noise &noise, int count) {
    Values sos;
    for (int k = 0; k < count; ++k) {
        const double b0 = noise(), b1 = noise(), b2 = noise(), a1 = noise(), a2 = 0.5 * noise() + 0.25;
        sos.insert(sos.end(), {b0, b1, b2, 1, a1, a2});
    }
    return sos;
}

int count_of(const Values &sos) { return static_cast<int>(sos.size() / 6); }

// Noise, now and then with what a broken sensor sends.
Values samples(Noise &noise, std::size_t n) {
    Values x = noise(n);
    if (noise.one_in(4) && n > 0) x[n / 2] = noise.pick(kOdd);
    return x;
}

// IIRFilter with the same sections and registers.
Values reference(const Values &sos, double *state, const Values &x) {
    TIIRFilter f{};
    f.Primed = 1;
    f.Coeffs.NumSections = count_of(sos);
    const auto each_register = [&](auto act) {
        for (std::size_t k = 0; k < sos.size() / 6; ++k) {
            double *registers[] = {f.RegX1 + k, f.RegX2 + k, f.RegY1 + k, f.RegY2 + k};
            for (std::size_t i = 0; i < 4; ++i) act(*registers[i], state[4 * k + i]);
        }
    };
    for (std::size_t k = 0; k < sos.size() / 6; ++k) {
        double *coefficients[] = {f.Coeffs.b0, f.Coeffs.b1, f.Coeffs.b2, f.Coeffs.a0, f.Coeffs.a1, f.Coeffs.a2};
        for (std::size_t i = 0; i < 6; ++i) coefficients[i][k] = sos[6 * k + i];
    }
    each_register([](double &filter, double &mine) { filter = mine; });
    Values y;
    for (const double u : x) y.push_back(IIRFilter(&f, u));
    each_register([](double &filter, double &mine) { mine = filter; });
    return y;
}

// Where n samples of several channels lie in an array, with room between them.
struct Layout {
    ptrdiff_t stride, distance, first, size;

    Layout(ptrdiff_t n, ptrdiff_t channels, bool planar, ptrdiff_t gap, bool backwards) {
        stride = planar ? gap : channels + gap - 1;
        distance = planar ? n * gap + gap - 1 : 1;
        size = (n - 1) * stride + (channels - 1) * distance + 1;
        first = backwards ? size - 1 : 0;
        if (backwards) {
            stride = -stride;
            distance = -distance;
        }
        size = std::max<ptrdiff_t>(size, 1);
    }
    std::size_t at(std::size_t channel, std::size_t i) const {
        return static_cast<std::size_t>(first + static_cast<ptrdiff_t>(channel) * distance +
                                        static_cast<ptrdiff_t>(i) * stride);
    }
};

// Runs random channels in random pieces, in any layout, in place or not, and compares every double of the output array
// and of the states.
void expect_bits_of_IIRFilter(int sections, int channels, ptrdiff_t n, Noise &noise, auto run) {
    SCOPED_TRACE(std::to_string(sections) + " sections, " + std::to_string(channels) + " channels, " +
                 std::to_string(n) + " samples");
    const Values sos = random_sections(noise, sections);
    const auto any_layout = [&] {
        return Layout(n, channels, noise.one_in(2), 1 + noise.below(3) / 2, n > 0 && noise.one_in(4));
    };
    const bool in_place = noise.one_in(2);
    const Layout from = any_layout(), to = in_place ? from : any_layout();
    Values x(static_cast<std::size_t>(from.size), kMark), y(static_cast<std::size_t>(to.size), kMark);
    Values state = noise.one_in(2) ? noise(static_cast<std::size_t>(4 * sections * channels))
                                   : Values(static_cast<std::size_t>(4 * sections * channels));
    Values expected = y, final_state = state;
    for (std::size_t c = 0; c < static_cast<std::size_t>(channels); ++c) {
        const Values in = samples(noise, static_cast<std::size_t>(n));
        const Values out = reference(sos, &final_state[c * static_cast<std::size_t>(4 * sections)], in);
        for (std::size_t i = 0; i < in.size(); ++i) {
            x[from.at(c, i)] = in[i];
            expected[to.at(c, i)] = out[i];
        }
    }
    double *const out = in_place ? x.data() : y.data();
    for (ptrdiff_t i = 0; i < n;) {
        const ptrdiff_t piece = std::min<ptrdiff_t>(n - i, 1 + noise.below(noise.one_in(3) ? 30 : 2000));
        ASSERT_EQ(run(sos, state.data(), x.data() + from.first + i * from.stride, from, out + to.first + i * to.stride,
                      to, piece),
                  0);
        i += piece;
    }
    ASSERT_SAME_BITS(in_place ? x : y, expected);
    ASSERT_SAME_BITS(state, final_state);
}

mensura_sos_request request(int pass_type, double edge) {
    mensura_sos_request r;
    mensura_sos_default_request(&r, sizeof r);
    r.pass_type = pass_type;
    r.rate = 1;
    r.edge[0] = edge;
    r.edge[1] = 1.5 * edge;
    return r;
}

Values design(int pass_type, double edge) {
    const mensura_sos_request r = request(pass_type, edge);
    Values sos(6 * MENSURA_SOS_MAX_SECTIONS);
    sos.resize(6 * static_cast<std::size_t>(mensura_sos_design(&r, sos.data(), MENSURA_SOS_MAX_SECTIONS)));
    return sos;
}

constexpr int kPassTypes[] = {ptLowPass, ptHighPass, ptBandPass, ptNotch, ptAllPass};

// A section of the second order and one of the first.
const Values kTwo = {0.2, 0.3, 0.1, 1, -0.5, 0.25, 1, -0.5, 0, 1, -0.75, 0};

Values both_ways(const Values &sos, int ends, ptrdiff_t extension, const Values &x) {
    Values y(x.size());
    const auto n = static_cast<ptrdiff_t>(x.size());
    EXPECT_EQ(mensura_sos_filtfilt(sos.data(), count_of(sos), ends, extension, x.data(), 1, y.data(), 1, n, nullptr),
              0);
    return y;
}

}  // namespace

TEST(SosRun, Filter_has_the_bits_of_IIRFilter) {
    const auto run = [](const Values &sos, double *state, const double *x, const Layout &from, double *y,
                        const Layout &to, ptrdiff_t n) {
        return mensura_sos_filter(sos.data(), count_of(sos), state, x, from.stride, y, to.stride, n);
    };
    Noise noise(1);
    for (int sections = 1; sections <= 9; ++sections) {
        for (ptrdiff_t n = 0; n <= 40; ++n) expect_bits_of_IIRFilter(sections, 1, n, noise, run);
        for (const ptrdiff_t n : {511, 512, 513, 1200}) expect_bits_of_IIRFilter(sections, 1, n, noise, run);
    }
}

TEST(SosRun, Channels_side_by_side_have_the_bits_of_IIRFilter) {
    Noise noise(2);
    for (int channels = 1; channels <= 9; ++channels)
        for (int sections = 1; sections <= 9; ++sections)
            for (const ptrdiff_t n : {0, 1, 2, 3, 9, 63, 64, 66, 600})
                expect_bits_of_IIRFilter(sections, channels, n, noise,
                                         [&](const Values &sos, double *state, const double *x, const Layout &from,
                                             double *y, const Layout &to, ptrdiff_t piece) {
                                             return mensura_sos_filter_channels(sos.data(), count_of(sos), state,
                                                                                channels, x, from.stride, from.distance,
                                                                                y, to.stride, to.distance, piece);
                                         });
}

TEST(SosRun, Steady_state_is_one_that_stays) {
    constexpr double kInput = 3;
    for (const int type : kPassTypes)
        for (const double edge : {1e-4, 0.2}) {
            const Values sos = design(type, edge);
            Values state(sos.size() / 6 * 4), y(1000, kInput);
            ASSERT_EQ(mensura_sos_steady_state(sos.data(), count_of(sos), kInput, state.data()), 0);
            const Values before = state;
            ASSERT_EQ(mensura_sos_filter(sos.data(), count_of(sos), state.data(), y.data(), 1, y.data(), 1, 1000), 0);
            const double expected = type == ptHighPass || type == ptBandPass ? 0 : kInput;
            // At 1e-4 of the rate a rounding, 2^-53, grows by the gain of 1 / (1 + a1 z^-1 + a2 z^-2), some 1e7.
            for (const double value : y) EXPECT_NEAR(value, expected, 1e-7) << type << ' ' << edge;
            for (std::size_t i = 0; i < state.size(); ++i)
                EXPECT_NEAR(state[i], before[i], 1e-7) << type << ' ' << edge;
        }
}

// The records that this program printed:
//   import numpy as np
//   from scipy.signal import sosfiltfilt
//   sos = [[0.2, 0.3, 0.1, 1, -0.5, 0.25], [1, -0.5, 0, 1, -0.75, 0]]
//   x = [(7 * i % 5 - 2) / 4 + i * i / 64 for i in range(16)]
//   for ends in [None, 'odd', 'even', 'constant']:
//       print(sosfiltfilt(sos, x, padtype=ends, padlen=0 if ends is None else None)[[0, 5, 15]].tolist())
TEST(SosRun, Both_ways_it_gives_SciPys_results) {
    constexpr std::size_t kAt[] = {0, 5, 15};
    constexpr double kExpected[4][3] = {{-0.32104301770570454, 1.3265659506755691, 6.288283649664372},
                                        {-1.2649199234717428, 1.1941354356514153, 7.68702601104638},
                                        {0.6371004747695008, 1.5189481505687583, 6.233720036974925},
                                        {-0.31390972435112113, 1.3565417931100874, 6.960373024010653}};
    Values x;
    for (int i = 0; i < 16; ++i) x.push_back((7 * i % 5 - 2) / 4.0 + i * i / 64.0);
    EXPECT_EQ(mensura_sos_extension(kTwo.data(), 2), 12);
    for (const int ends : {0, 1, 2, 3}) {
        const Values y = both_ways(kTwo, ends, -1, x);
        for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(y[kAt[i]], kExpected[ends][i], 1e-14) << ends << ' ' << i;
    }
}

TEST(SosRun, Both_ways_are_the_same_from_either_end) {
    Noise noise(3);
    Values x = noise(300), reversed(x.rbegin(), x.rend());
    for (const int ends : {MENSURA_SOS_ENDS_ODD, MENSURA_SOS_ENDS_EVEN, MENSURA_SOS_ENDS_CONSTANT}) {
        const Values y = both_ways(kTwo, ends, 150, x);
        Values z = both_ways(kTwo, ends, 150, reversed);
        std::ranges::reverse(z);
        for (std::size_t i = 0; i < y.size(); ++i) EXPECT_NEAR(y[i], z[i], 1e-13);  // 0.75^150 is 2e-19
    }
}

TEST(SosRun, Both_ways_anywhere_in_memory) {
    Noise noise(4);
    constexpr std::size_t kSamples = 60, kWork = 4 * 2 + 2 * 20;
    const Values x = noise(kSamples);
    for (const int ends : {0, 1, 2, 3})
        for (const ptrdiff_t stride : {1, 3, -1, -2}) {
            const ptrdiff_t first = stride < 0 ? -stride * static_cast<ptrdiff_t>(kSamples - 1) : 0;
            const auto at = [=](std::size_t i) {
                return static_cast<std::size_t>(first + static_cast<ptrdiff_t>(i) * stride);
            };
            Values spread(3 * kSamples, kMark), expected = spread, work(kWork + 1, kMark);
            const Values y = both_ways(kTwo, ends, 20, x);
            for (std::size_t i = 0; i < kSamples; ++i) {
                spread[at(i)] = x[i];
                expected[at(i)] = y[i];
            }
            double *const start = spread.data() + first;
            EXPECT_EQ(
                mensura_sos_filtfilt(kTwo.data(), 2, ends, 20, start, stride, start, stride, kSamples, work.data()), 0);
            EXPECT_SAME_BITS(spread, expected);
            EXPECT_EQ(work.back(), kMark);
        }
}

// Long enough to see that nothing happens any more, with every sample looked at.
TEST(SosRun, Figures_of_steps_are_those_of_the_whole_response) {
    constexpr double kTolerance = 0.02;
    for (const int type : kPassTypes)
        for (const double edge : {2e-4, 0.01, 0.2}) {
            const Values sos = design(type, edge);
            Values y(static_cast<std::size_t>(100 / edge)), ones(y.size(), 1), state(sos.size() / 6 * 4);
            const auto n = static_cast<ptrdiff_t>(y.size());
            ASSERT_EQ(mensura_sos_step_response(sos.data(), count_of(sos), y.data(), n), 0);
            mensura_sos_filter(sos.data(), count_of(sos), state.data(), ones.data(), 1, ones.data(), 1, n);
            EXPECT_SAME_BITS(y, ones);
            const bool ends_at_zero = type == ptHighPass || type == ptBandPass;
            const double end = ends_at_zero ? 0 : 1;
            const auto [lowest, highest] = std::ranges::minmax(y);
            const double over = ends_at_zero ? std::min(-lowest, highest) : highest - 1;
            std::size_t settled = y.size();
            while (settled > 0 && std::abs(y[settled - 1] - end) <= kTolerance) --settled;
            double overshoot = kMark;
            ptrdiff_t settling = -1;
            ASSERT_EQ(mensura_sos_step_figures(sos.data(), count_of(sos), kTolerance, 10000000, &overshoot, &settling),
                      0);
            EXPECT_EQ(settling, static_cast<ptrdiff_t>(settled)) << type << ' ' << edge;
            EXPECT_NEAR(overshoot, std::max(over, 0.0), 1e-6) << type << ' ' << edge;
            const ptrdiff_t few = 20 * settling + 200;  // are enough to be sure
            EXPECT_EQ(mensura_sos_step_figures(sos.data(), count_of(sos), kTolerance, few, nullptr, nullptr), 0);
        }
}

TEST(SosRun, Responses_of_long_cascades) {
    Values sos;
    for (int k = 0; k < 150; ++k) sos.insert(sos.end(), {0, 1, 0, 1, 0, 0});  // a delay of a sample each
    Values y(200, kMark), expected(200);
    expected[150] = 1;
    EXPECT_EQ(mensura_sos_impulse_response(sos.data(), 150, y.data(), 200), 0);
    EXPECT_SAME_BITS(y, expected);
}

TEST(SosRun, What_is_refused_leaves_everything_alone) {
    Values sos = kTwo, bad = kTwo, integrator = kTwo, outside = kTwo, slow = kTwo;
    bad[9] = std::nextafter(1.0, 2.0);
    integrator[10] = -1;
    outside[10] = -1.5;
    slow[10] = -0.999999;
    Values state(24, kMark), y(40, kMark), work(60, kMark);
    const double one = 1;
    double over = kMark;
    ptrdiff_t settling = -77;
    double *const s = sos.data(), *const t = state.data(), *const out = y.data();
    const auto filter = [&](const double *f, int sections, double *u, const double *x, double *v, ptrdiff_t n) {
        const int code = mensura_sos_filter(f, sections, u, x, 0, v, 1, n);
        EXPECT_EQ(mensura_sos_filter_channels(f, sections, u, 3, x, 0, 0, v, 1, 9, n), code);
        return code;
    };
    const auto filtfilt = [&](const double *f, int ends, ptrdiff_t extension, const double *x, ptrdiff_t n) {
        return mensura_sos_filtfilt(f, 2, ends, extension, x, 0, out, 1, n, work.data());
    };
    const auto figures = [&](const double *f, double tolerance, ptrdiff_t most) {
        return mensura_sos_step_figures(f, 2, tolerance, most, &over, &settling);
    };
    const std::pair<int, int> kRefused[] = {
        {filter(nullptr, 2, t, &one, out, 9), MENSURA_SOS_NULL},
        {filter(s, 2, nullptr, &one, out, 9), MENSURA_SOS_NULL},
        {filter(s, 2, t, nullptr, out, 9), MENSURA_SOS_NULL},
        {filter(s, 2, t, &one, nullptr, 9), MENSURA_SOS_NULL},
        {filter(s, 0, t, &one, out, 9), MENSURA_SOS_COUNT},
        {filter(s, 2, t, &one, out, -1), MENSURA_SOS_COUNT},
        {filter(bad.data(), 2, t, &one, out, 9), MENSURA_SOS_SECTION},
        {filter(s, 2, t, nullptr, nullptr, 0), 0},
        {mensura_sos_filter_channels(s, 2, t, 0, &one, 0, 0, out, 1, 9, 9), MENSURA_SOS_COUNT},
        {mensura_sos_steady_state(integrator.data(), 2, 1, t), MENSURA_SOS_STEADY_STATE},
        {mensura_sos_steady_state(s, 2, 1, nullptr), MENSURA_SOS_NULL},
        {mensura_sos_extension(bad.data(), 2), MENSURA_SOS_SECTION},
        {filtfilt(integrator.data(), 1, 9, &one, 20), MENSURA_SOS_STEADY_STATE},
        {filtfilt(s, 4, 9, &one, 20), MENSURA_SOS_ENDS},
        {filtfilt(s, -1, 9, &one, 20), MENSURA_SOS_ENDS},
        {filtfilt(s, 1, 20, &one, 20), MENSURA_SOS_ENDS},
        {filtfilt(s, 1, -1, &one, 12), MENSURA_SOS_ENDS},
        {filtfilt(s, 0, -2, &one, 20), MENSURA_SOS_COUNT},
        {filtfilt(s, 1, 9, nullptr, 20), MENSURA_SOS_NULL},
        {filtfilt(s, 0, 99, nullptr, 0), 0},
        {mensura_sos_step_response(s, 2, nullptr, 1), MENSURA_SOS_NULL},
        {mensura_sos_impulse_response(s, 2, out, -1), MENSURA_SOS_COUNT},
        {figures(outside.data(), 0.1, 9), MENSURA_SOS_UNSTABLE},
        {figures(integrator.data(), 0.1, 9), MENSURA_SOS_UNSTABLE},
        {figures(slow.data(), 0.1, 1000), MENSURA_SOS_UNSETTLED},
        {figures(s, NAN, 9), MENSURA_SOS_LEVEL},
        {figures(s, 0.1, 0), MENSURA_SOS_COUNT},
    };
    for (std::size_t i = 0; i < std::size(kRefused); ++i) EXPECT_EQ(kRefused[i].first, kRefused[i].second) << i;
    for (const Values &values : {state, y, work, Values{over}})
        EXPECT_TRUE(std::ranges::all_of(values, [](double v) { return v == kMark; }));
    EXPECT_EQ(settling, -77);
}
