// Clamping a number that may be NaN.
#pragma once

namespace mensura {

// x clamped to lo .. hi.  A NaN comes back as NaN, which std::clamp does not promise.
template <typename T>
constexpr T clamp_or_nan(T x, T lo, T hi) {
    if (x < lo) return lo;
    if (x > hi) return hi;
    return x;
}

}  // namespace mensura
