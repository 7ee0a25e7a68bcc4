// Amplitudes over frequency, by transforms or at single frequencies.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "cli/spectra/transform.h"
#include "cli/spectra/window.h"

namespace cli {

// What becomes of an amplitude A.
enum class Scale {
    Amplitude,
    Power,          // A^2 / 2; at 0 and Nyquist, which have no mirror image, A^2
    Density,        // power per Hz
    Decibel,        // 20 log10 A
    DensityDecibel  // 10 log10 of the density
};

const char *key_of(Scale scale);  // in JSON

struct SpectrumOptions {
    Window window = {};
    bool window_chosen = false;
    Scale scale = Scale::Amplitude;
    bool no_mean = false;
};

inline constexpr double kUsualOverlap = 50;  // percent

// Segments whose powers are averaged.
struct Averaging {
    std::optional<int> segment = {};  // samples
    double overlap = kUsualOverlap;   // percent of a segment
    bool median = false;              // of the powers in each bin, instead of their mean
};

// The record in runs of even samples.
using Pieces = std::vector<std::span<const double>>;

// How a record is transformed: in segments of equal length, each padded with zeros to the points of its transform.
struct SpectrumLayout {
    std::size_t samples, points;
    std::size_t step = samples;  // from the start of a segment to that of the next

    std::size_t bins() const { return points / 2 + 1; }
    // Whether a bin has a mirror image that holds half of a line: all but 0 and Nyquist.
    bool mirrored(std::size_t bin) const { return bin > 0 && 2 * bin < points; }
    double frequency(std::size_t bin, double rate) const {
        return static_cast<double>(bin) * rate / static_cast<double>(points);
    }
    // The amplitude over the modulus in a bin of the transform.
    double amplitude_factor(std::size_t bin) const {
        const double padding = static_cast<double>(points) / static_cast<double>(samples);
        return mirrored(bin) ? 2 * padding : padding;
    }
};

// The whole record, unless it is longer than the longest transform.
SpectrumLayout layout_for(std::size_t samples);

// The longest power of two of which, with half of each overlapped, eight segments fit into so many samples; at least 8,
// but no more than there are.
std::size_t usual_segment(std::size_t samples);

// Segments that fit into this many samples, else they are refused.
SpectrumLayout layout_for(std::size_t samples, const Averaging &averaging);
SpectrumLayout layout_of(std::size_t segment, double overlap);

// The width of a rectangle that passes as much of a white noise as the window, in units of the rate.
double noise_bandwidth(const Window &window, std::size_t samples);

// A segment less its mean, if that is asked for, times the weights.  Samples whose squares overflow are refused.
void prepare(std::vector<double> &segment, const std::vector<double> &weights, bool no_mean);

// The segments of a channel under a window.
class Segments {
  public:
    Segments(const Pieces &pieces, const SpectrumLayout &layout, const Window &window, bool no_mean,
             bool median = false);

    // The amplitude in every bin: a sine of amplitude A in the middle of one gives A whatever the window.
    std::vector<double> amplitudes() const;
    // That of a sine of this frequency, in units of the rate, between 0 and 1/2.
    double amplitude_at(double frequency) const;
    std::size_t count() const { return starts_.size(); }
    const SpectrumLayout &layout() const { return layout_; }
    const Window &window() const { return window_; }

  private:
    std::vector<double> prepared(std::size_t segment) const;
    std::vector<double> mean_powers() const;
    std::vector<double> median_powers() const;

    SpectrumLayout layout_;
    Window window_;
    std::vector<double> weights_;  // of mean 1
    Transform transform_;
    bool no_mean_, median_;
    std::vector<const double *> starts_;
};

// The amplitude in every bin of layout_for(samples.size()).
std::vector<double> amplitude_spectrum(const std::vector<double> &samples, const Window &window, bool no_mean);

// The amplitudes at single frequencies from 0 to rate / 2.
std::vector<double> amplitudes_at(const std::vector<double> &frequencies, double rate, std::vector<double> samples,
                                  const Window &window, bool no_mean);

// `bandwidth`: the window's noise bandwidth in Hz, for densities.
double scaled(double amplitude, bool mirrored, Scale scale, double bandwidth = 1);

}  // namespace cli
