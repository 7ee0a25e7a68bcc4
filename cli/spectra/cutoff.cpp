#include "cli/spectra/cutoff.h"

#include <mensura/complex.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <vector>

#include "cli/spectra/transform.h"

namespace cli {

namespace {

constexpr std::size_t kLongestQuick = kLongestTransform / 2;  // samples that Transform takes in n log n steps

double cutoff_at(double last, std::size_t samples, double rate) {
    constexpr double kSafety = 15;  // cut-off over the highest frequency that counts as signal
    return last * rate / (static_cast<double>(samples) - 1) * kSafety;
}

// How far |X[k]| may be off in either way of finding it.  A sum of n rounded products, with the rounding of their
// angles, is off by (n + 100) eps sum |x| at most; the FFTs of a chirp, of 20 steps each, by less than 512 times that.
// Squares that underflow are far below the rest.
double error_bound(std::span<const double> samples) {
    constexpr double kFactor = 512, kUnderflow = 1e-150;
    double sum = 0;
    for (const double x : samples) sum += std::abs(x);
    return kFactor * (static_cast<double>(samples.size()) + 100) * DBL_EPSILON * sum + kUnderflow;
}

}  // namespace

std::optional<double> quick_cutoff(std::span<const double> samples, double rate, double ratio) {
    constexpr double kLargestSum = 1e150;  // squares beyond overflow
    const double error = error_bound(samples), n = static_cast<double>(samples.size());
    if (samples.size() > kLongestQuick || !(error < kLargestSum)) return {};
    std::vector<double> magnitude = Transform(samples.size()).moduli({samples.begin(), samples.end()});
    magnitude.resize(samples.size() / 2);
    for (double &modulus : magnitude) modulus *= n;
    const double largest = *std::max_element(magnitude.begin() + 1, magnitude.end());
    for (std::size_t k = magnitude.size(); k-- > 0;) {
        if (magnitude[k] - error > ratio * (largest + error))
            return cutoff_at(static_cast<double>(k), samples.size(), rate);
        if (magnitude[k] + error >= ratio * (largest - error)) break;  // not certain
    }
    return {};
}

double automatic_cutoff(std::span<const double> samples, double rate, double ratio) {
    const Bins bins = inverse_transform({samples.begin(), samples.end()});
    std::vector<double> magnitude(samples.size() / 2);
    for (std::size_t k = 0; k < magnitude.size(); ++k) magnitude[k] = CplxDCabs({bins.re[k], bins.im[k]});

    std::size_t peak = 0;
    double largest = 0;
    for (std::size_t k = 1; k < magnitude.size(); ++k) {
        if (!(magnitude[k] > largest)) continue;
        largest = magnitude[k];
        peak = k;
    }
    std::size_t count = magnitude.size();  // up to the last that exceeds the threshold
    while (count > peak && magnitude[count - 1] <= ratio * largest) --count;
    return cutoff_at(static_cast<double>(count) - 1, samples.size(), rate);
}

}  // namespace cli
