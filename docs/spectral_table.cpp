// Prints docs/spectral.md: what the transforms, windows and record filters give, measured.
// Deterministic: seeded random numbers, no clock.

#include <mensura/iir.h>
#include <mensura/spectral.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <functional>
#include <numbers>
#include <numeric>
#include <random>
#include <tuple>
#include <vector>

namespace {

using std::numbers::pi;
using Signal = std::vector<double>;
using Transform = void (*)(double *, double *, int, int);
using Long = long double;
using Exact = std::vector<std::complex<Long>>;

constexpr int kPoints = 1024, kPadding = 256;  // of the windows; their spectra have kPadding points a bin
constexpr double kRate = 360, kAsked = 40;     // Hz
constexpr int kRecord = 1000, kMargin = 2000;  // samples

template <typename Value>
Signal sampled(int n, Value value) {
    Signal x;
    for (int t = 0; t < n; ++t) x.push_back(value(t));
    return x;
}

Signal sine(int n, double amplitude, double f, double phase = 0) {  // f = 1: Nyquist
    return sampled(n, [=](int t) { return amplitude * std::sin(pi * f * t + phase); });
}

Signal noise(int n, unsigned seed, double offset = 0) {  // uniform in [-1, 1), if there is no offset
    std::mt19937_64 bits(seed);
    return sampled(n, [&](int) { return static_cast<double>(bits() >> 11) * 0x1p-52 - 1 + offset; });
}

Long wide(double x) { return static_cast<Long>(x); }
double decibels(double ratio) { return 20 * std::log10(ratio); }
double largest(const Signal &x, int from = 0) { return *std::max_element(x.begin() + from, x.end()); }

// Of the bins 0 .. m / 2 of x, padded with zeros to m points.
Signal magnitudes(Signal x, int m, Transform transform = FFT) {
    x.resize(static_cast<std::size_t>(m));
    Signal im(x.size());
    transform(x.data(), im.data(), m, 0);
    std::transform(x.begin(), x.end(), im.begin(), x.begin(), [](double a, double b) { return std::hypot(a, b); });
    x.resize(x.size() / 2 + 1);
    return x;
}

// ---- Scaling ----

void print_scaling() {
    const Signal x = sine(1000, 3, 0.2), y = sine(kPoints, 3, 200.0 / kPoints), z = sine(768, 3, 200.0 / kPoints);
    Signal re(1000), im(1000), windowed = y;
    RealSigDFT(x.data(), re.data(), im.data(), 1000);
    WindowData(windowed.data(), kPoints, wkHanning, 0, 0, 1);
    std::printf(R"(# Spectra and whole records: scaling, windows, accuracy

`docs/spectral_table.cpp` prints this page and measures its numbers (seeded random numbers, x86-64).

## Scaling and units

A sine of amplitude A = 3 in the middle of bin k = 100; v is the magnitude `hypot(re[k], im[k])` or the value returned.

| call | n | v | A is |
|---|---:|---:|---|
| `FFT` | 1024 | %.3f | 2 v |
| `FFT` after `WindowData` with a Hanning window, unityGain = 1 | 1024 | %.3f | 2 v |
| `FFT` of 768 samples and zeros up to m = 1024 | 768 | %.3f | 2 v m / n |
| `DFT` | 1000 | %.3f | 2 v |
| `RealSigDFT` | 1000 | %.3f | 2 v |
| `SingleFreqDFT`, f = 2 k / n | 1000 | %.1f | 2 v / n |
| `Goertzel`, f = 2 k / n | 1000 | %.1f | 2 v / n |

- **Rms** is A / sqrt 2, **power** (mean square) A^2 / 2. Bins 0 and n / 2 have no mirror image: there A is v.
- The squares of all n bins add up to the mean square of the data. After a window with unityGain = 1 the bins of a line
  and of its mirror image add up to its power times the window's noise bandwidth (see below).
- **Frequency:** bin k lies at k fs / n, bins above n / 2 at (k - n) fs / n. The argument f is 2 F / fs: 1.0 is Nyquist.
- **Zero padding** to m points puts the bins fs / m apart. A line stays as wide as n samples make it.
- **NumPy:** `fft(x, norm="forward")` is dir 0, `ifft(X, norm="forward")` is dir 1.
- **MATLAB, and NumPy's default:** `fft(x)` is n times dir 0, `ifft(X)` is dir 1 divided by n.
- **RealSigDFT leaves one bin of an odd n = 2h + 1 as it was:** bin h + 1, so 5 of n = 9. After the call write
  `re[h + 1] = re[h]; im[h + 1] = -im[h];` (h > 0), or read bins 0 .. h only.
)",
                magnitudes(y, kPoints)[100], magnitudes(windowed, kPoints)[100], magnitudes(z, kPoints)[100],
                magnitudes(x, 1000, DFT)[100], std::hypot(re[100], im[100]), SingleFreqDFT(x.data(), 1000, 0.2),
                Goertzel(x.data(), 1000, 0.2));
}

