// Matrices of fixed capacity; their by-value forms are in by_value.cpp.

#include <mensura/matrix.h>

#include <algorithm>
#include <cmath>

#include "../internal/lanes.h"
#include "inverse_kernel.h"
#include "product_kernel.h"

using namespace mensura;
using namespace mensura::matrix;

namespace {

RecordRows<const double> rows_of(const RMATRIX *m) { return {m->data}; }
RecordRows<double> rows_of(RMATRIX *m) { return {m->data}; }

// A size clamped to the record: initRMATRIX stores sizes unchecked.
std::size_t within(int size) {
    return static_cast<std::size_t>(std::clamp(size, 0, static_cast<int>(RMATRIX_CAPACITY)));
}

std::size_t size(int checked) { return static_cast<std::size_t>(checked); }

bool fits(int size) { return size >= 1 && size <= RMATRIX_CAPACITY; }
bool is_operand(const RMATRIX *m) { return m != nullptr && fits(m->rows) && fits(m->cols); }

void set_size(RMATRIX *m, int rows, int cols) {
    m->rows = rows;
    m->cols = cols;
}

RMATRIX *fail(RMATRIX *out) {
    if (out != nullptr) set_size(out, 0, 0);
    return nullptr;
}

// to = operation(x, y), element by element, by pairs: without AVX, g++ 12 would hold wider vectors in memory.  The last
// pairs may overlap those before: they are read before anything is written, because `to` may be x or y.  Inlined, because
// rows are short.
template <typename Operation>
LANES_INLINE void transform_row(double *to, const double *x, const double *y, std::size_t n, Operation operation) {
    if (n == 1) {
        *to = operation(*x, *y);
        return;
    }
    const auto pair = [&](std::size_t j) LANES_LAMBDA { return operation(load_pair(x + j), load_pair(y + j)); };
    const Pair last = pair(n - 2);
    if (n > 2) {
        const std::size_t blocks = n < 4 ? 0 : n - 4;
        const Pair last_but_one = pair(blocks);
        for (std::size_t j = 0; j < blocks; j += 4) {
            store(to + j, pair(j));
            store(to + j + 2, pair(j + 2));
        }
        store(to + blocks, last_but_one);
    }
    store(to + n - 2, last);
}

// Row i comes from row_of(i).
template <typename RowOf>
void copy_rows(RMATRIX *out, RowOf row_of) {
    const std::size_t cols = within(out->cols), rows = cols == 0 ? 0 : within(out->rows);
    for (std::size_t i = 0; i < rows; ++i) {
        const double *from = row_of(i);
        transform_row(rows_of(out).row(i), from, from, cols, [](auto x, auto) LANES_LAMBDA { return x; });
    }
}

template <typename RowOf>
RMATRIX *set(bool given, int rows, int cols, RMATRIX *out, RowOf row_of) {
    const bool empty = rows < 1 || cols < 1;
    if (out == nullptr || rows > RMATRIX_CAPACITY || cols > RMATRIX_CAPACITY || !(given || empty)) return fail(out);
    set_size(out, rows, cols);
    if (!empty) copy_rows(out, row_of);
    return out;
}

template <typename Operation>
RMATRIX *element_wise(const RMATRIX *a, const RMATRIX *b, RMATRIX *out, Operation operation) {
    if (!is_operand(a) || !is_operand(b) || out == nullptr || a->rows != b->rows || a->cols != b->cols)
        return fail(out);
    set_size(out, a->rows, a->cols);
    const std::size_t rows = size(out->rows), cols = size(out->cols);
    for (std::size_t i = 0; i < rows; ++i)
        transform_row(rows_of(out).row(i), rows_of(a).row(i), rows_of(b).row(i), cols, operation);
    return out;
}

bool invert_number(double pivot, double &inverse) {
    const bool regular = std::fabs(pivot) + 1.0 > 1.0;  // false for NaN
    if (regular) inverse = 1.0 / pivot;
    return regular;
}

}  // namespace

