#include "cli/spectra/spectrum.h"

#include <mensura/spectral.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>
#include <numeric>
#include <utility>

#include "cli/app/diagnostics.h"

namespace cli {

namespace {

constexpr std::size_t kShortestFFT = 8, kLongestFFT = kLongestTransform;
constexpr std::size_t kLongestRecord = 32768, kLongestSegment = 524288;  // longer ones are padded with zeros
constexpr std::size_t kMostModuli = std::size_t{1} << 28;                // numbers kept for medians: 2 GiB
constexpr double kLargestSample = 1e140;  // 2^31 of them give a sum whose square is finite

void remove_mean(std::vector<double> &samples) {
    const long double sum = std::accumulate(samples.begin(), samples.end(), 0.0L);
    const double mean = static_cast<double>(sum / static_cast<long double>(samples.size()));
    for (double &sample : samples) sample -= mean;
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

std::size_t points_for(std::size_t samples, std::size_t longest) {
    return samples <= longest ? samples : static_cast<std::size_t>(RequiredFFTSize(static_cast<int>(samples)));
}

std::size_t segments_in(std::size_t samples, const SpectrumLayout &layout) {
    return samples < layout.samples ? 0 : 1 + (samples - layout.samples) / layout.step;
}

// The expected median of n powers of noise over their mean, which it approaches ln 2 times: with m = (n - 1) / 2
//     1 + sum (1 / (2i + 1) - 1 / 2i), i = 1 .. m     (Allen et al., Phys. Rev. D 85, 122006, 2012, appendix B)
double median_bias(std::size_t n) {
    double bias = 1;
    for (std::size_t i = 1; i <= (n - 1) / 2; ++i) {
        const double twice = 2 * static_cast<double>(i);
        bias += 1 / (twice + 1) - 1 / twice;
    }
    return bias;
}

// The square root of the mean of the squares, and of their median without its bias.
double rms(std::span<const double> values) {
    double sum = 0;
    for (const double value : values) sum = std::hypot(sum, value);
    return sum / std::sqrt(static_cast<double>(values.size()));
}

double root_of_median(std::span<double> values) {
    const std::size_t half = values.size() / 2;
    std::ranges::nth_element(values, values.begin() + static_cast<std::ptrdiff_t>(half));
    double median = values[half];
    if (values.size() % 2 == 0)
        median = std::hypot(median, *std::ranges::max_element(values.first(half))) * std::numbers::sqrt2 / 2;
    return median / std::sqrt(median_bias(values.size()));
}

}  // namespace

const char *key_of(Scale scale) {
    switch (scale) {
        case Scale::Amplitude: break;
        case Scale::Power: return "power";
        case Scale::Density: return "density_per_Hz";
        case Scale::Decibel: return "amplitude_dB";
        case Scale::DensityDecibel: return "density_dB";
    }
    return "amplitude";
}

SpectrumLayout layout_for(std::size_t samples) {
    const std::size_t parts = (samples + kLongestFFT - 1) / kLongestFFT, length = samples / parts;
    return {length, points_for(length, kLongestRecord)};
}

std::size_t usual_segment(std::size_t samples) {
    const std::size_t most = std::clamp(2 * samples / 9, kShortestFFT, kLongestFFT);
    return std::min(std::bit_floor(most), samples);
}

SpectrumLayout layout_of(std::size_t segment, double overlap) {
    const auto overlapped = static_cast<std::size_t>(overlap * static_cast<double>(segment) / 100);
    return {segment, points_for(segment, kLongestSegment), segment - overlapped};
}

SpectrumLayout layout_for(std::size_t samples, const Averaging &averaging) {
    const std::size_t segment =
        averaging.segment ? static_cast<std::size_t>(*averaging.segment) : usual_segment(samples);
    if (segment > samples) reject("--segment {}: {} samples in a row are all that there is", segment, samples);
    return layout_of(segment, averaging.overlap);
}

// Of weights with a mean of 1: sum w^2 / (sum w)^2.
double noise_bandwidth(const Window &window, std::size_t samples) {
    const std::vector<double> weights = weights_of(window, samples, true);
    const auto n = static_cast<double>(samples);
    return std::inner_product(weights.begin(), weights.end(), weights.begin(), 0.0) / (n * n);
}

void prepare(std::vector<double> &segment, const std::vector<double> &weights, bool no_mean) {
    for (const double sample : segment)
        if (std::abs(sample) > kLargestSample)
            reject("a sample of {} is too large: the squares of its spectrum overflow beyond {}", sample,
                   kLargestSample);
    if (no_mean) remove_mean(segment);
    for (std::size_t i = 0; i < segment.size(); ++i) segment[i] *= weights[i];
}

Segments::Segments(const Pieces &pieces, const SpectrumLayout &layout, const Window &window, bool no_mean, bool median)
    : layout_(layout),
      window_(window),
      weights_(weights_of(window, layout.samples, true)),
      transform_(layout.points),
      no_mean_(no_mean),
      median_(median) {
    for (const std::span<const double> piece : pieces)
        for (std::size_t i = 0, count = segments_in(piece.size(), layout); i < count; ++i)
            starts_.push_back(piece.data() + i * layout.step);
    if (median && count() > kMostModuli / layout.bins())
        reject("the median of {} segments of {} samples takes too much memory; take their mean, or a lower --overlap",
               count(), layout.samples);
}

std::vector<double> Segments::prepared(std::size_t segment) const {
    std::vector<double> samples(starts_[segment], starts_[segment] + layout_.samples);
    prepare(samples, weights_, no_mean_);
    return samples;
}

std::vector<double> Segments::mean_powers() const {
    std::vector<double> sums(layout_.bins());
    for (std::size_t i = 0; i < starts_.size(); ++i) {
        const std::vector<double> bins = transform_.moduli(prepared(i));
        for (std::size_t k = 0; k < sums.size(); ++k) sums[k] = std::hypot(sums[k], bins[k]);
    }
    for (double &sum : sums) sum /= std::sqrt(static_cast<double>(starts_.size()));
    return sums;
}

std::vector<double> Segments::median_powers() const {
    const std::size_t n = count();
    std::vector<double> all(layout_.bins() * n), roots(layout_.bins());
    for (std::size_t i = 0; i < n; ++i) {
        const std::vector<double> bins = transform_.moduli(prepared(i));
        for (std::size_t k = 0; k < bins.size(); ++k) all[k * n + i] = bins[k];
    }
    for (std::size_t k = 0; k < roots.size(); ++k) roots[k] = root_of_median(std::span(all).subspan(k * n, n));
    return roots;
}

std::vector<double> Segments::amplitudes() const {
    std::vector<double> bins = median_ ? median_powers() : mean_powers();
    for (std::size_t k = 0; k < bins.size(); ++k) bins[k] *= layout_.amplitude_factor(k);
    return bins;
}

double Segments::amplitude_at(double frequency) const {
    std::vector<double> moduli(starts_.size());
    for (std::size_t i = 0; i < starts_.size(); ++i) moduli[i] = modulus_at(prepared(i), 2 * frequency);
    return 2 * (median_ ? root_of_median(moduli) : rms(moduli)) / static_cast<double>(layout_.samples);
}

std::vector<double> amplitude_spectrum(const std::vector<double> &samples, const Window &window, bool no_mean) {
    return Segments({samples}, layout_for(samples.size()), window, no_mean).amplitudes();
}

std::vector<double> amplitudes_at(const std::vector<double> &frequencies, double rate, std::vector<double> samples,
                                  const Window &window, bool no_mean) {
    prepare(samples, weights_of(window, samples.size(), true), no_mean);
    std::vector<double> amplitudes;
    for (const double frequency : frequencies) {
        const bool mirrored = frequency > 0 && frequency < 0.5 * rate;
        amplitudes.push_back((mirrored ? 2 : 1) * modulus_at(samples, 2 * frequency / rate) /
                             static_cast<double>(samples.size()));
    }
    return amplitudes;
}

double scaled(double amplitude, bool mirrored, Scale scale, double bandwidth) {
    const double power = amplitude * amplitude * (mirrored ? 0.5 : 1);
    switch (scale) {
        case Scale::Amplitude: break;
        case Scale::Power: return power;
        case Scale::Density: return power / bandwidth;
        case Scale::Decibel: return 20 * std::log10(amplitude);
        case Scale::DensityDecibel:  // in the amplitude, whose square may be 0 or infinite
            return 20 * std::log10(amplitude) - 10 * std::log10(bandwidth * (mirrored ? 2 : 1));
    }
    return amplitude;
}

}  // namespace cli
