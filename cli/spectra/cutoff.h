// The cut-off that the spectrum of a record suggests.
#pragma once

#include <optional>
#include <span>

namespace cli {

// What dataZeroPhaseFilter chooses.  With X[k] = sum x[t] exp(2 pi i k t / n) and K the last k below n / 2 at which
// |X[k]| exceeds `ratio` times the largest |X[k]| of 1 <= k < n / 2,
//     cut-off = 15 K rate / (n - 1),
// in Hz; not above 0 when the spectrum has no peak.  Takes 4 samples at least, and n^2 steps.
double automatic_cutoff(std::span<const double> samples, double rate, double ratio);

// The same in n log n steps, unless a magnitude lies so close to the threshold that rounding could decide, or there are
// more than 524288 samples.
std::optional<double> quick_cutoff(std::span<const double> samples, double rate, double ratio);

}  // namespace cli
