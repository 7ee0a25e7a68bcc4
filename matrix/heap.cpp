// Matrices on the heap, and the vector routines beside them.

#include "heap.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "product_kernel.h"

using namespace mensura::matrix;

namespace {

std::size_t count(int n) { return static_cast<std::size_t>(std::max(n, 0)); }

constexpr int kBlankLines = 20;  // after each matrix that matrix_show writes

// Zeros of all bits are doubles of +0.0.  A length of 0 gets memory too, so that null means failure.
template <typename T>
T *zeros(std::size_t length) {
    return static_cast<T *>(std::calloc(std::max<std::size_t>(length, 1), sizeof(T)));
}

}  // namespace

Matrix *matrix_new(int m, int n) {
    MatrixOwner x{static_cast<Matrix *>(std::malloc(sizeof(Matrix)))};
    if (!x) return nullptr;
    *x = {std::max(m, 0), std::max(n, 0), zeros<double *>(count(m))};
    if (x->v == nullptr) return nullptr;
    for (std::size_t i = 0; i < count(m); ++i)
        if ((x->v[i] = zeros<double>(count(n))) == nullptr) return nullptr;
    return x.release();
}

void matrix_delete(Matrix *x) {
    if (x == nullptr) return;
    if (x->v != nullptr)
        for (std::size_t i = 0; i < count(x->m); ++i) std::free(x->v[i]);
    std::free(x->v);
    std::free(x);
}

Matrix *matrix_copy(int n, double *const *rows, int m) {
    Matrix *x = matrix_new(m, n);
    if (x != nullptr)
        for (std::size_t i = 0; i < count(m); ++i) std::copy_n(rows[i], count(n), x->v[i]);
    return x;
}

void matrix_transpose(Matrix *x) {
    if (x->n < x->m) return;
    for (std::size_t i = 1; i < count(x->m); ++i)
        for (std::size_t j = 0; j < i; ++j) std::swap(x->v[i][j], x->v[j][i]);
}

Matrix *matrix_mul(const Matrix *x, const Matrix *y) {
    if (x->n != y->m) return nullptr;
    Matrix *product = matrix_new(x->m, y->n);
    if (product != nullptr) multiply_rows({x->v}, {y->v}, {product->v}, count(x->m), count(x->n), count(y->n));
    return product;
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
    Matrix *reflector = matrix_new(n, n);
    if (reflector == nullptr) return nullptr;
    for (std::size_t i = 0; i < count(n); ++i) {
        for (std::size_t j = 0; j < count(n); ++j) reflector->v[i][j] = -2.0 * v[i] * v[j];
        reflector->v[i][i] += 1.0;
    }
    return reflector;
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
