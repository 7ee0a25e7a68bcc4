// Filters as requested: any request and requirement; any sections run with any strides, and measured.
#include <mensura/sos.h>

#include "input.h"

using namespace fuzz;

static const Doubles &untouched() {
    static const Doubles values(6 * MENSURA_SOS_MAX_SECTIONS, 7);
    return values;
}

// An edge that may well be one, or any number.
static double edge(Input &input) {
    return input.ConsumeBool()
               ? std::ldexp(input.ConsumeFloatingPointInRange(0.25, 0.5), -input.ConsumeIntegralInRange(0, 20))
               : number(input);
}

static double decibels(Input &input, double least, double most) {
    return input.ConsumeBool() ? input.ConsumeFloatingPointInRange(least, most) : number(input);
}

static mensura_sos_request request(Input &input) {
    mensura_sos_request r;
    check(mensura_sos_default_request(&r, sizeof r) == 0);
    r.rate = input.ConsumeBool() ? 1 : number(input);
    for (double &f : r.edge) f = edge(input);
    r.pass_type = code(input, -1, 5);
    r.family = code(input, -1, 8);
    r.poles = code(input, -1, 24);
    if (input.ConsumeBool()) r.passes = code(input, -1, 3);
    if (input.ConsumeBool()) r.band = code(input, -1, 2);
    if (input.ConsumeBool()) r.level_db = decibels(input, -200, 0);
    if (input.ConsumeBool()) r.ripple_db = decibels(input, 0.0001, 10);
    if (input.ConsumeBool()) r.stop_db = decibels(input, 10, 200);
    if (input.ConsumeBool()) r.gamma = number(input);
    if (input.ConsumeBool()) r.gain_db = decibels(input, -200, 200);
    if (input.ConsumeIntegralInRange(0, 30) == 0) r.size = code(input, 0, 200);
    return r;
}

static double highest(const Doubles &sos, int n, double rate, double from, double to) {
    double level = NAN;
    check(mensura_sos_extremes(sos.data(), n, rate, from, to, nullptr, &level) == 0);
    return level;
}

// The level at the edges relative to the largest gain in the pass band is the one requested.
static void check_levels(const mensura_sos_request &r, const Doubles &sos, int n) {
    const bool band_type = r.pass_type == ptBandPass || r.pass_type == ptNotch;
    if (r.pass_type == ptAllPass || (band_type && r.band == MENSURA_SOS_CENTRE)) return;
    const double low = r.edge[0], high = r.edge[1], nyquist = 0.5 * r.rate;
    double top = NAN;
    if (r.pass_type == ptLowPass) top = highest(sos, n, r.rate, 0, low);
    if (r.pass_type == ptHighPass) top = highest(sos, n, r.rate, low, nyquist);
    if (r.pass_type == ptBandPass) top = highest(sos, n, r.rate, low, high);
    if (r.pass_type == ptNotch)
        top = std::fmax(highest(sos, n, r.rate, 0, low), highest(sos, n, r.rate, high, nyquist));
    for (int i = 0; i < (band_type ? 2 : 1); ++i) {
        const double level = highest(sos, n, r.rate, r.edge[i], r.edge[i]) - top;
        check(std::fabs(level * r.passes - r.level_db) < 0.02 * r.passes);
    }
}

static void design(Input &input) {
    const mensura_sos_request r = request(input);
    const int capacity = input.ConsumeIntegralInRange<int>(0, MENSURA_SOS_MAX_SECTIONS);
    const Doubles before(untouched().begin(), untouched().begin() + 6 * capacity);
    Doubles sos = before;
    const int n = mensura_sos_design(&r, sos.data(), capacity);
    check(n != 0 && n <= capacity && *mensura_sos_message(n) != 0);
    if (n < 0) return check(same_bits(sos, before));
    for (const double c : sos) check(std::isfinite(c));
    double radius = NAN;
    check(mensura_sos_pole_radius(sos.data(), n, &radius) == 0 && radius < 1);
    check_levels(r, sos, n);
}

