// Signals for the tests of spectra, and what transforms make of them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <complex>
#include <vector>

#include "support/noise.h"

namespace signals {

using Point = std::complex<double>;
using Signal = std::vector<Point>;

inline Signal noise(std::size_t n, double imaginary = 1) {  // each part has a mean square of 1/3
    support::Noise level(n);
    Signal x(n);
    for (Point &sample : x) sample = {level(), imaginary * level()};
    return x;
}

// Numbers that arithmetic stumbles over: the first `kinds` of them, at random.
inline Signal awkward(std::size_t n, std::size_t kinds) {
    constexpr double kValues[] = {-0.0, 0.0, 1, -1, 5e-324, -2.2e-308, 1.7e308, -HUGE_VAL, NAN};
    support::Noise bits(n + kinds);
    const auto value = [&] { return kValues[bits.below(static_cast<int>(kinds))]; };
    Signal x(n);
    for (Point &sample : x) sample = {value(), value()};
    return x;
}
constexpr std::size_t kAwkwardKinds = 9;

// What transform(re, im, n, arguments ...) makes of x between marks, which also move it off the alignment of a vector.
Signal run(auto transform, Signal x, std::size_t gap, auto... arguments) {
    constexpr double kMark = -77.7;  // no result
    std::vector<double> memory(2 * x.size() + 3 * gap, kMark);
    double *const re = &memory[gap], *const im = re + x.size() + gap;
    for (std::size_t t = 0; t < x.size(); ++t) {
        re[t] = x[t].real();
        im[t] = x[t].imag();
    }
    transform(re, im, static_cast<int>(x.size()), arguments...);
    EXPECT_EQ(static_cast<std::size_t>(std::ranges::count(memory, kMark)), 3 * gap);
    for (std::size_t k = 0; k < x.size(); ++k) x[k] = {re[k], im[k]};
    return x;
}

}  // namespace signals
