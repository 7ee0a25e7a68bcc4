// Lines in a spectrum.
#pragma once

#include <cstddef>
#include <vector>

#include "cli/spectra/bands.h"
#include "cli/spectra/spectrum.h"

namespace cli {

struct Peak {
    double frequency;  // Hz
    double amplitude;
};

// The highest peaks within a band, the highest first, by the maximum of the transform between its bins.  `amplitudes`
// is that of the segments.  A maximum is no peak if it is not higher than what all higher peaks together can have there
// by the side lobes of the window; nor is one at 0 Hz or at half the rate.
std::vector<Peak> highest_peaks(std::vector<double> amplitudes, const Segments &segments, double rate,
                                const FrequencyBand &band, std::size_t most);

}  // namespace cli
