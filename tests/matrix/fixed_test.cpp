// Matrices of fixed capacity: setting, element-wise operations, transposes, vectors, text.
#include <array>
#include <span>
#include <string>

#include "samples.h"

using namespace samples;

TEST(FixedMatrix, operations_fill_their_corner_or_fail) {
    for (const int n : {1, 2, 3, 4, 5, 7, 99}) {
        SCOPED_TRACE(testing::Message() << n + 1 << " x " << n);
        Grid x = sample(kInfinite, n + 1, n);
        const Grid y = sample(kZeros, n + 1, n), t = reference::transposed(x),
                   minus = reference::grid(n + 1, n, [&](int i, int j) { return x(i, j) - y(i, j); });
        const Grid plus = reference::grid(n + 1, n, [&](int i, int j) { return x(i, j) + y(i, j); });
        const RMATRIX a = support::fixed(x), b = support::fixed(y), turned = support::fixed(t),
                      wider = support::fixed(sample(kSum, n + 1, n + 1)), none{{}, 9, -1};
        const auto rows = support::rows(x);
        RMATRIX identity = a;
        initRMATRIX_identity(&identity, n, n + 1);
        EXPECT_SAME_MATRIX(identity, reference::identity(n, n + 1));
        double &behind = identity.data[n * (RMATRIX_CAPACITY + 1)] = 77;  // element (n, n), in column n + 1
        initRMATRIX_identity(&identity, n + 1, n);
        EXPECT_SAME_MATRIX(identity, reference::identity(n + 1, n));
        EXPECT_EQ(behind, 77);
        expect_result("from packed numbers", x, setRMATRIX_ptr, x.data(), n + 1, n);
        expect_result("from rows", x, setRMATRIX1_ptr, rows.data(), n + 1, n);
        expect_result("sum", plus, rmatrix_add_ptr, &a, &b);
        expect_result("difference", minus, rmatrix_sub_ptr, &a, &b);
        expect_result("transpose", t, rmatrix_transpose_ptr, &a);
        RMATRIX first = a, second = b;
        rmatrix_add_ptr(&first, &b, &first);
        rmatrix_sub_ptr(&a, &second, &second);
        EXPECT_SAME_MATRIX(first, plus);
        EXPECT_SAME_MATRIX(second, minus);
        EXPECT_SAME_MATRIX(rmatrix_add(a, b), plus);
        EXPECT_SAME_MATRIX(rmatrix_sub(a, b), minus);
        EXPECT_SAME_MATRIX(rmatrix_transpose(a), t);
        for (const auto operation : {rmatrix_add_ptr, rmatrix_sub_ptr, rmatrix_multi_ptr}) {
            expect_result("without the first operand", {}, operation, nullptr, &a);
            expect_result("without the second operand", {}, operation, &a, nullptr);
            expect_result("of an empty operand", {}, operation, &none, &none);
            expect_result("of sizes that do not fit", {}, operation, &a, operation == rmatrix_multi_ptr ? &a : &turned);
            expect_result("of another width", {}, operation, &a, &wider);
        }
        for (const auto operation : {rmatrix_transpose_ptr, rmatrix_inverse_ptr})
            expect_result("of an empty operand", {}, operation, &none);
        expect_result("inverse of what is not square", {}, rmatrix_inverse_ptr, &a);
        expect_result("too many rows", {}, setRMATRIX_ptr, x.data(), 101, 1);
        expect_result("too many columns", {}, setRMATRIX1_ptr, rows.data(), 0, 101);
        EXPECT_EQ(isEmptyRMATRIX(&none), 1);
        EXPECT_EQ(isEmptyRMATRIX(&a), 0);
    }
}

TEST(FixedMatrix, packs_a_row_or_a_column_into_a_vector) {
    RMATRIX column = support::fixed(sample(kSum, 3, 1)), square = support::fixed(sample(kSum, 2, 2)), empty{{}, 2, -3};
    EXPECT_EQ(rmatrix_to_vector(&column, nullptr), column.data);
    EXPECT_SAME_BITS(std::span(column.data, 3), std::to_array({0.0, 1.0, 2.0}));
    for (RMATRIX *const m : {&square, &empty, static_cast<RMATRIX *>(nullptr)}) {
        EXPECT_EQ(rmatrix_to_vector(m, nullptr), nullptr);
        EXPECT_EQ(rmatrix_to_vector(m, column.data), nullptr);
    }
}

TEST(FixedMatrix, prints_its_size_and_its_rows) {
    const RMATRIX empty{{}, 2, -3};
    testing::internal::CaptureStdout();
    rmatrix_printf(support::fixed(sample(kSum, 2, 2)));
    rmatrix_printf_ptr(&empty);
    const std::string rule = "========================================\n",
                      rows = "0.000000, 1.000000, \n1.000000, 2.000000, \n";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), rule + "row=2, col=2\n" + rows + rule + "matrix is empty\n");
}
