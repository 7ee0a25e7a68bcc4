// Transforms and data windows.  Ours allocate memory and compute their twiddle factors in every call, which is timed.

#include <mensura/spectral.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <memory>
#include <numbers>
#include <vector>

#include "compare.h"
#ifdef MENSURA_HAVE_FFTW
#include <fftw3.h>
#endif
#ifdef MENSURA_HAVE_KISSFFT
#include <kissfft/kissfft.hh>
#endif

namespace {

using bench::noise;
using Samples = std::vector<double>;
using Spectrum = std::vector<std::complex<double>>;

// Complex noise in two arrays, which stay where they are.
struct Signal {
    Samples noise_re, noise_im, re, im;

    explicit Signal(std::size_t n) : noise_re(noise(n, 1)), noise_im(noise(n, 2)), re(noise_re), im(noise_im) {}

    void restore() {
        std::ranges::copy(noise_re, re.begin());
        std::ranges::copy(noise_im, im.begin());
    }
};

std::size_t size_of(const benchmark::State &state) { return static_cast<std::size_t>(state.range(0)); }

Spectrum interleaved(const Samples &re, const Samples &im) {
    Spectrum z(re.size());
    for (std::size_t k = 0; k < z.size(); ++k) z[k] = {re[k], im[k]};
    return z;
}

// max |ours - peer| / max |peer| over the peer's bins: shows that both have done the same work.
double difference(const Spectrum &ours, const Spectrum &peer) {
    double largest = 0, error = 0;
    for (std::size_t k = 0; k < peer.size(); ++k) {
        largest = std::max(largest, std::abs(peer[k]));
        error = std::max(error, std::abs(ours[k] - peer[k]));
    }
    return error / largest;
}

// ---- fast transforms ----

// A round takes much longer than the clock's resolution.  Two transforms in place divide (ours) or multiply (not
// normalised) the data by n: within a round by 2^384 at most, far from subnormals and infinity.
template <typename Peer>
void compare_transforms(benchmark::State &state, Signal &signal, Peer transform) {
    const int n = static_cast<int>(state.range(0)), count = std::max(8192 / n, 1);
    const auto repeat = [count](auto f) {
        return [=] {
            for (int i = 0; i < count; ++i) f();
        };
    };
    const auto ours = [&] { FFT(signal.re.data(), signal.im.data(), n, 0); };
    bench::compare(state, count, repeat(ours), repeat(transform), [&] { signal.restore(); });
}

// Transforms the noise once more and compares it with `peer`, which is not normalised.
[[maybe_unused]] double difference_to(Spectrum peer, Signal &signal) {
    for (auto &bin : peer) bin /= static_cast<double>(peer.size());
    signal.restore();
    FFT(signal.re.data(), signal.im.data(), static_cast<int>(peer.size()), 0);
    return difference(interleaved(signal.re, signal.im), peer);
}

#define MENSURA_COMPARE_SIZES(name)                             \
    MENSURA_COMPARE(name, 1000)->Arg(64)->Arg(1024)->Arg(4096); \
    MENSURA_COMPARE(name, 200)->Arg(65536);                     \
    MENSURA_COMPARE(name, 20)->Arg(1048576)

#ifdef MENSURA_HAVE_FFTW

// In place, on split arrays, with a plan that FFTW has measured before and that is kept.
void FFT_against_FFTW(benchmark::State &state) {
    Signal signal(size_of(state));
    double *const re = signal.re.data(), *const im = signal.im.data();
    const fftw_iodim dimension{static_cast<int>(state.range(0)), 1, 1};
    const std::unique_ptr<fftw_plan_s, decltype(&fftw_destroy_plan)> plan(
        fftw_plan_guru_split_dft(1, &dimension, 0, nullptr, re, im, re, im, FFTW_MEASURE), fftw_destroy_plan);
    compare_transforms(state, signal, [&] { fftw_execute(plan.get()); });

    signal.restore();
    fftw_execute(plan.get());
    state.counters["difference"] = difference_to(interleaved(signal.re, signal.im), signal);
}
MENSURA_COMPARE_SIZES(FFT_against_FFTW);

#endif
#ifdef MENSURA_HAVE_KISSFFT

// Plan and output are kept, or made in every call as in our FFT.
void compare_with_KissFFT(benchmark::State &state, bool kept) {
    Signal signal(size_of(state));
    const Spectrum in = interleaved(signal.re, signal.im);
    kissfft<double> plan(in.size(), false);
    Spectrum out(in.size());
    compare_transforms(state, signal, [&] {
        if (!kept) {
            plan = kissfft<double>(in.size(), false);
            out = Spectrum(in.size());
        }
        plan.transform(in.data(), out.data());
        benchmark::ClobberMemory();
    });
    state.counters["difference"] = difference_to(out, signal);
}

void FFT_against_KissFFT(benchmark::State &state) { compare_with_KissFFT(state, true); }
MENSURA_COMPARE_SIZES(FFT_against_KissFFT);

void FFT_against_KissFFT_planned_in_the_call(benchmark::State &state) { compare_with_KissFFT(state, false); }
MENSURA_COMPARE_SIZES(FFT_against_KissFFT_planned_in_the_call);

#endif

// ---- transforms of any length, against the loop that a user would write ----

// cos and sin of 2 pi k / n, kept from call to call.
struct Circle {
    Samples cos, sin;

