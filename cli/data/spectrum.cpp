#include "cli/data/spectrum.h"

#include <mensura/spectral.h>

#include <cmath>
#include <numeric>
#include <utility>

#include "cli/data/transform.h"

namespace cli {

namespace {

constexpr std::size_t kLongestFFT = 1048576;
constexpr std::size_t kLongestSum = 32768;  // of RealSigDFT, whose time grows as its square: a second or so

void remove_mean(std::vector<double> &samples) {
    const long double sum = std::accumulate(samples.begin(), samples.end(), 0.0L);
    const double mean = static_cast<double>(sum / static_cast<long double>(samples.size()));
    for (double &sample : samples) sample -= mean;
}

void multiply(std::vector<double> &samples, const std::vector<double> &weights) {
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] *= weights[i];
}

// |sum x[t] exp(-2 pi i k t / n)| / n for every bin k of n points.
std::vector<double> moduli(std::vector<double> samples, std::size_t points) {
    samples.resize(points);
    Bins bins = forward_transform(samples);
    bins.re.resize(points / 2 + 1);
    for (std::size_t k = 0; k < bins.re.size(); ++k) bins.re[k] = std::hypot(bins.re[k], bins.im[k]);
    return std::move(bins.re);
}

// |sum x[t] exp(-i pi f t)|.  Goertzel is the faster way, but it loses digits near 0 and Nyquist, and where it finds
// nothing it gives the square root of 1e-12.
double modulus_at(const std::vector<double> &samples, double f) {
    constexpr double kFirst = 0.1, kLast = 0.9;  // of the Nyquist frequency: between them it keeps its digits
    constexpr double kNothing = 1.001e-6;        // with room for rounding
    const int n = static_cast<int>(samples.size());
    const double goertzel = f > kFirst && f < kLast ? Goertzel(samples.data(), n, f) : 0;
    return goertzel > kNothing ? goertzel : SingleFreqDFT(samples.data(), n, f);
}

}  // namespace

SpectrumLayout layout_for(std::size_t samples) {
    const std::size_t parts = (samples + kLongestFFT - 1) / kLongestFFT, length = samples / parts;
    if (length <= kLongestSum) return {parts, length, length};
    return {parts, length, static_cast<std::size_t>(RequiredFFTSize(static_cast<int>(length)))};
}

std::vector<double> amplitude_spectrum(std::vector<double> samples, const Window &window, bool no_mean) {
    if (no_mean) remove_mean(samples);
    const SpectrumLayout layout = layout_for(samples.size());
    const std::vector<double> weights = weights_of(window, layout.samples, true);
    const auto length = static_cast<std::ptrdiff_t>(layout.samples);
    std::vector<double> amplitudes(layout.bins());
    for (auto part = samples.begin(); samples.end() - part >= length; part += length) {
        std::vector<double> block(part, part + length);
        multiply(block, weights);
        const std::vector<double> bins = moduli(std::move(block), layout.points);
        for (std::size_t k = 0; k < bins.size(); ++k) amplitudes[k] = std::hypot(amplitudes[k], bins[k]);
    }
    const double padding = static_cast<double>(layout.points) / static_cast<double>(layout.samples);
    const double scale = padding / std::sqrt(static_cast<double>(layout.parts));
    for (std::size_t k = 0; k < amplitudes.size(); ++k) amplitudes[k] *= layout.mirrored(k) ? 2 * scale : scale;
    return amplitudes;
}

std::vector<double> amplitudes_at(const std::vector<double> &frequencies, double rate, std::vector<double> samples,
                                  const Window &window, bool no_mean) {
    if (no_mean) remove_mean(samples);
    multiply(samples, weights_of(window, samples.size(), true));
    std::vector<double> amplitudes;
    for (const double frequency : frequencies) {
        const bool mirrored = frequency > 0 && frequency < 0.5 * rate;
        amplitudes.push_back((mirrored ? 2 : 1) * modulus_at(samples, 2 * frequency / rate) /
                             static_cast<double>(samples.size()));
    }
    return amplitudes;
}

double scaled(double amplitude, bool mirrored, Scale scale) {
    if (scale == Scale::Decibel) return 20 * std::log10(amplitude);
    if (scale == Scale::Power) return amplitude * amplitude * (mirrored ? 0.5 : 1);
    return amplitude;
}

}  // namespace cli
