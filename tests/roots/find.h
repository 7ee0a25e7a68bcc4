// FindRoots as the tests of roots call it.
#pragma once

#include <gtest/gtest.h>
#include <mensura/roots.h>

#include <algorithm>
#include <span>
#include <vector>

#include "support/expect.h"
#include "support/noise.h"
#include "support/reference/roots.h"

namespace roots {

using Coefficients = std::vector<double>;  // highest power first

int degree_of(const auto &p) { return static_cast<int>(p.size()) - 1; }

inline Coefficients random_polynomial(int degree, support::Noise &noise) {
    return noise(static_cast<std::size_t>(degree) + 1);
}

// With the proof that it writes N roots or none, and nothing else.
inline std::vector<CplxD> find(const Coefficients &p) {
    constexpr CplxD kUntouched{77, 77};
    Coefficients input = p;
    std::vector<CplxD> roots(p.size() + 1, kUntouched);
    const int count = FindRoots(degree_of(p), input.data(), roots.data());
    EXPECT_SAME_BITS(input, p);
    EXPECT_EQ(count, count == 0 ? 0 : degree_of(p));
    const std::vector rest(roots.begin() + count, roots.end());
    EXPECT_SAME_BITS(rest, std::vector(rest.size(), kUntouched));
    roots.resize(static_cast<std::size_t>(count));
    return roots;
}

}  // namespace roots
