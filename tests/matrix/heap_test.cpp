// Matrices on the heap.
#include <array>

#include "samples.h"

using namespace samples;
using support::heap, support::Owner;

TEST(HeapMatrix, has_the_formulas_of_its_parts_at_any_size) {
    for (int rows = -1; rows <= 6; ++rows)
        for (int cols = -1; cols <= 6; ++cols) {
            SCOPED_TRACE(testing::Message() << rows << " x " << cols);
            const Grid x = sample(kZeros, std::max(rows, 0), std::max(cols, 0));
            Grid same = x;
            const Owner copy{matrix_copy(cols, support::rows(same).data(), rows)}, fresh{matrix_new(rows, cols)};
            EXPECT_SAME_MATRIX(copy, x);
            EXPECT_SAME_MATRIX(fresh, (Grid{x.rows, x.cols}));
            for (int d = -1; d <= 8; ++d)
                EXPECT_SAME_MATRIX(Owner{matrix_minor(copy.get(), d)}, reference::minor(x, d)) << d << " of identity";
            if (x.rows != x.cols) {
                EXPECT_EQ(matrix_mul(copy.get(), copy.get()), nullptr);
            }
            matrix_transpose(copy.get());  // the square that the rows fill; nothing if they are more than the columns
            EXPECT_SAME_MATRIX(copy, reference::grid(x.rows, x.cols, [&](int i, int j) {
                                   return rows <= cols && j < rows ? x(j, i) : x(i, j);
                               }));
        }
}

TEST(HeapMatrix, has_columns_and_vectors_of_length_0) {
    const Grid x = sample(kNoise, 3, 4);
    const Owner m = heap(x);
    double column[3] = {7, 7, 7};
    for (const int outside : {-1, 4}) {
        EXPECT_EQ(mcol(m.get(), column, outside), column);
        EXPECT_SAME_BITS(column, std::to_array({7.0, 7.0, 7.0}));
    }
    EXPECT_EQ(mcol(m.get(), column, 3), column);
    EXPECT_SAME_BITS(column, std::to_array({x(0, 3), x(1, 3), x(2, 3)}));
    EXPECT_EQ(vnorm(nullptr, -1), 0);
}
