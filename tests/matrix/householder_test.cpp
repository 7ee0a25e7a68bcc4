// The QR decomposition, and the file that shows a matrix.
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "samples.h"
#include "support/folder.h"

using namespace samples;
using support::heap, support::Owner;

static std::pair<Owner, Owner> decompose(const Grid &x) {
    Matrix *r = nullptr, *q = nullptr;
    householder(heap(x).get(), &r, &q);
    return {Owner{q}, Owner{r}};
}

TEST(Householder, has_the_bits_of_plain_steps) {
    for (const auto &[rows, cols] :
         {std::pair{0, 3}, {4, 0}, {1, 4}, {2, 1}, {2, 9}, {9, 4}, {8, 13}, {40, 21}, {100, 84}})
        for (const Kind kind : kKinds) {
            SCOPED_TRACE(testing::Message() << rows << " x " << cols << ", kind " << kind);
            const Grid x = sample(kind, rows, cols);
            const auto [q, r] = decompose(x);
            const auto [plain_q, plain_r] = reference::householder(x);
            EXPECT_SAME_MATRIX(q, plain_q);
            EXPECT_SAME_MATRIX(r, plain_r);
            if (HasFailure()) return;
        }
}

TEST(DataQR, holds_the_matrix_shown_last) {
    const support::Folder folder;
    const auto contents = [] { return (std::ostringstream{} << std::ifstream("dataQR.txt").rdbuf()).str(); };
    testing::internal::CaptureStdout();
    EXPECT_EQ(QRtest(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Q\nR\nQ * R\n");
    const std::string shown = contents(), end(20, '\n');
    const Grid sums = sample(kSum, 168, 84);
    const auto [q, r] = decompose(sums);
    const Owner product{matrix_mul(q.get(), r.get())};
    const Grid rounded = support::grid(product);
    for (std::size_t k = 0; k < sums.values.size(); ++k)  // 2 * 169 roundings of numbers up to 250
        ASSERT_NEAR(rounded.values[k], sums.values[k], 2 * 169 * 0x1p-52 * 250) << k;
    EXPECT_EQ(matrix_show(product.get()), 0);
    EXPECT_EQ(contents(), shown);
    EXPECT_EQ(matrix_show(heap(sample(kSum, 1, 2)).get()), 0);
    EXPECT_EQ(contents(), "0.000000000000000,1.000000000000000,\n" + end);
}
