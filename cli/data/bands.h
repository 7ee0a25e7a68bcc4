// Bands of frequencies and what lies in them.
#pragma once

#include <vector>

#include "cli/data/spectrum.h"

namespace cli {

struct FrequencyBand {
    double from, to;  // Hz
};

// The square root of the mean square in a band; `bandwidth` is the window's noise bandwidth in Hz.  Each bin has its power spread
// evenly over its width, rate / points around its centre, of which the bins at 0 and Nyquist have one half; where a
// bin lies partly in the band, so does its power.  A sum over all bins is the mean square of the record under its window,
// whatever the window.
double rms_in(const FrequencyBand &band, const std::vector<double> &amplitudes, const SpectrumLayout &layout,
              double rate, double bandwidth);

}  // namespace cli
