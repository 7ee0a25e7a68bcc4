// Householder QR decomposition: Q = H_0 H_1 ... H_last, each H = I - 2 v v^T with a unit vector v.
//
// Step k reflects column k, from its element k on, onto axis k.  householder first runs the steps on finite data, where
// products with known zeros and ones can be left out; if a number turns out not to be finite, it runs them in full.

#include <algorithm>
#include <cmath>
#include <cstdint>
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

// Makes the unit vector v that reflects column x onto a multiple of axis k.  False where x lies on the axis already: less
// than kNegligible is left to reflect, and v is of no use.
bool reflect_onto_axis(std::span<const double> x, std::size_t k, double diagonal, std::span<double> v) {
    const int n = static_cast<int>(x.size());
    double a = vnorm(x.data(), n);
    if (diagonal > 0.0) a = -a;
    std::ranges::fill(v, 0.0);
    v[k] = 1.0;
    vmadd(x.data(), v.data(), a, v.data(), n);
    const double length = vnorm(v.data(), n);
    const bool reflects = length >= kNegligible;
    if (reflects) vdiv(v.data(), length, v.data(), n);
    return reflects;
}

// In that case v is the first axis along which x is negligible: its reflection changes the sign of one row.
std::optional<std::size_t> replace_by_axis(std::span<const double> x, std::span<double> v) {
    const auto tiny = std::ranges::find_if(x, [](double element) { return std::fabs(element) < kNegligible; });
    if (tiny == x.end()) return std::nullopt;
    const auto axis = static_cast<std::size_t>(tiny - x.begin());
    std::ranges::fill(v, 0.0);
    v[axis] = 1.0;
    return axis;
}

std::size_t steps_of(const Matrix &x) { return static_cast<std::size_t>(std::min(x.n, x.m - 1)); }

// Q and R, or neither without memory.
struct Factors {
    MatrixOwner q, r;
};

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
        if (!reflect_onto_axis(column, k, x.v[k][k], v)) replace_by_axis(column, v);
        MatrixOwner h{vmul(v.data(), x.m)};
        if (!h) return nullptr;
        z.reset(matrix_mul(h.get(), minor.get()));
        product = product ? MatrixOwner{matrix_mul(h.get(), product.get())} : std::move(h);
        if (!z || !product) return nullptr;
    }
    return product;
}

Factors factors_in_full(const Matrix &x) {
    MatrixOwner q = reflect_in_full(x);
    if (!q) return {};
    MatrixOwner r{matrix_mul(q.get(), &x)};
    if (!r) return {};
    matrix_transpose(q.get());
    return {std::move(q), std::move(r)};
}

// ---- Finite data ----
//
// The column of step k has zeros above k, so H is the identity in its first k rows and columns.  What would be multiplied
// by these zeros and ones is left out.  The full products would only turn -0 into +0, because their sums begin at +0.0.

class FiniteReflections {
  public:
    explicit FiniteReflections(const Matrix &x)
        : rows_(static_cast<std::size_t>(x.m)), cols_(static_cast<std::size_t>(x.n)), memory_(allocate(x)) {
        if (!memory_) return;
        column_ = memory_.get();
        v_ = column_ + rows_;
        double *next_number = v_ + rows_;
        auto **next_row = reinterpret_cast<double **>(next_number + rows_ * (3 * rows_ + 2 * cols_));
        for (double ***matrix : {&h_, &product_, &next_product_}) *matrix = rows_of(next_number, next_row, rows_);
        for (double ***matrix : {&z_, &next_z_}) *matrix = rows_of(next_number, next_row, cols_);
        finished_ = next_row;
        for (std::size_t i = 0; i < rows_; ++i) std::copy_n(x.v[i], cols_, z_[i]);
    }

    [[nodiscard]] bool has_memory() const { return memory_ != nullptr; }

    // Finds H_last ... H_0; false when a number is not finite.
    bool run(const Matrix &x) {
        const std::size_t steps = steps_of(x);
        if (!make_v(x, 0)) return false;
        first_step(steps == 1);
        for (std::size_t k = 1; k < steps; ++k) {
            if (!make_v(x, k)) return false;
            if (axis_)
                change_sign(finished_[*axis_], rows_);
            else
                reflect_product(k);
            finished_[k] = product_[k];  // but for its sign
            if (!axis_ && k + 1 < steps) reflect_rest(k);
        }
        std::copy(product_ + steps, product_ + rows_, finished_ + steps);
        return true;
    }

    // Q is the transpose of H_last ... H_0, and R that times x.
    [[nodiscard]] Factors factors(const Matrix &x) const {
        Factors made{unset_matrix(x.m, x.m), unset_matrix(x.m, x.n)};
        if (!made.q || !made.r) return {};
        multiply_rows({finished_}, {x.v}, {made.r->v}, rows_, rows_, cols_);
        for (std::size_t i = 0; i < rows_; ++i)
            for (std::size_t j = 0; j < rows_; ++j) made.q->v[i][j] = finished_[j][i];
        return made;
    }

