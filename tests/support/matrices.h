// Matrices of any kind compared with each other:
//
//     EXPECT_SAME_MATRIX(actual, expected)      the same size, and the same bits in each element
#pragma once

#include <mensura/matrix.h>

#include <memory>

#include "expect.h"
#include "reference/matrix.h"

#define EXPECT_SAME_MATRIX(actual, expected) EXPECT_PRED_FORMAT2(support::compare_matrices, actual, expected)

namespace support {

using reference::Grid, reference::grid, reference::rows;
using Owner = std::unique_ptr<Matrix, decltype([](Matrix *x) { matrix_delete(x); })>;

inline Grid grid(const Grid &x) { return x; }
inline Grid grid(const Owner &x) { return grid(*x); }

inline RMATRIX fixed(const Grid &x) { return setRMATRIX(x.data(), x.rows, x.cols); }
inline Owner heap(Grid x) { return Owner{matrix_copy(x.cols, rows(x).data(), x.rows)}; }

template <typename Actual, typename Expected>
testing::AssertionResult compare_matrices(const char *actual_text, const char *expected_text, const Actual &actual,
                                          const Expected &expected) {
    const Grid a = grid(actual), e = grid(expected);
    testing::AssertionResult failure = testing::AssertionFailure();
    failure << actual_text << " differs from " << expected_text << ": ";
    if (a.rows != e.rows || a.cols != e.cols)
        return failure << a.rows << " x " << a.cols << " instead of " << e.rows << " x " << e.cols;
    for (int i = 0; i < a.rows; ++i)
        for (int j = 0; j < a.cols; ++j)
            if (!same_bits(a(i, j), e(i, j)))
                return failure << "element (" << i << ", " << j << ") of " << a.rows << " x " << a.cols << " is "
                               << describe(a(i, j), e(i, j));
    return testing::AssertionSuccess();
}

}  // namespace support