// ---- Windows ----

constexpr std::tuple<const char *, int, double> kShapes[] = {
    {"1 | rectangle", 1, 0},        {"2 | Kaiser, beta 8", 2, 8}, {"3 | sinc, beta 1", 3, 1},
    {"3 | sinc, beta 2", 3, 2},     {"4 | Hanning", 4, 0},        {"5 | Hamming", 5, 0},
    {"6 | Blackman", 6, 0},         {"7 | flat top", 7, 0},       {"8 | Blackman-Harris", 8, 0},
    {"9 | Blackman-Nuttall", 9, 0}, {"10 | Nuttall", 10, 0},      {"11 | Kaiser-Bessel", 11, 0},
    {"12 | triangle", 12, 0},       {"13 | Gauss", 13, 0},        {"14 | sine, beta 1", 14, 1},
    {"14 | sine, beta 2", 14, 2}};

Signal window(int code, double beta = 0, double alpha = 0) {
    Signal w(kPoints, 1.0);
    WindowData(w.data(), kPoints, code, alpha, beta, 0);
    return w;
}

// A curve over -1 < x < 1, at the points of WindowData.
template <typename Value>
Signal curve(Value value) {
    return sampled(kPoints, [&](int t) { return value(2.0 * (t + 1) / (kPoints + 1) - 1); });
}

// a0 + a1 cos t + a2 cos 2t + a3 cos 3t, t = pi (x + 1)
Signal cosine_sum(double a0, double a1, double a2, double a3) {
    return curve(
        [=](double x) { return a0 - a1 * std::cos(pi * x) + a2 * std::cos(2 * pi * x) - a3 * std::cos(3 * pi * x); });
}

// Kaiser's with a beta of 10, with so many terms of I0 that more change nothing.
Signal full_kaiser() {
    return curve([](double x) {
        double sum = 1, term = 1;
        for (int k = 1; k < 40; ++k) sum += term *= 25 * (1 - x * x) / (k * k);
        return sum / 2815.716628466254;  // I0(10)
    });
}

void print_figures(const char *name, const Signal &w) {
    const double sum = std::accumulate(w.begin(), w.end(), 0.0);
    const double squares = std::inner_product(w.begin(), w.end(), w.begin(), 0.0);
    const Signal v = magnitudes(w, kPoints * kPadding);
    const auto half = std::find_if(v.begin(), v.end(), [&](double m) { return m <= v[0] / 2; });
    const auto minimum = std::adjacent_find(half, v.end(), std::less<>());
    std::printf("| %s | %.4f | %.3f | %.1f | %.1f | %.2f | %.2f |\n", name, sum / kPoints,
                kPoints * squares / (sum * sum), decibels(*std::max_element(minimum, v.end()) / v[0]),
                decibels(largest(v, 20 * kPadding) / v[0]), decibels(v[0] / v[kPadding / 2]),
                2.0 * static_cast<double>(half - v.begin()) / kPadding);
}

