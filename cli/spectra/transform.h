// Transforms of real samples.
#pragma once

#include <cstddef>
#include <vector>

namespace cli {

inline constexpr int kLongestTransform = 1048576;  // points, of FFT

struct Bins {
    std::vector<double> re, im;
};

// The forward transform of n points.  Where n is no size of FFT and not small, it is a convolution with a chirp, which
// takes n log n steps instead of n^2 (Bluestein, IEEE Trans Audio Electroacoust 18:451, 1970).
class Transform {
  public:
    explicit Transform(std::size_t points);
    // |sum x[t] exp(-2 pi i k t / n)| / n at k = 0 .. n / 2; samples that are missing at the end count as 0.
    std::vector<double> moduli(std::vector<double> samples) const;

  private:
    Bins forward(const std::vector<double> &samples) const;
    Bins by_chirp(const std::vector<double> &samples) const;

    std::size_t points_;
    Bins chirp_ = {};   // exp(-i pi t^2 / n); none where it is not needed
    Bins kernel_ = {};  // the transform of its conjugate, continued to both sides
};

// sum x[t] exp(2 pi i k t / n) at k = 0 .. n - 1, in n^2 steps.
Bins inverse_transform(const std::vector<double> &samples);

}  // namespace cli