  private:
    // Two vectors, three matrices of the size of Q, two of that of x, and pointers to the rows of six matrices.
    static mensura::Scratch<double> allocate(const Matrix &x) {
        static_assert(sizeof(double *) <= sizeof(double));
        const auto rows = static_cast<std::uint64_t>(x.m), cols = static_cast<std::uint64_t>(x.n);
        const std::uint64_t each_row = (2 + 3 * rows + 2 * cols) + 6;
        if (each_row > SIZE_MAX / sizeof(double) / rows) return nullptr;
        return mensura::scratch<double>(static_cast<std::size_t>(rows * each_row));
    }

    double **rows_of(double *&next_number, double **&next_row, std::size_t cols) const {
        double **const matrix = next_row;
        for (std::size_t i = 0; i < rows_; ++i, next_number += cols) *next_row++ = next_number;
        return matrix;
    }

    static bool is_finite(const double *x, std::size_t n) {
        bool finite = true;
        for (std::size_t i = 0; i < n; ++i) finite &= std::isfinite(x[i]);
        return finite;
    }

    [[nodiscard]] bool rest_is_finite(std::size_t k) const {
        bool finite = true;
        for (std::size_t i = k; i < rows_; ++i) finite &= is_finite(z_[i] + k, cols_ - k);
        return finite;
    }

    // v and axis_ of step k; false when a number is not finite.  A reflection spreads such a number over its column, so
    // that it shows in the v of a later step.  The change of a sign does not: then all that is left of x is looked at.
    bool make_v(const Matrix &x, std::size_t k) {
        const std::span column(column_ + k, rows_ - k), v(v_ + k, rows_ - k);
        for (std::size_t i = k; i < rows_; ++i) column_[i] = z_[i][k];
        axis_ = std::nullopt;
        if (!reflect_onto_axis(column, 0, x.v[k][k], v))
            axis_ = k > 0 ? 0 : replace_by_axis(column, v);  // above k the column is 0, along axis 0 to begin with
        return axis_ ? rest_is_finite(k) : is_finite(v.data(), v.size());
    }

    // The product begins as H_0.
    void first_step(bool is_last) {
        fill_reflector(0);
        start_product(is_last);
        finished_[0] = product_[0];
        if (axis_)
            change_sign(z_[*axis_], cols_);
        else if (!is_last)
            reflect_rest(0);
    }

    // H from row and column k on.
    void fill_reflector(std::size_t k) {
        const std::span<const double> v(v_, rows_);
        for (std::size_t i = k; i < rows_; ++i) {
            double *const row = h_[i];
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
            for (std::size_t j = 0; j < rows_; ++j) product_[i][j] = h_[i][j] + zero;
    }

    // product_ = H product_, rows from k on.
    void reflect_product(std::size_t k) {
        fill_reflector(k);
        const std::size_t left = rows_ - k;
        multiply_rows({h_ + k, k}, {product_ + k}, {next_product_ + k}, left, left, rows_);
        std::swap(product_, next_product_);
    }

    // z_ = H z_ with the H written last, rows and columns after k: what the next step needs.
    void reflect_rest(std::size_t k) {
        const std::size_t n = k + 1;
        multiply_rows({h_ + n, k}, {z_ + k, n}, {next_z_ + n, n}, rows_ - n, rows_ - k, cols_ - n);
        std::swap(z_, next_z_);
    }

    std::size_t rows_, cols_;
    mensura::Scratch<double> memory_;
    double *column_, *v_;                // of a step, from k on
    double **h_;                         // rows and columns from k on
    double **product_, **next_product_;  // of the reflections: rows from k on
    double **z_, **next_z_;              // what is left of x: rows and columns from k on
    double **finished_;                  // of the product: rows before k, each where it was made
    std::optional<std::size_t> axis_;    // along which v lies, if it lies along one
};

Factors factors_of(const Matrix &x) {
    {
        FiniteReflections finite(x);
        if (!finite.has_memory()) return {};
        if (finite.run(x)) return finite.factors(x);
    }  // its memory goes to the full products
    return factors_in_full(x);
}

MatrixOwner identity(int n) {
    MatrixOwner x{matrix_new(n, n)};
    for (int i = 0; x && i < n; ++i) x->v[i][i] = 1.0;
    return x;
}

}  // namespace

void householder(const Matrix *x, Matrix **R, Matrix **Q) {
    const bool steps = x->m >= 2 && x->n >= 1;
    auto [q, r] = steps ? factors_of(*x) : Factors{identity(x->m), MatrixOwner{matrix_copy(x->n, x->v, x->m)}};
    if (!q || !r) {
        q.reset();
        r.reset();
    }
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
