// Householder QR decomposition, Q = H_0 H_1 ... with H = I - 2 v v^T.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <span>
#include <utility>

#include "../internal/scratch.h"
#include "../internal/target.h"
#include "heap.h"
#include "product_kernel.h"

using namespace mensura::matrix;
using Size = std::size_t;

namespace {

constexpr double kNothingLeft = 1e-10;  // length and elements below which there is nothing to reflect

// Where v, and with it H - I, has elements other than zeros.
struct Support {
    Size first, end;
};

// The v that reflects column x onto a multiple of axis k.
Support reflect_onto_axis(std::span<const double> x, Size k, double diagonal, std::span<double> v) {
    const int n = static_cast<int>(x.size());
    double a = vnorm(x.data(), n);
    if (diagonal > 0.0) a = -a;
    std::ranges::fill(v, 0.0);
    v[k] = 1.0;
    vmadd(x.data(), v.data(), a, v.data(), n);
    if (const double length = vnorm(v.data(), n); length >= kNothingLeft) {
        vdiv(v.data(), length, v.data(), n);
        return {k, v.size()};
    }
    const auto tiny = std::ranges::find_if(x, [](double element) { return std::fabs(element) < kNothingLeft; });
    if (tiny == x.end()) return {k, v.size()};
    const auto axis = static_cast<Size>(tiny - x.begin());
    std::ranges::fill(v, 0.0);
    v[axis] = 1.0;
    return {axis, axis + 1};
}

Size steps_of(const Matrix &x) { return static_cast<Size>(std::min(x.n, x.m - 1)); }

// ---- Any data, with every term: NaN and infinity go where the full products take them ----

// H_last ... H_0, or null without memory.
MatrixOwner reflect_in_full(const Matrix &x) {
    const auto rows = static_cast<Size>(x.m);
    const auto vectors = mensura::scratch<double>(2 * rows);
    if (!vectors) return nullptr;
    const std::span column(vectors.get(), rows), v(vectors.get() + rows, rows);
    MatrixOwner z, product;
    for (Size k = 0; k < steps_of(x); ++k) {
        const MatrixOwner minor{matrix_minor(z ? z.get() : &x, static_cast<int>(k))};
        if (!minor) return nullptr;
        mcol(minor.get(), column.data(), static_cast<int>(k));
        reflect_onto_axis(column, k, x.v[k][k], v);
        MatrixOwner h{vmul(v.data(), x.m)};
        if (!h) return nullptr;
        z.reset(matrix_mul(h.get(), minor.get()));
        product = product ? MatrixOwner{matrix_mul(h.get(), product.get())} : std::move(h);
        if (!z || !product) return nullptr;
    }
    return product;
}

// ---- Finite data ----
//
// The column of step k has zeros above k, so H is the identity in its first k rows and columns; where nothing is left to
// reflect, it only changes the sign of a row.  What is multiplied by a known 0 or 1 is left out.  All that such a
// product would do is turn -0 into +0, because its sums begin at +0.0.

// A distance of rows that spreads them over the sets of a cache: an odd number of lines.
constexpr Size stride_for(Size cols) { return ((cols + 7) / 8 | 1) * 8; }

struct Work {
    Strided<double> h, product, next_product;  // the product of the reflections: rows from k on
    Strided<double> z, next_z;                 // what is left of x: rows and columns from k on
    std::span<double> column, v;
};

struct Shape {
    Size rows, cols;