void print_windows() {
    std::printf(R"(
## Windows

For n = %d and alpha = 0. Mean: the coherent gain, which unityGain = 1 divides out. Noise: the equivalent noise
bandwidth n sum w^2 / (sum w)^2. Side lobe: the largest magnitude beyond the first minimum, and from 20 bins on, of the
spectrum padded to %d points a bin. Scalloping: the loss half a bin off. Width: the main lobe's at half its height.

| code | window | mean | noise, bins | side lobe, dB | 20 bins on, dB | scalloping, dB | -6 dB width, bins |
|---:|---|---:|---:|---:|---:|---:|---:|
)",
                kPoints, kPadding);
    for (const auto &[name, code, beta] : kShapes) print_figures(name, window(code, beta));
    std::printf(R"(
- **Hanning** in general: narrow, and its side lobes fall fast.
- **Flat top** for amplitudes: the highest bin is right wherever the line lies. Lines must be five bins apart.
- **Kaiser** (beta 8) or **Blackman-Harris** for a weak line near a strong one; from 20 bins on Hanning is no
  worse than Kaiser. Code 8 or 10 instead of 9, code 6 instead of 11: not wider, and lower side lobes.
- **None** where the block holds whole periods, as in the first table, or a transient that ends inside it.

What textbooks have, to compare with the same codes above, and what else changes a window:

| code | window | mean | noise, bins | side lobe, dB | 20 bins on, dB | scalloping, dB | -6 dB width, bins |
|---:|---|---:|---:|---:|---:|---:|---:|
)");
    print_figures("9 | textbook: first constant 0.3635819", cosine_sum(0.3635819, -0.4891775, 0.1365995, -0.0106411));
    print_figures("11 | textbook: last term -0.00122", cosine_sum(0.40243, -0.49804, 0.09831, -0.00122));
    print_figures("13 | often: exp(-(2.5 x)^2 / 2)", curve([](double x) { return std::exp(-3.125 * x * x); }));
    print_figures("2 | beta 10, nine terms of I0, as built in", window(wkKaiser, 10));
    print_figures("2 | beta 10, all terms of I0", full_kaiser());
    const Signal hanning = magnitudes(window(wkHanning), kPoints);
    print_figures("4 | Hanning, alpha 0.5", window(wkHanning, 0, 0.5));
    print_figures("9 | Blackman-Nuttall, alpha 0.5", window(wkBlackmanNuttall, 0, 0.5));
    std::printf(R"(
- **The end zeros are left out:** the period is n + 1, not n, so that the zeros of the spectrum miss the bins. Beyond
  the two neighbours of a line in the middle of a bin Hanning leaves %.0f dB, 6 dB more for each halving of n; with a
  period of n it would leave rounding errors only.
- **Code 9** ends at -0.01, as if a faint rectangle were taken off: high side lobes that fall slowly.
- **Code 11** has 0.402, -0.498, 0.098, +0.001, textbooks 0.40243, -0.49804, 0.09831, -0.00122.
- **alpha's flat middle is 1**, and so is the centre of an odd n, where the curves of codes 9 and 11 reach %.3f and
  %.3f: a step. With half of the block flat the highest side lobe is nearly a rectangle's.
- **Flat top** peaks at %.2f and has a mean near 1. **Gauss** is exp(-(3.84 x)^2 / 2) here: low side lobes, wide lines.
- **Kaiser's series** is long enough up to beta 8; at beta 10 it costs 4 dB of the side lobes.
)",
                decibels(largest(hanning, 2) / hanning[0]), largest(window(wkBlackmanNuttall)),
                largest(window(wkKaiserBessel)), largest(window(wkFlatTop)));
}

// ---- Accuracy ----

// exp(-i pi f t)
Exact phasors(int n, Long f) {
    Exact w;
    for (int t = 0; t < n; ++t) w.push_back(std::polar(1.0L, -std::numbers::pi_v<Long> * std::fmod(f * t, 2.0L)));
    return w;
}

Exact::value_type dot(const Signal &x, const Exact &w) {
    const auto product = [](Long v, const Exact::value_type &turned) { return v * turned; };
    return std::inner_product(x.begin(), x.end(), w.begin(), Exact::value_type(), std::plus<>(), product);
}

