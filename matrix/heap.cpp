// Matrices on the heap, and the vector routines beside them.

#include "heap.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "product_kernel.h"

using namespace mensura::matrix;

namespace {

std::size_t count(int n) { return static_cast<std::size_t>(std::max(n, 0)); }

constexpr int kBlankLines = 20;  // after each matrix that matrix_show writes

constexpr std::size_t kShort = 128;  // numbers

// A length of 0 gets memory too, so that null means failure.
template <typename T>
T *allocate(std::size_t length) {
    const std::size_t most = SIZE_MAX / sizeof(T);
    return length > most ? nullptr : static_cast<T *>(std::malloc(std::max<std::size_t>(length, 1) * sizeof(T)));
}

// Long rows may come as fresh pages, which are zeros already.
double *zeros(std::size_t length) {
    if (length > kShort) return static_cast<double *>(std::calloc(length, sizeof(double)));
    double *const row = allocate<double>(length);
    if (row != nullptr) std::fill_n(row, length, 0.0);
    return row;
}

// A matrix whose rows come from row_of(n).
template <typename RowOf>
MatrixOwner made_of(int m, int n, RowOf row_of) {
    MatrixOwner x{allocate<Matrix>(1)};
    if (!x) return nullptr;
    *x = {0, std::max(n, 0), allocate<double *>(count(m))};
    if (x->v == nullptr) return nullptr;
    for (; x->m < m; ++x->m)
        if ((x->v[x->m] = row_of(count(n))) == nullptr) return nullptr;
    return x;
}

}  // namespace

MatrixOwner mensura::matrix::unset_matrix(int m, int n) { return made_of(m, n, allocate<double>); }

Matrix *matrix_new(int m, int n) { return made_of(m, n, zeros).release(); }

void matrix_delete(Matrix *x) {
    if (x == nullptr) return;
    if (x->v != nullptr)
        for (std::size_t i = 0; i < count(x->m); ++i) std::free(x->v[i]);
    std::free(x->v);
    std::free(x);
}

Matrix *matrix_copy(int n, double *const *rows, int m) {
    MatrixOwner x = unset_matrix(m, n);
    for (std::size_t i = 0; x && i < count(m); ++i) std::copy_n(rows[i], count(n), x->v[i]);
    return x.release();
}

void matrix_transpose(Matrix *x) {
    if (x->n < x->m) return;
    for (std::size_t i = 1; i < count(x->m); ++i)
        for (std::size_t j = 0; j < i; ++j) std::swap(x->v[i][j], x->v[j][i]);
}

Matrix *matrix_mul(const Matrix *x, const Matrix *y) {
    if (x->n != y->m) return nullptr;
    MatrixOwner product = unset_matrix(x->m, y->n);
    if (product) multiply_rows({x->v}, {y->v}, {product->v}, count(x->m), count(x->n), count(y->n));
    return product.release();
}

Matrix *matrix_minor(const Matrix *x, int d) {
    Matrix *minor = matrix_new(x->m, x->n);
    if (minor == nullptr) return nullptr;
    const std::size_t first = count(d), rows = count(x->m), cols = count(x->n);
    for (std::size_t i = 0; i < std::min({first, rows, cols}); ++i) minor->v[i][i] = 1.0;
    for (std::size_t i = first; i < rows; ++i)
        for (std::size_t j = first; j < cols; ++j) minor->v[i][j] = x->v[i][j];
    return minor;
}

double *vmadd(const double *a, const double *b, double s, double *c, int n) {
    for (int i = 0; i < n; ++i) c[i] = a[i] + s * b[i];
    return c;
}

Matrix *vmul(const double *v, int n) {
    MatrixOwner reflector = unset_matrix(n, n);
    if (!reflector) return nullptr;
    for (std::size_t i = 0; i < count(n); ++i) {
        for (std::size_t j = 0; j < count(n); ++j) reflector->v[i][j] = -2.0 * v[i] * v[j];
        reflector->v[i][i] += 1.0;
    }
    return reflector.release();
}

double vnorm(const double *x, int n) {
    double sum = 0.0;
    for (int i = 0; i < n; ++i) sum += x[i] * x[i];
    return std::sqrt(sum);
}

double *vdiv(const double *x, double d, double *y, int n) {
    for (int i = 0; i < n; ++i) y[i] = x[i] / d;
    return y;
}

double *mcol(const Matrix *x, double *out, int c) {
    if (c >= 0 && c < x->n)
        for (std::size_t i = 0; i < count(x->m); ++i) out[i] = x->v[i][c];
    return out;
}

int matrix_show(const Matrix *x) {
    std::FILE *file = std::fopen("dataQR.txt", "w");
    if (file == nullptr) return EOF;
    for (std::size_t i = 0; i < count(x->m); ++i) {
        for (std::size_t j = 0; j < count(x->n); ++j) std::fprintf(file, "%.15f,", x->v[i][j]);
        std::fputc('\n', file);
    }
    for (int i = 0; i < kBlankLines; ++i) std::fputc('\n', file);
    return std::fclose(file);
}
