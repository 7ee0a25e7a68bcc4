#include "cli/spectra/transform.h"

#include <mensura/spectral.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <new>
#include <numbers>
#include <utility>

namespace cli {

namespace {

constexpr std::size_t kLongestSum = 512;  // of RealSigDFT, beyond which a chirp is faster

// The library leaves the data as they were when it finds no memory.  Only zeros and single samples are their own
// transform: otherwise its norm is larger or smaller than theirs by the factor sqrt(n).
void expect_transformed(const Bins &bins, const std::vector<double> &samples) {
    const bool all_zero = std::ranges::all_of(samples, [](double x) { return x == 0; });
    if (samples.size() > 1 && bins.re == samples && !all_zero) throw std::bad_alloc();
}

void fft(Bins &data, int direction) {
    const std::vector<double> before = data.re;
    FFT(data.re.data(), data.im.data(), static_cast<int>(data.re.size()), direction);
    expect_transformed(data, before);
}

void multiply(Bins &data, const Bins &by, double factor) {
    for (std::size_t k = 0; k < data.re.size(); ++k) {
        const double re = data.re[k], im = data.im[k];
        data.re[k] = factor * (re * by.re[k] - im * by.im[k]);
        data.im[k] = factor * (re * by.im[k] + im * by.re[k]);
    }
}

}  // namespace

Transform::Transform(std::size_t points) : points_(points) {
    const std::size_t length = std::bit_ceil(2 * points);
    if (IsValidFFTSize(static_cast<int>(points)) != 0 || points <= kLongestSum || length > kLongestTransform) return;
    chirp_ = {std::vector<double>(points), std::vector<double>(points)};
    kernel_ = {std::vector<double>(length), std::vector<double>(length)};
    for (std::size_t t = 0; t < points; ++t) {
        const std::uint64_t turns = std::uint64_t{t} * t % (2 * points);  // of pi / n: exact, and the angle small
        const double angle = std::numbers::pi * static_cast<double>(turns) / static_cast<double>(points);
        chirp_.re[t] = kernel_.re[t] = kernel_.re[(length - t) % length] = std::cos(angle);
        kernel_.im[t] = kernel_.im[(length - t) % length] = std::sin(angle);
        chirp_.im[t] = -kernel_.im[t];
    }
    fft(kernel_, 0);
}

// X[k] = c[k] sum x[t] c[t] conj(c[k - t]) with c[t] = exp(-i pi t^2 / n), as 2 k t = k^2 + t^2 - (k - t)^2.  Both
// forward transforms are divided by their length.
Bins Transform::by_chirp(const std::vector<double> &samples) const {
    const std::size_t length = kernel_.re.size();
    Bins data{std::vector<double>(length), std::vector<double>(length)};
    for (std::size_t t = 0; t < points_; ++t) {
        data.re[t] = samples[t] * chirp_.re[t];
        data.im[t] = samples[t] * chirp_.im[t];
    }
    fft(data, 0);
    multiply(data, kernel_, static_cast<double>(length));
    fft(data, 1);
    data.re.resize(points_);
    data.im.resize(points_);
    multiply(data, chirp_, 1 / static_cast<double>(points_));
    return data;
}

Bins Transform::forward(const std::vector<double> &samples) const {
    if (!chirp_.re.empty()) return by_chirp(samples);
    Bins bins{samples, std::vector<double>(samples.size())};
    if (IsValidFFTSize(static_cast<int>(points_)) != 0)
        FFT(bins.re.data(), bins.im.data(), static_cast<int>(points_), 0);
    else
        RealSigDFT(samples.data(), bins.re.data(), bins.im.data(), static_cast<int>(points_));
    expect_transformed(bins, samples);
    return bins;
}

std::vector<double> Transform::moduli(std::vector<double> samples) const {
    samples.resize(points_);
    Bins bins = forward(samples);
    bins.re.resize(points_ / 2 + 1);
    for (std::size_t k = 0; k < bins.re.size(); ++k) bins.re[k] = std::hypot(bins.re[k], bins.im[k]);
    return std::move(bins.re);
}

Bins inverse_transform(const std::vector<double> &samples) {
    Bins bins{samples, std::vector<double>(samples.size())};
    DFT(bins.re.data(), bins.im.data(), static_cast<int>(samples.size()), 1);
    expect_transformed(bins, samples);
    return bins;
}

}  // namespace cli
