// Products of matrices.
#pragma once

#include <mensura/matrix.h>

#include <cstddef>

#include "../internal/lanes.h"
#include "../internal/target.h"

namespace mensura::matrix {

// The rows of a matrix: in an RMATRIX of fixed capacity, or with a pointer to each row.
template <typename T>
struct RecordRows {
    T *data;
    [[nodiscard]] LANES_INLINE T *row(std::size_t i) const { return data + i * RMATRIX_CAPACITY; }
};
struct RowPointers {
    double *const *rows;
    std::size_t first_col = 0;
    [[nodiscard]] LANES_INLINE double *row(std::size_t i) const { return rows[i] + first_col; }
};

// out(i, j) = 0 + a(i, 0) b(0, j) + a(i, 1) b(1, j) + ..., in this order, for rows x inner times inner x cols.
// out must not overlap a or b.
template <typename Source, typename Target>
using Multiply = void(Source a, Source b, Target out, std::size_t rows, std::size_t inner, std::size_t cols);
using MultiplyRecords = Multiply<RecordRows<const double>, RecordRows<double>>;
using MultiplyRows = Multiply<RowPointers, RowPointers>;
MENSURA_KERNEL(MultiplyRecords, multiply_records);
MENSURA_KERNEL(MultiplyRows, multiply_rows);

}  // namespace mensura::matrix
