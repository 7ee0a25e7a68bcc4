// Matrices of random sizes and any values: fixed and on the heap, the forms by pointer, by value and in place.
#include <mensura/matrix.h>

#include <memory>

#include "input.h"
#include "support/reference/matrix.h"

using namespace fuzz;
using reference::grid;

// Mostly small; sizes above the capacity are stored, and no operation takes such a matrix.
static void fill(Input &input, RMATRIX &m) {
    const int most = input.ConsumeIntegralInRange(0, 8) == 8 ? 110 : 8;
    const int rows = code(input, -1, most), cols = input.ConsumeBool() ? rows : code(input, -1, most);
    initRMATRIX_identity(&m, rows, cols);
    if (rows < 1 || rows > RMATRIX_CAPACITY || cols < 1 || cols > RMATRIX_CAPACITY) return;
    check(setRMATRIX_ptr(numbers(input, rows * cols).data(), rows, cols, &m) == &m);
}

// A result by pointer and by value is the same, and empty when it was refused.
static void compare(const RMATRIX *result, const RMATRIX &out, const RMATRIX &by_value) {
    check(result == (out.rows == 0 && out.cols == 0 ? nullptr : &out));
    check(result == nullptr ? isEmptyRMATRIX(&by_value) == 1 : out.rows == by_value.rows && out.cols == by_value.cols);
    for (int i = 0; i < out.rows * RMATRIX_CAPACITY; ++i)
        check(i % RMATRIX_CAPACITY >= out.cols || same_bits(out.data[i], by_value.data[i]));
}

static void combine(Input &input) {
    static RMATRIX a, b, out;
    fill(input, a);
    fill(input, b);
    if (input.ConsumeBool()) b = a;
    compare(rmatrix_multi_ptr(&a, &b, &out), out, rmatrix_multi(a, b));
    if (out.rows > 0) check(same_bits(grid(out).values, reference::product(grid(a), grid(b)).values));
    compare(rmatrix_transpose_ptr(&a, &out), out, rmatrix_transpose(a));
    out = a;
    compare(rmatrix_add_ptr(&out, &b, &out), out, rmatrix_add(a, b));
    out = a;
    compare(rmatrix_sub_ptr(&b, &out, &out), out, rmatrix_sub(b, a));
    out = a;
    compare(rmatrix_inverse_ptr(&out, &out), out, rmatrix_inverse(a));
    if (out.rows > 0) check(same_bits(grid(out).values, reference::inverse(grid(a)).value().values));
    rmatrix_to_vector(&a, nullptr);
}

static void decompose(Input &input) {
    using Heap = std::unique_ptr<Matrix, void (*)(Matrix *)>;
    const int m = input.ConsumeIntegralInRange(0, 16), n = input.ConsumeIntegralInRange(0, 16);
    const int any = code(input, -1, 18);
    reference::Grid values{m, n, numbers(input, m * n)};
    Doubles column = numbers(input, m);
    const Heap x(matrix_copy(n, reference::rows(values).data(), m), matrix_delete),
        part(matrix_minor(x.get(), any), matrix_delete);
    Matrix *r = nullptr, *q = nullptr;
    householder(x.get(), &r, &q);
    const Heap upper(r, matrix_delete), orthogonal(q, matrix_delete);
    const auto [plain_q, plain_r] = reference::householder(values);
    check(same_bits(grid(*q).values, plain_q.values) && same_bits(grid(*r).values, plain_r.values));
    matrix_transpose(part.get());
    mcol(x.get(), column.data(), any);
    vdiv(vmadd(column.data(), column.data(), number(input), column.data(), m), number(input), column.data(), m);
    check(!(vnorm(column.data(), m) < 0));
}

void fuzz::test(Input &input) { input.PickValueInArray({combine, decompose})(input); }
