// Householder QR decomposition: Q = H_0 H_1 ... H_last, each H = I - 2 v v^T with a unit vector v.
//
// Step k reflects column k, from its element k on, onto axis k.  householder first runs the steps on finite data, where
// products with known zeros and ones can be left out; if a number turns out not to be finite, it runs them in full.

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

constexpr double kNegligible = 1e-10;  // a length or an element below this counts as 0

// Makes the unit vector v that reflects column x onto a multiple of axis k.  Where x lies on the axis already, v is the
// first axis along which x is negligible, and that axis is returned: its reflection changes the sign of one row.
std::optional<std::size_t> reflect_onto_axis(std::span<const double> x, std::size_t k, double diagonal,
                                             std::span<double> v) {
    const int n = static_cast<int>(x.size());
    double a = vnorm(x.data(), n);
    if (diagonal > 0.0) a = -a;
    std::ranges::fill(v, 0.0);
    v[k] = 1.0;
    vmadd(x.data(), v.data(), a, v.data(), n);
    if (const double length = vnorm(v.data(), n); length >= kNegligible) {
        vdiv(v.data(), length, v.data(), n);
        return std::nullopt;
    }
    const auto tiny = std::ranges::find_if(x, [](double element) { return std::fabs(element) < kNegligible; });
    if (tiny == x.end()) return std::nullopt;
    const auto axis = static_cast<std::size_t>(tiny - x.begin());
    std::ranges::fill(v, 0.0);
    v[axis] = 1.0;
    return axis;
}

std::size_t steps_of(const Matrix &x) { return static_cast<std::size_t>(std::min(x.n, x.m - 1)); }

// ---- Any data: full products, which spread NaN and infinity as the definition does ----

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
// The column of step k has zeros above k, so H is the identity in its first k rows and columns.  What would be multiplied
// by these zeros and ones is left out.  The full products would only turn -0 into +0, because their sums begin at +0.0.

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
        const std::size_t steps = steps_of(x);
        if (!make_v(x, 0)) return false;
        first_step(result, steps == 1);
        for (std::size_t k = 1; k < steps; ++k) {
            if (!make_v(x, k)) return false;
            if (axis_)
                change_sign(result.v[*axis_], rows_);  // a finished row: axis 0, because the column begins with zeros
            else
                reflect_product(k);
            std::swap(result.v[k], product_->v[k]);  // finished, except for its sign
            if (!axis_ && k + 1 < steps) reflect_rest(k);
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

    // v and axis_ of step k; false when a number of v, or of what is left of x, is not finite.
    bool make_v(const Matrix &x, std::size_t k) {
        const std::span column(vectors_.get(), rows_), v(vectors_.get() + rows_, rows_);
        for (std::size_t i = 0; i < rows_; ++i) column[i] = i < k ? 0.0 : z_->v[i][k];
        axis_ = reflect_onto_axis(column, k, x.v[k][k], v);
        return is_finite(v.data(), rows_) && rest_is_finite(k);
    }

    // The product begins as H_0.
    void first_step(Matrix &result, bool is_last) {
        fill_reflector(0);
        start_product(is_last);
        std::swap(result.v[0], product_->v[0]);
        if (axis_)
            change_sign(z_->v[*axis_], cols_);
        else if (!is_last)
            reflect_rest(0);
    }

    // H from row and column k on.
    void fill_reflector(std::size_t k) {
        const std::span<const double> v(vectors_.get() + rows_, rows_);
        for (std::size_t i = k; i < rows_; ++i) {
            double *const row = h_->v[i];
            std::ranges::transform(v.subspan(k), row + k, [twice = -2.0 * v[i]](double vj) { return twice * vj; });
            row[i] += 1.0;
        }
    }

    static void change_sign(double *row, std::size_t n) {
        for (std::size_t j = 0; j < n; ++j) row[j] = 0.0 - row[j];
    }

    // H_0.  If another step follows, its products would turn -0 into +0, as adding +0.0 does.
    void start_product(bool is_last) {
        const double zero = is_last ? -0.0 : 0.0;
        for (std::size_t i = 0; i < rows_; ++i)
            for (std::size_t j = 0; j < rows_; ++j) product_->v[i][j] = h_->v[i][j] + zero;
    }

    // product_ = H product_, rows from k on.
    void reflect_product(std::size_t k) {
        fill_reflector(k);
        const std::size_t left = rows_ - k;
        multiply_rows({h_->v + k, k}, {product_->v + k}, {next_product_->v + k}, left, left, rows_);
        std::swap(product_, next_product_);
    }

    // z_ = H z_ with the H written last, rows and columns after k: what the next step needs.
    void reflect_rest(std::size_t k) {
        const std::size_t n = k + 1;
        multiply_rows({h_->v + n, k}, {z_->v + k, n}, {next_z_->v + n, n}, rows_ - n, rows_ - k, cols_ - n);
        std::swap(z_, next_z_);
    }

    std::size_t rows_, cols_;
    MatrixOwner h_;
    MatrixOwner product_, next_product_;  // of the reflections: rows from k on
    MatrixOwner z_, next_z_;              // what is left of x: rows and columns from k on
    mensura::Scratch<double> vectors_;    // the column of a step, then v
    std::optional<std::size_t> axis_;     // along which v lies, if it lies along one
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
