// Inverses of fixed-capacity matrices.
#include "samples.h"
#include "support/sizes.h"

namespace {

using namespace samples;

TEST(Inverse, has_the_bits_of_plain_elimination) {
    for (const int n : support::sizes(1, 40, {100}))
        for (const Kind kind : kKinds) {
            SCOPED_TRACE(testing::Message() << n << " x " << n << ", kind " << kind);
            const Grid x = sample(kind, n, n);
            const auto inverse = reference::inverse(x);
            if (kind == kSingular || kind == kRegular) {
                EXPECT_EQ(inverse.has_value(), kind == kRegular);
            }
            RMATRIX a = support::fixed(x);
            expect_result(inverse, rmatrix_inverse_ptr, &a);
            rmatrix_inverse_ptr(&a, &a);
            EXPECT_SAME_MATRIX(a, inverse.value_or(Grid{}));
        }
}

TEST(Inverse, undoes_its_matrix_from_both_sides) {
    for (const int n : support::sizes(1, 40, {100})) {
        const Grid x = sample(kNoise, n, n), one = reference::identity(n, n);
        const Grid inverse = support::grid(rmatrix_inverse(support::fixed(x)));
        const double tolerance = n * 0x1p-52 * largest(x) * largest(inverse);  // of n steps, or of sums of n products
        EXPECT_LE(largest(difference(reference::product(x, inverse), one)), tolerance) << n << " x " << n;
        EXPECT_LE(largest(difference(reference::product(inverse, x), one)), tolerance) << n << " x " << n;
    }
}

}  // namespace
