// Inverses of fixed-capacity matrices.
#include <numeric>

#include "samples.h"

using namespace samples;

TEST(Inverse, has_the_bits_of_plain_elimination) {
    std::vector<int> sizes(41, 100);
    std::iota(sizes.begin(), sizes.end() - 1, 1);
    for (const int n : sizes)
        for (const Kind kind : kKinds) {
            SCOPED_TRACE(testing::Message() << n << " x " << n << ", kind " << kind);
            const Grid x = sample(kind, n, n);
            const auto inverse = reference::inverse(x);
            RMATRIX a = support::fixed(x);
            expect_result("inverse", inverse, rmatrix_inverse_ptr, &a);
            rmatrix_inverse_ptr(&a, &a);
            EXPECT_SAME_MATRIX(a, inverse.value_or(Grid{}));
            EXPECT_TRUE(kind != kSingular || !inverse);
            EXPECT_TRUE(kind != kRegular || inverse);
            if (HasFailure()) return;
        }
}
