#include "cli/data/bands.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace cli {

// With the density p = A^2 / 2 / bandwidth: sqrt(sum p times the width that lies in the band).
double rms_in(const FrequencyBand &band, const std::vector<double> &amplitudes, const SpectrumLayout &layout,
              double rate, double bandwidth) {
    const double width = layout.frequency(1, rate);
    double sum = 0;
    for (std::size_t k = 0; k < amplitudes.size(); ++k) {
        const double centre = layout.frequency(k, rate);
        const double low = std::max(band.from, centre - 0.5 * width), high = std::min(band.to, centre + 0.5 * width);
        // half of a bin at 0 or Nyquist has the whole power
        const double share = (layout.mirrored(k) ? 0.5 : 2) * std::max(high - low, 0.0) / bandwidth;
        sum = std::hypot(sum, amplitudes[k] * std::sqrt(share));
    }
    return sum;
}

}  // namespace cli
