// Random numbers that are the same on every machine: from whole numbers alone, by a generator that the standard fixes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <random>
#include <vector>

namespace support {

class Noise {
  public:
    explicit Noise(std::uint64_t seed) : bits_(seed) {}

    // Uniform in [-1, 1).
    double operator()() { return static_cast<double>(bits_() >> 11) * 0x1p-52 - 1; }

    std::vector<double> operator()(std::size_t n) {
        std::vector<double> values(n);
        for (double &value : values) value = (*this)();
        return values;
    }

    // 0 .. n - 1
    int below(int n) { return static_cast<int>(bits_() % static_cast<std::uint64_t>(n)); }

    bool one_in(int n) { return below(n) == 0; }

    const auto &pick(const auto &values) { return std::data(values)[bits_() % std::size(values)]; }

  private:
    std::mt19937_64 bits_;
};

}  // namespace support
