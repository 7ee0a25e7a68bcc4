// FNV-1a, byte by byte from the lowest on.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>

namespace support {

class Hash {
  public:
    void add(std::uint64_t word) {
        for (int byte = 0; byte < 64; byte += 8) value_ = (value_ ^ (word >> byte & 255)) * 1099511628211U;
    }
    void add(double x) { add(std::bit_cast<std::uint64_t>(std::isnan(x) ? NAN : x)); }  // a NaN's sign is not promised

    std::uint64_t value() const { return value_; }

  private:
    std::uint64_t value_ = 14695981039346656037U;
};

}  // namespace support