void initRMATRIX(RMATRIX *m, int rows, int cols) {
    if (m == nullptr) return;
    set_size(m, rows, cols);
    for (std::size_t i = 0; i < within(rows); ++i) std::fill_n(rows_of(m).row(i), within(cols), 0.0);
}

void initRMATRIX_identity(RMATRIX *m, int rows, int cols) {
    if (m == nullptr) return;
    initRMATRIX(m, rows, cols);
    for (std::size_t i = 0; i < within(std::min(rows, cols)); ++i) rows_of(m).row(i)[i] = 1.0;
}

void copyRMATRIX(const RMATRIX *src, RMATRIX *dst) {
    if (src == nullptr || dst == nullptr || src == dst) return;
    set_size(dst, src->rows, src->cols);
    copy_rows(dst, [&](std::size_t i) { return rows_of(src).row(i); });
}

int isEmptyRMATRIX(const RMATRIX *m) { return m == nullptr || m->rows < 1 || m->cols < 1; }

RMATRIX *setRMATRIX_ptr(const double *a, int rows, int cols, RMATRIX *out) {
    return set(a != nullptr, rows, cols, out, [&](std::size_t i) { return a + i * static_cast<std::size_t>(cols); });
}

RMATRIX *setRMATRIX1_ptr(const double *const *a, int rows, int cols, RMATRIX *out) {
    return set(a != nullptr, rows, cols, out, [&](std::size_t i) { return a[i]; });
}

RMATRIX *rmatrix_add_ptr(const RMATRIX *a, const RMATRIX *b, RMATRIX *out) {
    return element_wise(a, b, out, [](auto x, auto y) LANES_LAMBDA { return x + y; });
}

RMATRIX *rmatrix_sub_ptr(const RMATRIX *a, const RMATRIX *b, RMATRIX *out) {
    return element_wise(a, b, out, [](auto x, auto y) LANES_LAMBDA { return x - y; });
}

RMATRIX *rmatrix_multi_ptr(const RMATRIX *a, const RMATRIX *b, RMATRIX *out) {
    if (!is_operand(a) || !is_operand(b) || out == nullptr || a->cols != b->rows) return fail(out);
    set_size(out, a->rows, b->cols);
    multiply_records(rows_of(a), rows_of(b), rows_of(out), size(a->rows), size(a->cols), size(b->cols));
    return out;
}

RMATRIX *rmatrix_transpose_ptr(const RMATRIX *a, RMATRIX *out) {
    if (!is_operand(a) || out == nullptr) return fail(out);
    set_size(out, a->cols, a->rows);
    const std::size_t rows = size(a->rows), cols = size(a->cols);
    for (std::size_t i = 0; i < rows; ++i)
        for (std::size_t j = 0; j < cols; ++j) rows_of(out).row(j)[i] = rows_of(a).row(i)[j];
    return out;
}

RMATRIX *rmatrix_inverse_ptr(const RMATRIX *a, RMATRIX *out) {
    if (!is_operand(a) || out == nullptr || a->rows != a->cols) return fail(out);
    const int n = a->rows;
    const bool regular = n == 1 ? invert_number(a->data[0], out->data[0]) : invert(rows_of(a), rows_of(out), size(n));
    if (!regular) return fail(out);
    set_size(out, n, n);
    return out;
}

double *rmatrix_to_vector(RMATRIX *m, double *vec) {
    if (m == nullptr || m->rows < 1 || m->cols < 1 || (m->rows > 1 && m->cols > 1)) return nullptr;
    if (vec == nullptr) vec = m->data;  // a column moves up to the first cells, a row is there already
    if (m->cols == 1)
        for (std::size_t i = 0; i < within(m->rows); ++i) vec[i] = rows_of(m).row(i)[0];
    else if (vec != m->data)
        std::copy_n(m->data, within(m->cols), vec);
    return vec;
}