    explicit Circle(std::size_t n) : cos(n), sin(n) {
        for (std::size_t k = 0; k < n; ++k) {
            const double angle = 2 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(n);
            cos[k] = std::cos(angle);
            sin[k] = std::sin(angle);
        }
    }
};

[[gnu::noinline]] void complex_loop(const Circle &circle, const Signal &x, Samples &out_re, Samples &out_im) {
    const std::size_t n = x.re.size();
    for (std::size_t k = 0; k < n; ++k) {
        double re = 0, im = 0;
        for (std::size_t t = 0, at = 0; t < n; ++t) {
            re += x.re[t] * circle.cos[at] + x.im[t] * circle.sin[at];
            im += x.im[t] * circle.cos[at] - x.re[t] * circle.sin[at];
            at += k;
            if (at >= n) at -= n;
        }
        out_re[k] = re / static_cast<double>(n);
        out_im[k] = im / static_cast<double>(n);
    }
}

// Bins 0 .. n/2 only.
[[gnu::noinline]] void real_loop(const Circle &circle, const Samples &x, Samples &out_re, Samples &out_im) {
    const std::size_t n = x.size();
    for (std::size_t k = 0; k <= n / 2; ++k) {
        double re = 0, im = 0;
        for (std::size_t t = 0, at = 0; t < n; ++t) {
            re += x[t] * circle.cos[at];
            im -= x[t] * circle.sin[at];
            at += k;
            if (at >= n) at -= n;
        }
        out_re[k] = re / static_cast<double>(n);
        out_im[k] = im / static_cast<double>(n);
    }
}

void DFT_against_loop(benchmark::State &state) {
    const std::size_t n = size_of(state);
    const Circle circle(n);
    Signal x(n);
    Samples re(n), im(n);
    const auto ours = [&] { DFT(x.re.data(), x.im.data(), static_cast<int>(n), 0); };
    bench::compare(
        state, 1, ours, [&] { complex_loop(circle, x, re, im); }, [&] { x.restore(); });
    x.restore();
    ours();
    state.counters["difference"] = difference(interleaved(x.re, x.im), interleaved(re, im));
}
MENSURA_COMPARE(DFT_against_loop, 200)->Arg(1000);

void RealSigDFT_against_loop(benchmark::State &state) {
    const std::size_t n = size_of(state);
    const Circle circle(n);
    const Samples x = noise(n, 1);
    Samples our_re(n), our_im(n), re(n / 2 + 1), im(n / 2 + 1);
    bench::compare(
        state, 1, [&] { RealSigDFT(x.data(), our_re.data(), our_im.data(), static_cast<int>(n)); },
        [&] { real_loop(circle, x, re, im); });
    state.counters["difference"] = difference(interleaved(our_re, our_im), interleaved(re, im));
}
MENSURA_COMPARE(RealSigDFT_against_loop, 200)->Arg(1000);

// ---- data windows, per sample ----

// Against the cosines of one half alone: the least that a symmetric window with one cosine a point has to compute.
void compare_with_cosines(benchmark::State &state, int kind, double beta) {
    const std::size_t n = size_of(state);
    const Samples original = noise(n, 1);
    Samples data(n), cosines(n / 2);
    bench::compare(
        state, static_cast<double>(n), [&] { WindowData(data.data(), static_cast<int>(n), kind, 0.0, beta, 0); },
        [&] {
            const double period = static_cast<double>(n) + 1;
            for (std::size_t i = 0; i < n / 2; ++i)
                cosines[i] = std::cos(2 * std::numbers::pi * static_cast<double>(i + 1) / period);
            benchmark::DoNotOptimize(cosines.data());
            benchmark::ClobberMemory();
        },
        [&] { std::ranges::copy(original, data.begin()); });
}

void Hanning_window_against_cosines(benchmark::State &state) { compare_with_cosines(state, wkHanning, 0.0); }
MENSURA_COMPARE(Hanning_window_against_cosines, 400)->Arg(65536);

void Kaiser_window_against_cosines(benchmark::State &state) { compare_with_cosines(state, wkKaiser, 8.0); }
MENSURA_COMPARE(Kaiser_window_against_cosines, 40)->Arg(65536);

}  // namespace

BENCHMARK_MAIN();
