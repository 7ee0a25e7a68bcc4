// Samples to work on.
#pragma once

#include <cstddef>
#include <random>
#include <vector>

namespace bench {

// Uniform in [-1, 1).
inline std::vector<double> noise(std::size_t n, unsigned seed = 1) {
    std::mt19937_64 bits(seed);
    std::uniform_real_distribution<double> uniform(-1, 1);
    std::vector<double> samples(n);
    for (double &x : samples) x = uniform(bits);
    return samples;
}

}  // namespace bench