// The rms error of 64 bins over their rms.
double transform_error(Transform transform, int n) {
    const Signal x = noise(n, 1);
    Signal re = x, im(x.size());
    transform(re.data(), im.data(), n, 0);
    Long errors = 0, squares = 0;
    for (std::size_t i = 0; i < 64; ++i) {
        const std::size_t k = 617 * i % x.size();  // a prime, so that they are of all kinds
        const auto exact = dot(x, phasors(n, 2 * static_cast<Long>(k) / n)) / static_cast<Long>(n);
        errors += std::norm(Exact::value_type(wide(re[k]), wide(im[k])) - exact);
        squares += std::norm(exact);
    }
    return static_cast<double>(std::sqrt(errors / squares));
}

// Prints the rms errors of both functions over the rms magnitude.
void print_single_errors(int n, double f, double offset) {
    const Exact w = phasors(n, wide(f));
    Long squares = 0, goertzel = 0, single = 0;
    for (unsigned seed = 1; seed <= 30; ++seed) {
        const Signal x = noise(n, seed, offset);
        const Long exact = std::abs(dot(x, w));
        squares += exact * exact;
        goertzel += std::pow(wide(Goertzel(x.data(), n, f)) - exact, 2.0L);
        single += std::pow(wide(SingleFreqDFT(x.data(), n, f)) - exact, 2.0L);
    }
    std::printf(" | %.0Le | %.0Le", std::sqrt(goertzel / squares), std::sqrt(single / squares));
}

void print_accuracy() {
    std::printf(R"(
## Speed and accuracy

| function | n | time grows as | use it for |
|---|---|---|---|
| `FFT` | 8, 16, ... 2^20 | n log n | all bins; pad to `RequiredFFTSize(n)` points |
| `DFT` | any | n^2 | all bins of exactly n points, n up to some thousands |
| `RealSigDFT` | any | n^2, half of `DFT` | the same of real samples |
| `SingleFreqDFT`, `Goertzel` | any | n for each f | one or two frequencies, bins or not; a few cost as much as `FFT` |

Rms error of 64 bins over their rms, white noise, against sums in long double:

| FFT, n = 64 | FFT, 1024 | FFT, 65536 | DFT, 1000 |
|---:|---:|---:|---:|
| %.1e | %.1e | %.1e | %.1e |

The same for Goertzel (G) and SingleFreqDFT (S): noise uniform in [-1, 1), in the last columns with an offset of 10.
The bins next to 0 and Nyquist are f = 0.002 and 0.998 for n = 1000, f = 2e-05 and 0.99998 for n = 100000.

| f | G, n = 1000 | S | G, n = 100000 | S | G, offset 10 | S |
|---|---:|---:|---:|---:|---:|---:|
)",
                transform_error(FFT, 64), transform_error(FFT, 1024), transform_error(FFT, 65536),
                transform_error(DFT, 1000));
    for (const float f : {0.F, 2e-5F, 2e-3F, 0.1F, 0.5F, 0.998F, 1 - 2e-5F, 1.F}) {  // so short that f t is exact
        const auto exact = static_cast<double>(f);
        std::printf("| %g", exact);
        print_single_errors(1000, exact, 0);
        print_single_errors(100000, exact, 0);
        print_single_errors(100000, exact, 10);
        std::puts(" |");
    }
    std::printf(R"(
Prefer SingleFreqDFT near f = 0 and f = 1, the more so the longer the record; in between both are good. Whatever is much
stronger than the line looked for adds its own error nearby: subtract the mean first.
)");
}

// ---- Whole records ----

Signal filtered(Signal x, bool both_ways) {
    TIIRFilter f;
    initTIIRFilter(&f, ptLowPass, kAsked, kRate);
    if (both_ways) IIRFilterZeroPhase(&f, x.data(), nullptr, static_cast<int>(x.size()));
    if (!both_ways) std::transform(x.begin(), x.end(), x.begin(), [&](double v) { return IIRFilter(&f, v); });
    return x;
}

