#include "cli/data/transform.h"

#include <mensura/spectral.h>

#include <algorithm>
#include <new>

namespace cli {

namespace {

// The library leaves the data as they were when it finds no memory.  Only zeros and single samples are their own
// transform: otherwise its norm is larger or smaller than theirs by the factor sqrt(n).
void expect_transformed(const Bins &bins, const std::vector<double> &samples) {
    const bool all_zero = std::ranges::all_of(samples, [](double x) { return x == 0; });
    if (samples.size() > 1 && bins.re == samples && !all_zero) throw std::bad_alloc();
}

}  // namespace

Bins forward_transform(const std::vector<double> &samples) {
    const int n = static_cast<int>(samples.size());
    Bins bins{samples, std::vector<double>(samples.size())};
    if (IsValidFFTSize(n) != 0)
        FFT(bins.re.data(), bins.im.data(), n, 0);
    else
        RealSigDFT(samples.data(), bins.re.data(), bins.im.data(), n);
    expect_transformed(bins, samples);
    return bins;
}

Bins inverse_transform(const std::vector<double> &samples) {
    Bins bins{samples, std::vector<double>(samples.size())};
    DFT(bins.re.data(), bins.im.data(), static_cast<int>(samples.size()), 1);
    expect_transformed(bins, samples);
    return bins;
}

}  // namespace cli
