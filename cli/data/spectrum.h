// Amplitudes over frequency, by transforms or at single frequencies.
#pragma once

#include <cstddef>
#include <vector>

#include "cli/data/window.h"

namespace cli {

enum class Scale { Amplitude, Power, Decibel };

struct SpectrumOptions {
    Window window = {};
    Scale scale = Scale::Amplitude;
    bool no_mean = false;
};

// How a record is transformed: in equal parts, each padded with zeros to the points of its transform.
struct SpectrumLayout {
    std::size_t parts, samples, points;

    std::size_t bins() const { return points / 2 + 1; }
    // Whether a bin has a mirror image that holds half of a line: all but 0 and Nyquist.
    bool mirrored(std::size_t bin) const { return bin > 0 && 2 * bin < points; }
    double frequency(std::size_t bin, double rate) const {
        return static_cast<double>(bin) * rate / static_cast<double>(points);
    }
};
SpectrumLayout layout_for(std::size_t samples);

// The amplitude in every bin of layout_for(samples.size()): a sine of amplitude A in the middle of one gives A
// whatever the window.
std::vector<double> amplitude_spectrum(std::vector<double> samples, const Window &window, bool no_mean);

// The amplitudes at single frequencies from 0 to rate / 2.
std::vector<double> amplitudes_at(const std::vector<double> &frequencies, double rate, std::vector<double> samples,
                                  const Window &window, bool no_mean);

// An amplitude A as A, as its power A^2 / 2 (A^2 at 0 and Nyquist, which have no mirror image), or as 20 log10 A.
double scaled(double amplitude, bool mirrored, Scale scale);

}  // namespace cli
