// The weights of the smoothers (Savitzky and Golay, 1964): a polynomial is fitted to the w samples of a window by least
// squares, and row k of a table gives its value at sample k, k = 0 .. w / 2.  The last row, for the middle of the window,
// is used inside a record, the others at its edges.
#pragma once

#include <array>
#include <cstddef>

namespace mensura::smooth {

template <std::size_t kWindow>
struct Row {
    std::array<int, kWindow> weight;
    int divisor;
};

template <std::size_t kWindow>
using Table = std::array<Row<kWindow>, kWindow / 2 + 1>;

// A constant must be smoothed to itself, so the weights of a row add up to its divisor.
template <std::size_t kWindow>
consteval Table<kWindow> checked(const Table<kWindow> &table) {
    for (const Row<kWindow> &row : table) {
        int sum = 0;
        for (const int w : row.weight) sum += w;
        if (sum != row.divisor) throw "weights do not add up to their divisor";
    }
    return table;
}

inline constexpr Table<3> kLinear3 = checked<3>({{{{5, 2, -1}, 6}, {{1, 1, 1}, 3}}});

inline constexpr Table<5> kLinear5 = checked<5>({{{{3, 2, 1, 0, -1}, 5}, {{4, 3, 2, 1, 0}, 10}, {{1, 1, 1, 1, 1}, 5}}});

inline constexpr Table<7> kLinear7 = checked<7>({{{{13, 10, 7, 4, 1, -2, -5}, 28},
                                                  {{5, 4, 3, 2, 1, 0, -1}, 14},
                                                  {{7, 6, 5, 4, 3, 2, 1}, 28},
                                                  {{1, 1, 1, 1, 1, 1, 1}, 7}}});

inline constexpr Table<9> kLinear9 = checked<9>({{{{17, 14, 11, 8, 5, 2, -1, -4, -7}, 45},
                                                  {{56, 47, 38, 29, 20, 11, 2, -7, -16}, 180},
                                                  {{22, 19, 16, 13, 10, 7, 4, 1, -2}, 90},
                                                  {{32, 29, 26, 23, 20, 17, 14, 11, 8}, 180},
                                                  {{1, 1, 1, 1, 1, 1, 1, 1, 1}, 9}}});

// At the edges smooth.cpp rounds weight / divisor first.
inline constexpr Table<11> kLinear11 = checked<11>({{{{35, 30, 25, 20, 15, 10, 5, 0, -5, -10, -15}, 110},
                                                     {{30, 26, 22, 18, 14, 10, 6, 2, -2, -6, -10}, 110},
                                                     {{25, 22, 19, 16, 13, 10, 7, 4, 1, -2, -5}, 110},
                                                     {{20, 18, 16, 14, 12, 10, 8, 6, 4, 2, 0}, 110},
                                                     {{15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5}, 110},
                                                     {{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}, 11}}});

inline constexpr Table<5> kQuadratic5 =
    checked<5>({{{{31, 9, -3, -5, 3}, 35}, {{9, 13, 12, 6, -5}, 35}, {{-3, 12, 17, 12, -3}, 35}}});

inline constexpr Table<7> kQuadratic7 = checked<7>({{{{32, 15, 3, -4, -6, -3, 5}, 42},
                                                     {{5, 4, 3, 2, 1, 0, -1}, 14},
                                                     {{1, 3, 4, 4, 3, 1, -2}, 14},
                                                     {{-2, 3, 6, 7, 6, 3, -2}, 21}}});

inline constexpr Table<5> kCubic5 =
    checked<5>({{{{69, 4, -6, 4, -1}, 70}, {{2, 27, 12, -8, 2}, 35}, {{-3, 12, 17, 12, -3}, 35}}});

inline constexpr Table<7> kCubic7 = checked<7>({{{{39, 8, -4, -4, 1, 4, -2}, 42},
                                                 {{8, 19, 16, 6, -4, -7, 4}, 42},
                                                 {{-4, 16, 19, 12, 2, -4, 1}, 42},
                                                 {{-2, 3, 6, 7, 6, 3, -2}, 21}}});

}  // namespace mensura::smooth
