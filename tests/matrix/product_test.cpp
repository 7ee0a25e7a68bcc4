// Products of both kinds of matrices.
#include "samples.h"
#include "support/sizes.h"

namespace {

using namespace samples;
using support::heap, support::Owner;

Owner heap_product(const Grid &x, const Grid &y) { return Owner{matrix_mul(heap(x).get(), heap(y).get())}; }

TEST(Product, is_the_sum_of_its_products_in_order) {
    const auto sizes = support::sizes(1, 17, {100});
    for (const int rows : sizes)
        for (const int cols : sizes)
            for (const int inner : support::sizes(0, 17, {100})) {
                SCOPED_TRACE(testing::Message() << rows << " x " << inner << " x " << cols);
                const Kind kind = inner % 2 == 0 ? kInfinite : kZeros;
                const Grid x = sample(kind, rows, inner), y = sample(kind, inner, cols);
                const Grid sums = reference::product(x, y);
                EXPECT_SAME_MATRIX(heap_product(x, y), sums);
                const RMATRIX a = support::fixed(x), b = support::fixed(y);
                expect_result(inner > 0 ? std::optional(sums) : std::nullopt, rmatrix_multi_ptr, &a, &b);
            }
}

TEST(Product, of_long_sums_takes_them_in_parts) {
    for (const int inner : {256, 257, 700})
        for (const int cols : {1, 3, 8, 13}) {
            const Grid x = sample(kNoise, 7, inner), y = sample(kNoise, inner, cols);
            EXPECT_SAME_MATRIX(heap_product(x, y), reference::product(x, y)) << inner << " products a sum";
        }
}

}  // namespace
