// What the fuzz targets share: hostile numbers out of the fuzzer's bytes, and checks that end the run.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "support/bits.h"

namespace fuzz {

using Input = FuzzedDataProvider;
using Doubles = std::vector<double>;

void test(Input &input);  // each target's own

using support::same_bits;

inline void check(bool holds) {
    if (!holds) __builtin_trap();
}

// A number that arithmetic stumbles over, one of any magnitude, a small whole number, or one within -1 .. 1.
inline double number(Input &input) {
    constexpr double kAwkward[] = {NAN, HUGE_VAL, -HUGE_VAL, -0.0, -1.7e308, 1e-320, 1e-30, 1e154, 2147483648.0};
    switch (input.ConsumeIntegralInRange(0, 3)) {
        case 0: return input.PickValueInArray(kAwkward);
        case 1:
            return std::ldexp(input.ConsumeFloatingPointInRange(-1.0, 1.0), input.ConsumeIntegral<std::int16_t>() / 30);
        case 2: return input.ConsumeIntegral<std::int8_t>();
        default: return input.ConsumeFloatingPointInRange(-1.0, 1.0);
    }
}

// A whole number from least to most, now and then one of the largest magnitude.
inline int code(Input &input, int least, int most) {
    const int n = input.ConsumeIntegralInRange(least - 2, most);
    return n == least - 2 ? INT_MIN : n == least - 1 ? INT_MAX : n;
}

// n numbers in an allocation of just that size, so that the sanitizer sees a step beyond it.  The first few come from
// the input, the others repeat them: long arrays need no long inputs.
template <class Real = double>
std::vector<Real> numbers(Input &input, int n, std::size_t fresh = 24) {
    std::vector<Real> x(static_cast<std::size_t>(n > 0 ? n : 0));
    std::size_t i = 0;
    for (; i < x.size() && i < fresh && input.remaining_bytes() > 0; ++i) x[i] = static_cast<Real>(number(input));
    for (const std::size_t period = i; i < x.size() && period > 0; ++i) x[i] = x[i - period];
    return x;
}

}  // namespace fuzz
