// Householder QR decomposition, Q = H_0 H_1 ... with H = I - 2 v v^T.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <span>
#include <utility>

#include "../internal/scratch.h"
#include "heap.h"
#include "product_kernel.h"

using namespace mensura::matrix;

namespace {

constexpr double kNothingLeft = 1e-10;  // length and elements below which there is nothing to reflect

// Makes the v that reflects column x onto a multiple of axis k.  Where that leaves nothing to reflect, v is the first
// axis along which x has next to nothing, and that axis is returned.
std::optional<std::size_t> reflect_onto_axis(std::span<const double> x, std::size_t k, double diagonal,
                                             std::span<double> v) {
    const int n = static_cast<int>(x.size());
    double a = vnorm(x.data(), n);
    if (diagonal > 0.0) a = -a;
    std::ranges::fill(v, 0.0);
    v[k] = 1.0;
    vmadd(x.data(), v.data(), a, v.data(), n);
    if (const double length = vnorm(v.data(), n); length >= kNothingLeft) {
        vdiv(v.data(), length, v.data(), n);
        return std::nullopt;
    }
    const auto tiny = std::ranges::find_if(x, [](double element) { return std::fabs(element) < kNothingLeft; });
    if (tiny == x.end()) return std::nullopt;
    const auto axis = static_cast<std::size_t>(tiny - x.begin());
    std::ranges::fill(v, 0.0);
    v[axis] = 1.0;
    return axis;
}

std::size_t steps_of(const Matrix &x) { return static_cast<std::size_t>(std::min(x.n, x.m - 1)); }

// ---- Any data, with every term: NaN and infinity go where the full products take them ----

// H_last ... H_0, or null without memory.
MatrixOwner reflect_in_full(const Matrix &x) {
    const auto rows = static_cast<std::size_t>(x.m);
    const auto vectors = mensura::scratch<double>(2 * rows);
    if (!vectors) return nullptr;
    const std::span column(vectors.get(), rows), v(vectors.get() + rows, rows);
    MatrixOwner z, product;
    for (std::size_t k = 0; k < steps_of(x); ++k) {
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

class FiniteReflections {
  public:
    explicit FiniteReflections(const Matrix &x)
        : rows_(static_cast<std::size_t>(x.m)),
          cols_(static_cast<std::size_t>(x.n)),
          h_(matrix_new(x.m, x.m)),
          product_(matrix_new(x.m, x.m)),
          next_product_(matrix_new(x.m, x.m)),
          z_(matrix_copy(x.n, x.v, x.m)),
          next_z_(matrix_new(x.m, x.n)),
          vectors_(mensura::scratch<double>(2 * rows_)) {}

    [[nodiscard]] bool has_memory() const { return h_ && product_ && next_product_ && z_ && next_z_ && vectors_; }

    // H_last ... H_0 into the rows of `result`; false when a number is not finite.
    bool run(const Matrix &x, Matrix &result) {
        const std::span column(vectors_.get(), rows_), v(vectors_.get() + rows_, rows_);
        const std::size_t steps = steps_of(x);
        for (std::size_t k = 0; k < steps; ++k) {
            for (std::size_t i = 0; i < rows_; ++i) column[i] = i < k ? 0.0 : z_->v[i][k];
            const std::optional<std::size_t> axis = reflect_onto_axis(column, k, x.v[k][k], v);
            if (!is_finite(v.data(), rows_) || !rest_is_finite(k)) return false;
            if (k == 0 || !axis) fill_reflector(v, k);
            if (k == 0) start_product(steps == 1);
            if (k > 0 && axis) change_sign(result.v[*axis], rows_);
            if (k > 0 && !axis) reflect_product(k);
            std::swap(result.v[k], product_->v[k]);  // no later product changes it, but for its sign
            if (!axis && k + 1 < steps) reflect_rest(k);
            if (axis && *axis >= k) change_sign(z_->v[*axis], cols_);
        }
        for (std::size_t i = steps; i < rows_; ++i) std::swap(result.v[i], product_->v[i]);
        return true;
    }

  private:
    static bool is_finite(const double *x, std::size_t n) {
        bool finite = true;
        for (std::size_t i = 0; i < n; ++i) finite &= std::isfinite(x[i]);
        return finite;
    }

    [[nodiscard]] bool rest_is_finite(std::size_t k) const {
        bool finite = true;
        for (std::size_t i = k; i < rows_; ++i) finite &= is_finite(z_->v[i] + k, cols_ - k);
        return finite;
    }

    // H from row and column k on.
    void fill_reflector(std::span<const double> v, std::size_t k) {
        for (std::size_t i = k; i < rows_; ++i) {
            double *const row = h_->v[i];
            std::ranges::transform(v.subspan(k), row + k, [twice = -2.0 * v[i]](double vj) { return twice * vj; });
            row[i] += 1.0;
        }
    }

    static void change_sign(double *row, std::size_t n) {
        for (std::size_t j = 0; j < n; ++j) row[j] = 0.0 - row[j];
    }

    // H_0, with +0.0 for -0 if another reflection follows.
    void start_product(bool alone) {
        const double zero = alone ? -0.0 : 0.0;
        for (std::size_t i = 0; i < rows_; ++i)
            for (std::size_t j = 0; j < rows_; ++j) product_->v[i][j] = h_->v[i][j] + zero;
    }

    void reflect_product(std::size_t k) {
        const std::size_t left = rows_ - k;
        multiply_rows({h_->v + k, k}, {product_->v + k}, {next_product_->v + k}, left, left, rows_);
        std::swap(product_, next_product_);
    }

    // What the next step needs of z: without row and column k.
    void reflect_rest(std::size_t k) {
        const std::size_t n = k + 1;
        multiply_rows({h_->v + n, k}, {z_->v + k, n}, {next_z_->v + n, n}, rows_ - n, rows_ - k, cols_ - n);
        std::swap(z_, next_z_);
    }

    std::size_t rows_, cols_;
    MatrixOwner h_;
    MatrixOwner product_, next_product_;  // of the reflections: rows from k on
    MatrixOwner z_, next_z_;              // what is left of x: rows and columns from k on
    mensura::Scratch<double> vectors_;
};

MatrixOwner reflections(const Matrix &x) {
    {
        FiniteReflections finite(x);
        MatrixOwner product{matrix_new(x.m, x.m)};
        if (!finite.has_memory() || !product) return nullptr;
        if (finite.run(x, *product)) return product;
    }  // its memory goes to the full products
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

// Element (i, j) is i + j.
MatrixOwner sample() {
    constexpr int kRows = 168, kCols = 84;
    MatrixOwner x{matrix_new(kRows, kCols)};
    for (int i = 0; x && i < kRows; ++i)
        for (int j = 0; j < kCols; ++j) x->v[i][j] = i + j;
    return x;
}

void show(const char *label, const Matrix *x) {
    std::puts(label);
    matrix_show(x);
}

}  // namespace

int QRtest() {
    const MatrixOwner x = sample();
    if (!x) return -1;
    Matrix *r_made = nullptr, *q_made = nullptr;
    householder(x.get(), &r_made, &q_made);
    const MatrixOwner r{r_made}, q{q_made}, product{q ? matrix_mul(q.get(), r.get()) : nullptr};
    if (!product) return -1;
    show("Q", q.get());
    show("R", r.get());
    show("Q * R", product.get());
    return 0;
}
