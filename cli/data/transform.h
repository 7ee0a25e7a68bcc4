// Transforms of real samples.
#pragma once

#include <vector>

namespace cli {

struct Bins {
    std::vector<double> re, im;
};

// sum x[t] exp(-2 pi i k t / n) / n at k = 0 .. n / 2; k beyond that is not defined.  Takes n log n steps where n is a
// size of FFT, else n^2.
Bins forward_transform(const std::vector<double> &samples);

// sum x[t] exp(2 pi i k t / n) at k = 0 .. n - 1, in n^2 steps.
Bins inverse_transform(const std::vector<double> &samples);

}  // namespace cli
