// The twiddle factors of all passes up to 4096 points, taken from the table when this file is compiled.

#include <cstddef>

#include "fft_kernel.h"

namespace mensura::spectral {
namespace {

struct Factor {
    double re, im;
};

// exp(-2 pi i k / points), k < points / 2
constexpr Factor factor(std::size_t k, std::size_t points) {
    if (4 * k >= points) {
        const Factor w = factor(k - points / 4, points);
        return {w.im, -w.re};
    }
    const bool mirrored = 8 * k > points;
    const auto [cos, sin] = kCircle[(mirrored ? points / 4 - k : k) * (kCirclePoints / points)];
    if (k == 0) return {1, 0};
    return mirrored ? Factor{sin, -cos} : Factor{cos, -sin};
}

constexpr Bins factors(std::size_t k, std::size_t points) {
    const Factor a = factor(k, points), b = factor(k + 1, points), c = factor(k + 2, points), d = factor(k + 3, points);
    return {Lanes{a.re, b.re, c.re, d.re}, Lanes{a.im, b.im, c.im, d.im}};
}

constexpr void fill_pass(Twiddles *table, std::size_t q) {
    for (std::size_t i = 0; i < q; ++i)
        table[ready_before(q) + i] = {factors(kLanes * i, 8 * q), factors(kLanes * i, 16 * q)};
}

constexpr ReadyFactors all_passes() {
    ReadyFactors ready{};
    for (std::size_t q = 1; q <= kReadyVectors; q *= 4) fill_pass(ready.even, q);
    for (std::size_t q = 2; q <= kReadyVectors; q *= 4) fill_pass(ready.odd, q);
    return ready;
}

}  // namespace

constinit const ReadyFactors kReady = all_passes();

}  // namespace mensura::spectral
