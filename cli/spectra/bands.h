// Bands of frequencies and what lies in them.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "cli/spectra/spectrum.h"

namespace cli {

struct FrequencyBand {
    double from, to;  // Hz
};

// Refuses a band that is empty or not within 0 and half the rate.
void check_band(const std::string &option, const FrequencyBand &band, double rate);

// The bins of a layout that lie within a band.
struct BinRange {
    std::size_t begin, end;
};
// Those within --from and --to, where these are given; refuses them if that is none.
BinRange bins_within(std::optional<double> from, std::optional<double> to, const SpectrumLayout &layout, double rate);

// The square root of the mean square in a band; `bandwidth` is the window's noise bandwidth in Hz.  Each bin has its
// power spread evenly over its width, rate / points around its centre, of which the bins at 0 and Nyquist have one
// half; where a bin lies partly in the band, so does its power.  A sum over all bins is the mean square of the record
// under its window, whatever the window.
double rms_in(const FrequencyBand &band, const std::vector<double> &amplitudes, const SpectrumLayout &layout,
              double rate, double bandwidth);

}  // namespace cli
