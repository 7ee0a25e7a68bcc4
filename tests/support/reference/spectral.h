// Transforms by the sum of their definition, and the fast one in plain steps.
#pragma once

#include <mensura/spectral.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <span>
#include <vector>

namespace reference {

// exp(2 pi i k / n)
inline std::vector<std::complex<long double>> unit_circle(std::size_t n) {
    std::vector<std::complex<long double>> w(n);
    for (std::size_t k = 0; k < n; ++k) w[k] = std::polar(1.0L, 2 * std::numbers::pi_v<long double> * k / n);
    return w;
}

// sum_t x[t] w[k t mod n] with the n numbers w above: bin k of the inverse transform, and n times bin n - k of the
// forward one.
inline std::complex<long double> dft_sum(std::span<const std::complex<long double>> w,
                                         std::span<const std::complex<double>> x, std::size_t k) {
    std::complex<long double> sum;
    for (std::size_t t = 0; t < x.size(); ++t) sum += w[k * t % w.size()] * std::complex<long double>(x[t]);
    return sum;
}

// DFT, for a direction of 0 or 1, with angles and sums in double precision.
inline void dft(double *re, double *im, int n, int dir) {
    const std::vector<double> x_re(re, re + n), x_im(im, im + n);
    for (std::size_t k = 0; k < x_re.size(); ++k) {
        double sum_re = 0, sum_im = 0;
        for (std::size_t t = 0; t < x_re.size(); ++t) {
            const double angle = static_cast<double>(k * t % x_re.size()) * (2 * std::numbers::pi) / n;
            const double cos = std::cos(angle), sin = dir == 0 ? -std::sin(angle) : std::sin(angle);
            sum_re += cos * x_re[t] - sin * x_im[t];
            sum_im += sin * x_re[t] + cos * x_im[t];
        }
        re[k] = sum_re / (dir == 0 ? n : 1);
        im[k] = sum_im / (dir == 0 ? n : 1);
    }
}

// FFT, stage after stage through memory, for a valid size.
inline void fft(double *re, double *im, int n, int dir) {
    const auto size = static_cast<std::size_t>(n);
    std::vector<double> other_re(size), other_im(size), twiddle_re(size / 2), twiddle_im(size / 2);
    std::vector<int> index(size);
    ReArrangeInput(re, im, other_re.data(), other_im.data(), index.data(), n);
    FillTwiddleArray(twiddle_re.data(), twiddle_im.data(), n, dir);
    Transform(re, im, other_re.data(), other_im.data(), twiddle_re.data(), twiddle_im.data(), n);
    if (IsValidFFTSize(n) % 2 == 0) {  // the last stage has written into the other arrays
        std::ranges::copy(other_re, re);
        std::ranges::copy(other_im, im);
    }
    for (std::size_t k = 0; k < size && dir == 0; ++k) {
        re[k] *= 1.0 / n;
        im[k] *= 1.0 / n;
    }
}

}  // namespace reference
