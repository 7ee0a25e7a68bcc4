// Neighbouring points side by side, each the sum of its window from left to right, over its divisor.

#include "smooth_kernel.h"

#include "../internal/lanes.h"
#include "../internal/target.h"
#include "weights.h"

namespace mensura::smooth::MENSURA_TARGET {
namespace {

using Size = std::size_t;

LANES_INLINE Lanes at(const double *p, Lanes) { return load(p); }
LANES_INLINE double at(const double *p, double) { return *p; }

// A product with 1 is exact.
template <int kWeight, typename T>
LANES_INLINE T weighted(T x) {
    if constexpr (kWeight == 1)
        return x;
    else
        return x * static_cast<double>(kWeight);
}

template <const auto &kRow, Size k, typename T>
LANES_INLINE T sum(const double *window, T zero) {
    const T term = weighted<kRow.weight[k]>(at(window + k, zero));
    if constexpr (k == 0)
        return term;
    else
        return sum<kRow, k - 1>(window, zero) + term;
}

template <const auto &kTable>
LANES_INLINE void inside(const double *x, double *y, Size n) {
    static constexpr auto kRow = kTable.back();
    constexpr Size kWindow = kRow.weight.size(), h = kWindow / 2;
    constexpr double kDivisor = kRow.divisor;
    Size i = h;
    for (; i + h + kLanes <= n; i += kLanes) store(y + i, sum<kRow, kWindow - 1>(x + i - h, Lanes{}) / kDivisor);
    for (; i + h < n; ++i) y[i] = sum<kRow, kWindow - 1>(x + i - h, 0.0) / kDivisor;
}

}  // namespace

void mean3(const double *x, double *y, Size n) { inside<kLinear3>(x, y, n); }
void mean5(const double *x, double *y, Size n) { inside<kLinear5>(x, y, n); }
void mean7(const double *x, double *y, Size n) { inside<kLinear7>(x, y, n); }
void mean9(const double *x, double *y, Size n) { inside<kLinear9>(x, y, n); }
void mean11(const double *x, double *y, Size n) { inside<kLinear11>(x, y, n); }
void cubic5(const double *x, double *y, Size n) { inside<kCubic5>(x, y, n); }
void cubic7(const double *x, double *y, Size n) { inside<kCubic7>(x, y, n); }

}  // namespace mensura::smooth::MENSURA_TARGET
