// Prints docs/smooth.md: what smoothers and streaming filters do to noise, sines, peaks, spikes and steps, measured.
// Deterministic: no random numbers, no clock.

#include <mensura/online.h>
#include <mensura/smooth.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <numbers>
#include <numeric>
#include <type_traits>
#include <vector>

namespace {

using std::numbers::pi;
using Signal = std::vector<double>;
using Filter = std::function<Signal(Signal)>;

constexpr int kSamples = 201, kMiddle = 100, kAverage = 16;

template <typename Value>
Signal sampled(Value value) {
    Signal x;
    for (int t = 0; t < kSamples; ++t) x.push_back(value(t));
    return x;
}

Filter on_record(void (*filter)(const double *, double *, int)) {
    return [=](const Signal &x) {
        Signal y(kSamples);
        filter(x.data(), y.data(), kSamples);
        return y;
    };
}

template <typename State, typename... Settings>
Filter on_stream(void (*init)(State *, Settings...), double (*filter)(State *, double),
                 std::type_identity_t<Settings>... settings) {
    return [=](Signal x) {
        State s;
        init(&s, settings...);
        for (double &value : x) value = filter(&s, value);
        return x;
    };
}

Filter average(int length) { return on_stream(init_move_average_filter_online, move_average_filter_online, length); }

// Where a falling function reaches 0.
template <typename Function>
double crossing(Function function, double from, double to) {
    for (int i = 0; i < 50; ++i) (function((from + to) / 2) > 0 ? from : to) = (from + to) / 2;
    return from;
}

// White noise of rms 1 leaves the root of the sum of squares of what the unit impulses leave.
double noise_gain(const Filter &filter, int at) {
    double squares = 0;
    for (int i = 0; i < kSamples; ++i)
        squares += std::pow(filter(sampled([=](int t) { return t == i; })).data()[at], 2);
    return std::sqrt(squares);
}

// The height left of a Gaussian peak of this width at half its height.
double peak_left(const Filter &filter, double width) {
    const Signal y = filter(sampled([=](int t) { return std::exp2(-std::pow((t - kMiddle) / (width / 2), 2)); }));
    return *std::max_element(y.begin(), y.end());
}

void print_low_pass(const char *name, const Filter &filter) {
    const double delay = kMiddle - filter(sampled([](int t) { return t; }))[kMiddle];  // of a ramp
    const auto gain = [&](double f) {
        return filter(sampled([&](int t) { return std::cos(2 * pi * f * (t - kMiddle + delay)); }))[kMiddle];
    };
    constexpr double kStep = 1.0 / 4096;
    int first = 1;  // not above 0
    while (gain(first * kStep) > 0) ++first;
    double beyond = 0;
    for (int k = first; k <= 2048; ++k) beyond = std::max(beyond, std::fabs(gain(k * kStep)));
    const double zero = crossing(gain, (first - 1) * kStep, first * kStep);
    const double half_power = crossing([&](double f) { return gain(f) - std::sqrt(0.5); }, 0, zero);
    std::printf("| %s | %.3f | %.3f | %.4f | %.4f | %.2f | %.2f | %.2f | %.1f |\n", name, noise_gain(filter, kMiddle),
                noise_gain(filter, 0), half_power, zero, beyond, peak_left(filter, 5), peak_left(filter, 10), delay);
}

void print_low_passes() {
    std::printf(R"(# Smoothers and streaming filters: what they take away, and what they delay

`docs/smooth_table.cpp` prints this page and measures its numbers. Frequencies are fractions of the sampling rate fs.

## Which one

| you have | and want | take | late by |
|---|---|---|---|
| a record | the slow course of noisy data | `linearSmooth5` .. `11` | nothing |
| a record | less noise, but peaks kept | `cubicSmooth7`; narrow peaks: `cubicSmooth5` | nothing |
| a record | its derivative | `central_difference` | nothing |
| a stream | less noise, or no hum | `move_average_filter_online`, length L | (L - 1) / 2 samples |
| a stream | its derivative | `central_difference_online` | 1 sample |
| a stream | no spikes | `amlitude_limit_filer_online` | nothing; 18 samples at a jump above the limit |
| a stream | less noise, no spikes | `amlitude_limit_move_average_filter_online` | what both together are |

For a deeper stop band take an IIR filter: [iir.md](iir.md), and for records [spectral.md](spectral.md#whole-records).

## Noise, sines and peaks

Noise: rms of white noise after / before, in the middle of a record or stream and at its first sample. -3 dB: where the
power is halved. Zero: the lowest frequency that vanishes. Above it: the largest gain from there to fs / 2. Peaks: the
height left of a Gaussian peak 5 and 10 samples wide at half its height. Late by: what a ramp lags behind, in samples.

| function | noise | at first | -3 dB | zero | above it | peak of 5 | peak of 10 | late by |
|---|---:|---:|---:|---:|---:|---:|---:|---:|
)");
    print_low_pass("`linearSmooth3`", on_record(linearSmooth3));
    print_low_pass("`linearSmooth5`", on_record(linearSmooth5));
    print_low_pass("`linearSmooth7`", on_record(linearSmooth7));
    print_low_pass("`linearSmooth9`", on_record(linearSmooth9));
    print_low_pass("`linearSmooth11`", on_record(linearSmooth11));
    print_low_pass("`quadraticSmooth5`", on_record(quadraticSmooth5));
    print_low_pass("`cubicSmooth5`", on_record(cubicSmooth5));
    print_low_pass("`quadraticSmooth7`", on_record(quadraticSmooth7));
    print_low_pass("`cubicSmooth7`", on_record(cubicSmooth7));
    print_low_pass("moving average, L = 4", average(4));
    print_low_pass("moving average, L = 16", average(16));
    print_low_pass("moving average, L = 64", average(64));
    std::printf(R"(
- **Linear or cubic:** `linearSmooth3` and `cubicSmooth7` pass the same noise, and the cubic keeps peaks better. Where
  that is still too much noise, only the longer linear ones help; anything narrower than their window loses height.
- **Edges:** the first and last samples keep over half of their noise, with a cubic nearly all. Leave out half a window
  at either end, or take the quadratic of the same length: the same inside, calmer at the edges.
- **Not stop-band filters:** above the zero up to 0.37 of a sine comes back, and with its sign reversed at first.
- **Moving average:** noise 1 / sqrt L, -3 dB at 0.44 / L, zeros at 1 / L and its multiples: fs / 50 samples remove 50
  Hz and its harmonics. The first outputs are means of all samples so far. Each call adds up L numbers; up to 10
  channels of one length are cheaper in a `MovingAverageBank`.
)");
}

// Where the error of the derivative of a sine reaches a share of its amplitude; the output is `late` samples late.
double error_reaches(double share, const Filter &filter, int late) {
    const auto margin = [&](double f) {
        const double w = 2 * pi * f;
        const auto error = [&](double phase) {
            const Signal dx = filter(sampled([&](int t) { return std::sin(w * (t - kMiddle) + phase); }));
            return dx.data()[kMiddle + late] / w - std::cos(phase);
        };
        return share - std::hypot(error(0), error(pi / 2));
    };
    return crossing(margin, 0, 0.5);
}

void print_derivative(const char *name, const Filter &filter, int late) {
    std::printf("| %s |", name);
    for (const double share : {0.001, 0.01, 0.1, 0.5}) std::printf(" %.4f |", error_reaches(share, filter, late));
    std::printf(" %.3f | %.3f |\n", noise_gain(filter, kMiddle), noise_gain(filter, kSamples - 1));
}

void print_derivatives() {
    const auto difference = [](const double *x, double *dx, int n) { central_difference(x, dx, n, 1); };
    const Filter stream = on_stream(init_central_difference_online, central_difference_online, 1);
    std::printf(R"(
## Derivatives

The frequencies up to which the derivative of a sine is right to a share of its amplitude, and the rms of white noise
times h after / before:

| output | 0.1 %% | 1 %% | 10 %% | 50 %% | noise | at the last sample |
|---|---:|---:|---:|---:|---:|---:|
)");
    print_derivative("`central_difference`", on_record(difference), 0);
    print_derivative("`central_difference_online`, taken for the sample before", stream, 1);
    print_derivative("`central_difference_online`, taken for the sample just fed", stream, 0);
    std::printf(R"(
The response is sin(w h) / h instead of w = 2 pi F, and 0 at fs / 2. Either end of a record has the difference of two
neighbours, half a sample off and with twice the noise. Noise weighs 1 / h: smooth first, the more so at a high fs.
)");
}

double largest_difference(const Signal &x, const Signal &y) {
    return std::inner_product(
        x.begin(), x.end(), y.begin(), 0.0, [](double a, double b) { return std::max(a, b); },
        [](double a, double b) { return std::fabs(a - b); });
}

// x, with a pulse of 5 on the given samples, through a limiter with a limit of 1.
void print_pulse(const char *name, const Signal &x, int from = 0, int length = 0) {
    const Filter limiter = on_stream(init_amlitude_limit_filer_online, amlitude_limit_filer_online, 1);
    const Filter both = on_stream(init_amlitude_limit_move_average_filter_online,
                                  amlitude_limit_move_average_filter_online, kAverage, 1);
    Signal pulsed = x;
    std::for_each_n(pulsed.begin() + from, length, [](double &value) { value += 5; });
    const Signal y = limiter(pulsed), averaged = average(kAverage)(x);
    const int wrong = std::inner_product(x.begin(), x.end(), y.begin(), 0, std::plus<>(), std::not_equal_to<>());
    std::printf("| %s | %d | %.4g | %.4g | %.4g |\n", name, wrong, largest_difference(x, y),
                largest_difference(averaged, average(kAverage)(pulsed)), largest_difference(averaged, both(pulsed)));
}

void print_spikes() {
    std::printf(R"(
## Spikes

A limiter with a limit of 1: how many samples it gets wrong, and by how much. The last columns: the largest error of an
average of %d samples without and with the limiter before it, both against the average of the signal without spikes.

| signal | wrong samples | largest error | average only | limiter, average |
|---|---:|---:|---:|---:|
)",
                kAverage);
    const Signal zero(kSamples);
    const auto ramp = [](double slope) {
        return sampled([=](int t) { return slope * std::clamp(t - kMiddle, 0, 40); });
    };
    print_pulse("0, and a spike of 5", zero, kMiddle, 1);
    print_pulse("0, 18 samples of 5 in a row", zero, kMiddle, 18);
    print_pulse("0, 19 samples of 5 in a row", zero, kMiddle, 19);
    print_pulse("0, the sixth sample of all a spike of 5", zero, 5, 1);
    print_pulse("a real step from 0 to 5", sampled([](int t) { return t < kMiddle ? 0 : 5; }));
    print_pulse("40 samples rising by 1.1", ramp(1.1));
    print_pulse("40 samples rising by 0.9, a spike of 5 among them", ramp(0.9), kMiddle + 10, 1);
    print_pulse("40 samples rising by 0.4, a spike of 5 among them", ramp(0.4), kMiddle + 10, 1);
    print_pulse("+0.6 and -0.6 in turn", sampled([](int t) { return t % 2 == 0 ? 0.6 : -0.6; }));
    std::printf(R"(
- **Choose the limit** below the spikes and above the peak-to-peak noise plus k + 1 times the fastest real change from
  sample to sample, k being the longest spike: the sample after it is compared with the one before it.
- **Too low a limit** makes a staircase of 18 held samples and a jump. **19 spikes in a row** are taken for a new level,
  and the return to the old one is then late as well.
- **The first six samples** pass as they are; a spike in the sixth is held for 18 more. Start on a quiet signal.
- **Delays:** accepted samples pass at once; a real step comes 18 samples late, plus (L - 1) / 2 with an average.
)");
}

}  // namespace

int main() {
    print_low_passes();
    print_derivatives();
    print_spikes();
}
