#include "cli/spectra/bands.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "cli/app/diagnostics.h"

namespace cli {

void check_band(const std::string &option, const FrequencyBand &band, double rate) {
    if (!(band.from >= 0 && band.from < band.to && band.to <= 0.5 * rate))
        reject("{}: {} Hz to {} Hz must lie within 0 and {} Hz, half the sampling rate, the lower one first", option,
               band.from, band.to, 0.5 * rate);
}

BinRange bins_within(std::optional<double> from, std::optional<double> to, const SpectrumLayout &layout, double rate) {
    const FrequencyBand band{from.value_or(0), to.value_or(0.5 * rate)};
    if (from || to) check_band("--from and --to", band, rate);
    BinRange range{0, 0};
    while (range.begin < layout.bins() && layout.frequency(range.begin, rate) < band.from) ++range.begin;
    range.end = range.begin;
    while (range.end < layout.bins() && layout.frequency(range.end, rate) <= band.to) ++range.end;
    if (range.begin == range.end)
        reject("--from and --to: no frequency lies between {} Hz and {} Hz; they are {} Hz apart", band.from, band.to,
               layout.frequency(1, rate));
    return range;
}

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