static void order(Input &input) {
    mensura_sos_requirement r{sizeof r, code(input, -1, 5), input.ConsumeIntegralInRange(1, 3), 0, 1, {}, {}, 1, 60};
    if (input.ConsumeBool()) r.rate = number(input);
    for (double &f : r.pass_edge) f = edge(input);
    for (double &f : r.stop_edge) f = edge(input);
    if (input.ConsumeBool()) r.loss_db = decibels(input, 0, 20);
    if (input.ConsumeBool()) r.attenuation_db = decibels(input, 0, 210);
    mensura_sos_request request;
    const int size = sizeof request, family = code(input, -2, 8);
    mensura_sos_default_request(&request, size);
    const mensura_sos_request before = request;
    const int poles = mensura_sos_order(&r, family, number(input), &request, size);
    if (poles < 0) return check(std::memcmp(&request, &before, sizeof request) == 0);
    Doubles sos = untouched();
    const int n = mensura_sos_design(&request, sos.data(), MENSURA_SOS_MAX_SECTIONS);
    check(n > 0 && request.poles == poles);
    if (r.pass_type == ptLowPass)
        check(highest(sos, n, r.rate, r.stop_edge[0], 0.5 * r.rate) - highest(sos, n, r.rate, 0, r.pass_edge[0]) <
              -r.attenuation_db / r.passes + 0.001);
}

// Any numbers; the fourth is nearly always 1.
static Doubles sections(Input &input, int n) {
    Doubles sos = numbers(input, 6 * n);
    for (std::size_t k = 0; k < sos.size(); k += 6) sos[k + 3] = 1;
    if (n > 0 && input.ConsumeIntegralInRange(0, 20) == 0) sos[3] = number(input);
    return sos;
}

// n numbers, a stride apart, in memory of just the size that they take.
struct Strided {
    Strided(Input &input, int n, int step)
        : stride(step), values(numbers(input, n == 0 ? 0 : (n - 1) * std::abs(step) + 1)) {}

    double *start() { return values.data() + (stride < 0 && !values.empty() ? values.size() - 1 : 0); }
    double at(ptrdiff_t i) { return start()[i * stride]; }

    ptrdiff_t stride;
    Doubles values;
};

static void run(Input &input) {
    const int count = input.ConsumeIntegralInRange(0, 22), n = input.ConsumeIntegralInRange(0, 70);
    const Doubles sos = sections(input, count), start = numbers(input, 4 * count);
    Strided x(input, n, input.ConsumeIntegralInRange(-3, 3)), y(input, n, input.PickValueInArray({-2, -1, 1, 3}));
    const Strided y_before = y;
    Doubles state = start, expected = start;
    const int result = mensura_sos_filter(sos.data(), count, state.data(), x.start(), x.stride, y.start(), y.stride, n);
    if (result < 0) return check(same_bits(y.values, y_before.values) && same_bits(state, start));
    for (int t = 0; t < n; ++t) {
        double u = x.at(t);
        for (std::size_t k = 0; k < static_cast<std::size_t>(count); ++k) {
            const double *c = &sos[6 * k];
            double *r = &expected[4 * k];
            const double out = c[0] * u + c[1] * r[0] + c[2] * r[1] - c[4] * r[2] - c[5] * r[3];
            const double next[] = {u, r[0], out, r[2]};
            std::copy_n(next, 4, r);
            u = out;
        }
        check(same_bits(u, y.at(t)));
    }
    check(same_bits(state, expected));
}

// Interleaved or planar, with gaps between the samples, forwards or backwards, in memory of just the size needed.
static void run_channels(Input &input) {
    const int count = input.ConsumeIntegralInRange(1, 22), n = input.ConsumeIntegralInRange(1, 40);
    const int channels = input.ConsumeIntegralInRange(1, 13), gap = input.ConsumeIntegralInRange(1, 2);
    const Doubles sos = sections(input, count);
    const bool interleaved = input.ConsumeBool(), in_place = input.ConsumeBool(), backwards = input.ConsumeBool();
    const int size = (n * channels - 1) * gap + 1, direction = backwards ? -gap : gap;
    const ptrdiff_t stride = (interleaved ? channels : 1) * direction, distance = (interleaved ? 1 : n) * direction;
    const ptrdiff_t start = backwards ? size - 1 : 0;
    const Doubles x = numbers(input, size, 60);
    Doubles y = x, expected = x, state = numbers(input, 4 * count * channels), one = state;
    const double *const from = in_place ? y.data() : x.data();
    const int result = mensura_sos_filter_channels(sos.data(), count, state.data(), channels, from + start, stride,
                                                   distance, y.data() + start, stride, distance, n);
    for (int c = 0; c < channels; ++c) {
        const ptrdiff_t first = start + c * distance;
        check(mensura_sos_filter(sos.data(), count, &one[static_cast<std::size_t>(4 * count * c)], x.data() + first,
                                 stride, expected.data() + first, stride, n) == result);
    }
    check(same_bits(y, expected) && same_bits(state, one));
    check(mensura_sos_filter_channels(sos.data(), count, state.data(), channels, nullptr, stride, distance, nullptr,
                                      stride, distance, 0) == result);
}

