// The beats of an electrocardiogram.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace cli {

// Samples at the tops of the R peaks of a record in mV, in ascending order.
//
// The height of a peak is counted from the middle between the samples 50 ms before and after it,
//     h[i] = x[i] - (x[i - d] + x[i + d]) / 2,  d = 50 ms,
// where a slow excursion of the baseline, however high, has none.  50 ms are three periods of a hum of 60 Hz, which
// therefore cancels.  An R peak is 1 mV high at least, and the highest within 200 ms.
std::vector<std::size_t> r_peaks(std::span<const double> ecg, double rate);

// The heights of the same beats in a signal that lags by `lag` samples; the tops may have moved by 8 ms.
std::vector<double> heights_of(std::span<const std::size_t> peaks, std::span<const double> ecg, double rate, int lag);

double median(std::vector<double> values);

}  // namespace cli
