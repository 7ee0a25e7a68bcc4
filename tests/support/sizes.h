// Sizes to test at: all small ones, where the vector widths are, and some large ones.
#pragma once

#include <initializer_list>
#include <numeric>
#include <vector>

namespace support {

inline std::vector<int> sizes(int first, int last, std::initializer_list<int> larger) {
    std::vector<int> all(static_cast<std::size_t>(last - first + 1));
    std::iota(all.begin(), all.end(), first);
    all.insert(all.end(), larger);
    return all;
}

}  // namespace support
