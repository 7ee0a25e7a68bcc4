#include "cli/data/cutoff.h"

#include <mensura/complex.h>

#include <cstddef>
#include <vector>

#include "cli/data/transform.h"

namespace cli {

double automatic_cutoff(std::span<const double> samples, double rate, double ratio) {
    constexpr double kSafety = 15;  // cut-off over the highest frequency that counts as signal
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
    const double last = static_cast<double>(count) - 1;
    return last * rate / (static_cast<double>(samples.size()) - 1) * kSafety;
}

}  // namespace cli
