// Products of both kinds of matrices.
#include "samples.h"

using namespace samples;
using support::heap, support::Owner;

constexpr int kSizes[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 100};

static void expect_product(Kind kind, int rows, int inner, int cols) {
    SCOPED_TRACE(testing::Message() << rows << " x " << inner << " x " << cols);
    const Grid x = sample(kind, rows, inner), y = sample(kind, inner, cols);
    const std::optional sums = reference::product(x, y);
    EXPECT_SAME_MATRIX(Owner{matrix_mul(heap(x).get(), heap(y).get())}, *sums);
    const RMATRIX a = support::fixed(x), b = support::fixed(y);
    const int least = std::min({rows, inner, cols}), most = std::max({rows, inner, cols});
    expect_result("product", least > 0 && most <= RMATRIX_CAPACITY ? sums : std::nullopt, rmatrix_multi_ptr, &a, &b);
}

TEST(Product, is_the_sum_of_its_products_in_order) {
    for (const int rows : kSizes)
        for (const int cols : kSizes)
            for (const int inner : kSizes) {
                expect_product(inner % 2 == 0 ? kInfinite : kZeros, rows, inner, cols);
                if (HasFailure()) return;
            }
    for (const int inner : {256, 257, 700})  // such long sums are taken in parts
        for (const int cols : {1, 3, 8, 13}) expect_product(kNoise, 7, inner, cols);
}