    [[nodiscard]] Size square() const { return rows * stride_for(rows); }
    [[nodiscard]] Size oblong() const { return rows * stride_for(cols); }
    [[nodiscard]] Size scratch() const { return 3 * square() + 2 * oblong() + 2 * rows; }
};

Work divide(double *memory, Shape shape) {
    const auto take = [&](Size count) { return std::exchange(memory, memory + count); };
    Work w;
    for (auto *m : {&w.h, &w.product, &w.next_product}) *m = {take(shape.square()), stride_for(shape.rows)};
    for (auto *m : {&w.z, &w.next_z}) *m = {take(shape.oblong()), stride_for(shape.cols)};
    w.column = {take(shape.rows), shape.rows};
    w.v = {take(shape.rows), shape.rows};
    return w;
}

bool is_finite(const double *x, Size n) {
    bool finite = true;
    for (Size i = 0; i < n; ++i) finite &= std::isfinite(x[i]);
    return finite;
}

// Whether the step's reflection and what it reflects are finite.
bool is_finite(const Work &w, Size k, Shape shape) {
    bool finite = is_finite(w.v.data(), shape.rows);
    for (Size i = k; i < shape.rows; ++i) finite &= is_finite(w.z.row(i) + k, shape.cols - k);
    return finite;
}

// H from row and column k on.
void fill_reflector(const Work &w, Size k) {
    for (Size i = k; i < w.v.size(); ++i) {
        for (Size j = k; j < w.v.size(); ++j) w.h.row(i)[j] = -2.0 * w.v[i] * w.v[j];
        w.h.row(i)[i] += 1.0;
    }
}

void change_sign(double *row, Size n) {
    for (Size j = 0; j < n; ++j) row[j] = 0.0 - row[j];
}

// H_0, with +0.0 for -0 if another reflection follows.
void start_product(Work &w, Size rows, bool alone) {
    const double zero = alone ? -0.0 : 0.0;
    for (Size i = 0; i < rows; ++i)
        for (Size j = 0; j < rows; ++j) w.product.row(i)[j] = w.h.row(i)[j] + zero;
}

void reflect_product(Work &w, Size k, Size rows) {
    MENSURA_DISPATCH(multiply)
    ({w.h.row(k) + k, w.h.stride}, {w.product.row(k), w.product.stride}, {w.next_product.row(k), w.product.stride},
     {rows - k, rows - k, rows});
    std::swap(w.product, w.next_product);
}

// What the next step needs of it: without row and column k.
void reflect_rest(Work &w, Size k, Shape shape) {
    const Size next = k + 1;
    MENSURA_DISPATCH(multiply)
    ({w.h.row(next) + k, w.h.stride}, {w.z.row(k) + next, w.z.stride}, {w.next_z.row(next) + next, w.z.stride},
     {shape.rows - next, shape.rows - k, shape.cols - next});
    std::swap(w.z, w.next_z);
}

// H_last ... H_0 into `result`; false when a number is not finite.
bool reflect_finite(const Matrix &x, Work w, Shape shape, double *const *result) {
    const Size rows = shape.rows, steps = steps_of(x);
    for (Size i = 0; i < rows; ++i) std::copy_n(x.v[i], shape.cols, w.z.row(i));
    for (Size k = 0; k < steps; ++k) {
        for (Size i = 0; i < rows; ++i) w.column[i] = i < k ? 0.0 : w.z.row(i)[k];
        const Support support = reflect_onto_axis(w.column, k, x.v[k][k], w.v);
        if (!is_finite(w, k, shape)) return false;
        const bool one_row = support.end - support.first == 1, last = k + 1 == steps;
        if (!one_row || k == 0) fill_reflector(w, k);
        if (k == 0)
            start_product(w, rows, last);
        else if (one_row)
            change_sign(result[support.first], rows);
        else
            reflect_product(w, k, rows);
        if (!last && !one_row)
            reflect_rest(w, k, shape);
        else if (!last && support.first >= k)
            change_sign(w.z.row(support.first), shape.cols);
        std::copy_n(w.product.row(k), rows, result[k]);
    }
    for (Size i = steps; i < rows; ++i) std::copy_n(w.product.row(i), rows, result[i]);
    return true;
}

MatrixOwner reflections(const Matrix &x) {
    const Shape shape{static_cast<Size>(x.m), static_cast<Size>(x.n)};
    const auto memory = mensura::scratch<double>(shape.scratch());
    MatrixOwner product{matrix_new(x.m, x.m)};
    if (!memory || !product) return nullptr;
    if (reflect_finite(x, divide(memory.get(), shape), shape, product->v)) return product;
    return reflect_in_full(x);
}

MatrixOwner identity(int n) {
    MatrixOwner x{matrix_new(n, n)};
    for (int i = 0; x && i < n; ++i) x->v[i][i] = 1.0;
    return x;
}

}  // namespace

void householder(const Matrix *x, Matrix **R, Matrix **Q) {
    const bool steps = x->m >= 2 && x->n >= 1;
    MatrixOwner q = steps ? reflections(*x) : identity(x->m);
    MatrixOwner r;
    if (q) r.reset(steps ? matrix_mul(q.get(), x) : matrix_copy(x->n, x->v, x->m));
    if (!r) q.reset();
    if (q) matrix_transpose(q.get());
    *R = r.release();
    *Q = q.release();
}

namespace {

// A row after row from 0: i + j.
MatrixOwner sample() {
    constexpr int kRows = 168, kCols = 84;
    MatrixOwner x{matrix_new(kRows, kCols)};
    for (int i = 0; x && i < kRows; ++i)
        for (int j = 0; j < kCols; ++j) x->v[i][j] = i + j;
    return x;
}

bool show(const char *label, const Matrix *x) {
    std::puts(label);
    return matrix_show(x) == 0;
}

}  // namespace

int QRtest() {
    const MatrixOwner x = sample();
    if (!x) return -1;
    Matrix *r_made = nullptr, *q_made = nullptr;
    householder(x.get(), &r_made, &q_made);
    const MatrixOwner r{r_made}, q{q_made}, product{q && r ? matrix_mul(q.get(), r.get()) : nullptr};
    if (!product) return -1;
    const bool shown[] = {show("Q", q.get()), show("R", r.get()), show("Q * R", product.get())};
    return std::ranges::all_of(shown, std::identity{}) ? 0 : -1;
}
