// Products of dense matrices.
#pragma once

#include <cstddef>

#include "../internal/lanes.h"

namespace mensura::matrix {

// Where the rows of a matrix lie: at equal distances, or each by itself.
template <typename T>
struct Strided {
    T *first;
    std::size_t stride;
    [[nodiscard]] LANES_INLINE T *row(std::size_t i) const { return first + i * stride; }
};
struct RowPointers {
    double *const *rows;
    [[nodiscard]] LANES_INLINE double *row(std::size_t i) const { return rows[i]; }
};

struct ProductSize {
    std::size_t rows, inner, cols;
};

// out(i, j) = 0 + a(i, 0) b(0, j) + a(i, 1) b(1, j) + ..., in this order.  out must not overlap a or b.
using Multiply = void(Strided<const double> a, Strided<const double> b, Strided<double> out, ProductSize size);
using MultiplyRows = void(RowPointers a, RowPointers b, RowPointers out, ProductSize size);
namespace baseline {
Multiply multiply;
MultiplyRows multiply_rows;
}  // namespace baseline
namespace avx2 {
Multiply multiply;
MultiplyRows multiply_rows;
}  // namespace avx2

}  // namespace mensura::matrix