static void run_both_ways(Input &input) {
    const int count = input.ConsumeIntegralInRange(0, 22), n = input.ConsumeIntegralInRange(0, 70);
    const Doubles sos = sections(input, count);
    const int ends = code(input, -1, 4), extension = input.ConsumeBool() ? -1 : code(input, -2, 80);
    Strided x(input, n, input.ConsumeIntegralInRange(-3, 3)), y(input, n, input.PickValueInArray({-2, -1, 1, 3}));
    const Strided y_before = y;
    const int longest = extension == -1 ? mensura_sos_extension(sos.data(), count) : extension;
    Doubles work(static_cast<std::size_t>(4 * count + 2 * std::clamp(longest, 0, 200)));
    const int result = mensura_sos_filtfilt(sos.data(), count, ends, extension, x.start(), x.stride, y.start(),
                                            y.stride, n, input.ConsumeBool() ? work.data() : nullptr);
    check(result == 0 || same_bits(y.values, y_before.values));
    Doubles state(static_cast<std::size_t>(4 * count), 7), before = state;
    const double level = number(input);
    check(mensura_sos_steady_state(sos.data(), count, level, state.data()) == 0 || same_bits(state, before));
}

static void measure(Input &input) {
    const int count = input.ConsumeIntegralInRange(0, 21), n = input.ConsumeIntegralInRange(0, 9);
    const Doubles sos = sections(input, count);
    const double rate = input.ConsumeBool() ? 1 : number(input);
    const double from = edge(input), to = edge(input), level = number(input);
    const Doubles f(static_cast<std::size_t>(n), from);
    Doubles re(f.size(), 7), im = re, delay = re, found = re;
    const int result = mensura_sos_response(sos.data(), count, rate, f.data(), re.data(), im.data(), n);
    check(mensura_sos_group_delay(sos.data(), count, rate, f.data(), delay.data(), n) == result);
    check(result == 0 || (same_bits(re, found) && same_bits(im, found) && same_bits(delay, found)));
    const int crossings = mensura_sos_crossings(sos.data(), count, rate, level, found.data(), n);
    for (int i = 1; i < std::min(crossings, n); ++i)
        check(found[static_cast<std::size_t>(i)] >= found[static_cast<std::size_t>(i) - 1]);
    double lowest = 7, highest = 7, radius = 7;
    if (mensura_sos_extremes(sos.data(), count, rate, from, to, &lowest, &highest) < 0)
        check(lowest == 7 && highest == 7);
    else
        check(!(lowest > highest));
    if (mensura_sos_pole_radius(sos.data(), count, &radius) == 0) check(!(radius < 0));
    Doubles step(static_cast<std::size_t>(n)), impulse = step;
    check(mensura_sos_step_response(sos.data(), count, step.data(), n) ==
          mensura_sos_impulse_response(sos.data(), count, impulse.data(), n));
    ptrdiff_t settling = -1;
    double overshoot = -1;
    const int settled =
        mensura_sos_step_figures(sos.data(), count, number(input), code(input, -1, 2000) % 3000, &overshoot, &settling);
    check(settled == 0 ? settling >= 0 && !(overshoot < 0) : settling == -1 && overshoot == -1);
}

void fuzz::test(Input &input) {
    input.PickValueInArray({design, order, run, run_channels, run_both_ways, measure})(input);
}