// From the response to an impulse in the middle of a record.
double half_power_hz(bool both_ways) {
    constexpr int kLong = 65536;
    const auto impulse = [](int t) { return t == kLong / 2 ? 1.0 : 0.0; };
    const Signal v = magnitudes(filtered(sampled(kLong, impulse), both_ways), kLong);
    const auto below = std::find_if(v.begin(), v.end(), [&](double m) { return m < v[0] * std::sqrt(0.5); });
    return static_cast<double>(below - v.begin()) * kRate / kLong;
}

// Of sines of 5 Hz, the largest at any phase, against the same in the middle of longer records.  All is linear, so that
// two phases tell about every one.
Signal zero_phase_errors() {
    Signal worst(kRecord);
    for (const double phase : {0.0, pi / 2}) {
        const Signal x = sine(kRecord + 2 * kMargin, 1, 10 / kRate, phase), whole = filtered(x, true);
        const Signal part = filtered({x.begin() + kMargin, x.end() - kMargin}, true);
        for (std::size_t t = 0; t < kRecord; ++t) worst[t] = std::hypot(worst[t], part[t] - whole[t + kMargin]);
    }
    return worst;
}

void print_cleaning(double hz, double ratio, double fc) {
    const Signal clean = sine(kRecord, 1, 2 * hz / kRate);
    Signal x = noise(kRecord, 1);
    std::transform(x.begin(), x.end(), clean.begin(), x.begin(), [](double h, double c) { return h / 2 + c; });
    const auto rms_error = [&] {
        const auto squared = [](double a, double b) { return (a - b) * (a - b); };
        return std::sqrt(std::inner_product(x.begin(), x.end(), clean.begin(), 0.0, std::plus<>(), squared) / kRecord);
    };
    std::printf("    %2.0f Hz, ratio %.2f, fc %2.0f: rms error %.3f before\n", hz, ratio, fc, rms_error());
    dataZeroPhaseFilter(x.data(), kRecord, 1 / kRate, ratio, fc);
    std::printf("    rms error %.3f after\n", rms_error());
}

void print_records() {
    const Signal errors = zero_phase_errors();
    std::printf(R"(
## Whole records

The default low-pass (`initTIIRFilter`), asked for %.0f Hz at %.0f samples a second, has its -3 dB point at **%.1f Hz**
one way (`IIRFilter`) and at **%.1f Hz** both ways (`IIRFilterZeroPhase`), where one way it has -1.5 dB.

**Edges.** Either pass primes itself as if the signal had been constant before: a constant stays, a slope bends. Sines
of 5 Hz at all phases, filtered so, are off by up to %.2f of their amplitude at the first sample and %.2f at the last,
where the backward pass starts from the delayed output of the forward one; ten samples further in by %.4f and %.4f.
Leave those samples out, or record more than you need.

**The automatic cut-off** of `dataZeroPhaseFilter` (fc = 0) is 15 k fs / (n - 1), k being the last bin above ratio times
the highest one; the call prints fs, k, n and the highest bin. A sine of amplitude 1 in noise, %d samples at %.0f Hz:

```text
)",
                kAsked, kRate, half_power_hz(false), half_power_hz(true), errors.front(), errors.back(), errors[10],
                errors[kRecord - 11], kRecord, kRate);
    print_cleaning(5, 0.1, 0);
    print_cleaning(5, 0.02, 0);
    print_cleaning(15, 0.1, 0);
    print_cleaning(5, 0.1, kAsked);
    std::printf(R"(```

The factor of 15 is generous: well below fs this filter, both ways, halves the power near a third of its cut-off,
so that all up to some five times the highest line passes. Above fs / 2 the cut-off counts as fs / 2, which changes
nothing but the last digits: the second time because ratio lies below the noise, the third because the line lies above
fs / 30. Choose ratio above the noise bins' share of the peak, or give fc: three times the frequency that may lose 3 dB.
)");
}

}  // namespace

int main() {
    print_scaling();
    print_windows();
    print_accuracy();
    print_records();
}
