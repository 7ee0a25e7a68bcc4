// Four neighbouring points side by side.  Each is the sum of its window from left to right, divided by its divisor.

#include "smooth_kernel.h"

#include <utility>

#include "../internal/lanes.h"
#include "../internal/target.h"
#include "weights.h"

namespace mensura::smooth::MENSURA_TARGET {
namespace {

// Lanes of results computed together: they share the samples that they load.
constexpr std::size_t kSideBySide = 4;

// The sum with term k of a row: sum + w x.  The first term is the sum itself, and a weight of 1 needs no product.
template <const auto &kRow, std::size_t k, typename T>
LANES_INLINE T plus_term(T sum, T x) {
    constexpr double kWeight = kRow.weight[k];
    T term = x;
    if constexpr (kWeight != 1.0) term = kWeight * x;
    if constexpr (k == 0)
        return term;
    else
        return sum + term;
}

// Adds each sample from x[kOffset] on to the sums whose windows contain it.
template <const auto &kRow, std::size_t kOffset, std::size_t kCount>
LANES_INLINE void add_samples(const double *x, Lanes (&sums)[kCount]) {
    constexpr std::size_t kWindow = kRow.weight.size();
    if constexpr (kOffset < kWindow + (kCount - 1) * kLanes) {
        const Lanes samples = load(x + kOffset);
        [&]<std::size_t... i>(std::index_sequence<i...>) LANES_LAMBDA {
            (
                [&]() LANES_LAMBDA {
                    constexpr std::size_t k = kOffset - i * kLanes;  // huge for a sample before the window
                    if constexpr (k < kWindow) sums[i] = plus_term<kRow, k>(sums[i], samples);
                }(),
                ...);
        }
        (std::make_index_sequence<kCount>{});
        add_samples<kRow, kOffset + 1>(x, sums);
    }
}

template <const auto &kRow, std::size_t kCount>
LANES_INLINE void smooth_lanes(const double *window, double *y) {
    constexpr double kDivisor = kRow.divisor;
    Lanes sums[kCount];
    add_samples<kRow, 0>(window, sums);
    for (std::size_t i = 0; i < kCount; ++i) store(y + i * kLanes, sums[i] / kDivisor);
}

template <const auto &kRow>
LANES_INLINE double smooth_point(const double *window) {
    return [&]<std::size_t... k>(std::index_sequence<k...>) LANES_LAMBDA {
        double sum = 0.0;
        ((sum = plus_term<kRow, k>(sum, window[k])), ...);
        return sum;
    }
    (std::make_index_sequence<kRow.weight.size()>{}) / kRow.divisor;
}

template <const auto &kTable>
LANES_INLINE void inside(const double *x, double *y, std::size_t n) {
    static constexpr auto kRow = kTable.back();
    constexpr std::size_t h = kRow.weight.size() / 2, kMany = kSideBySide * kLanes;
    std::size_t i = h;
    for (; i + h + kMany <= n; i += kMany) smooth_lanes<kRow, kSideBySide>(x + i - h, y + i);
    for (; i + h + kLanes <= n; i += kLanes) smooth_lanes<kRow, 1>(x + i - h, y + i);
    for (; i + h < n; ++i) y[i] = smooth_point<kRow>(x + i - h);
}

}  // namespace

void mean3(const double *x, double *y, std::size_t n) { inside<kLinear3>(x, y, n); }
void mean5(const double *x, double *y, std::size_t n) { inside<kLinear5>(x, y, n); }
void mean7(const double *x, double *y, std::size_t n) { inside<kLinear7>(x, y, n); }
void mean9(const double *x, double *y, std::size_t n) { inside<kLinear9>(x, y, n); }
void mean11(const double *x, double *y, std::size_t n) { inside<kLinear11>(x, y, n); }
void cubic5(const double *x, double *y, std::size_t n) { inside<kCubic5>(x, y, n); }
void cubic7(const double *x, double *y, std::size_t n) { inside<kCubic7>(x, y, n); }

}  // namespace mensura::smooth::MENSURA_TARGET
