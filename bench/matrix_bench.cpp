// Products, inverses and QR decompositions.

#include <mensura/matrix.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <vector>

#include "compare.h"
#include "matrix_peer.h"
#ifdef MENSURA_HAVE_OPENBLAS
#include <cblas.h>
#endif

namespace {

using Vector = std::vector<double>;

// ---- fixed capacity, n x n ----

// Random numbers, as a record and packed.
struct Square : RMATRIX {
    Vector packed;

    Square(int n, unsigned seed) : RMATRIX(), packed(bench::noise(static_cast<std::size_t>(n * n), seed)) {
        setRMATRIX_ptr(packed.data(), n, n, this);
    }
};

// `ours` writes to `out`.
template <typename Ours>
void compare_with(benchmark::State &state, const peer::Job &job, const RMATRIX &out, Ours ours) {
    const int n = out.rows, times = 1 + 200000 / (n * n * n);
    const auto repeated = [&] {
        for (int i = 0; i < times; ++i) ours();
    };
    bench::compare(state, times, repeated, [&] { job.run(times); });

    double error = 0, largest = 0;
    for (int k = 0; k < n * n; ++k) {
        error = std::max(error, std::abs(out.data[k / n * RMATRIX_CAPACITY + k % n] - job.result[k]));
        largest = std::max(largest, std::abs(job.result[k]));
    }
    state.counters["difference"] = error / largest;
}

#ifdef MENSURA_HAVE_EIGEN

void rmatrix_multi_ptr_against_Eigen(benchmark::State &state) {
    const int n = static_cast<int>(state.range(0));
    Square a(n, 1), b(n, 2), c(n, 3);
    compare_with(state, peer::product(n, a.packed.data(), b.packed.data()), c, [&] { rmatrix_multi_ptr(&a, &b, &c); });
}
MENSURA_COMPARE(rmatrix_multi_ptr_against_Eigen, 1000)->Arg(4)->Arg(9)->Arg(100);

void rmatrix_inverse_ptr_against_Eigen(benchmark::State &state) {
    const int n = static_cast<int>(state.range(0));
    Square a(n, 1), inverse(n, 2);
    compare_with(state, peer::inverse(n, a.packed.data()), inverse, [&] { rmatrix_inverse_ptr(&a, &inverse); });
}
MENSURA_COMPARE(rmatrix_inverse_ptr_against_Eigen, 400)->Arg(9)->Arg(100);

#endif
#ifdef MENSURA_HAVE_OPENBLAS

void rmatrix_multi_ptr_against_OpenBLAS(benchmark::State &state) {
    constexpr int n = 100;
    Square a(n, 1), b(n, 2), c(n, 3);
    Vector product(n * n);
    openblas_set_num_threads(1);
    const auto dgemm = [&](int) {
        cblas_dgemm(CblasRowMajor, CblasNoTrans, CblasNoTrans, n, n, n, 1.0, a.packed.data(), n, b.packed.data(), n,
                    0.0, product.data(), n);
    };
    compare_with(state, {dgemm, product.data()}, c, [&] { rmatrix_multi_ptr(&a, &b, &c); });
}
MENSURA_COMPARE(rmatrix_multi_ptr_against_OpenBLAS, 1000);

#endif

// ---- QR decomposition against the loops of a textbook, with the same bits ----

using Rows = std::vector<Vector>;

constexpr std::size_t kRows = 168, kCols = 84;

Rows product(const Rows &x, const Rows &y) {
    Rows z(x.size(), Vector(y[0].size()));
    for (std::size_t i = 0; i < z.size(); ++i)
        for (std::size_t j = 0; j < z[i].size(); ++j) {
            double sum = 0;
            for (std::size_t k = 0; k < y.size(); ++k) sum += x[i][k] * y[k][j];
            z[i][j] = sum;
        }
    return z;
}

double norm(const Vector &v) { return std::sqrt(std::inner_product(v.begin(), v.end(), v.begin(), 0.0)); }

// Reflects `column` onto a multiple of axis k, of the other sign than `diagonal`.
Rows reflector(const Vector &column, std::size_t k, double diagonal) {
    Vector v = column;
    v[k] += diagonal > 0 ? -norm(column) : norm(column);
    if (const double length = norm(v); length >= 1e-10) {
        for (double &e : v) e /= length;
    } else if (const auto tiny = std::ranges::find_if(column, [](double e) { return std::abs(e) < 1e-10; });
               tiny != column.end()) {
        v.assign(v.size(), 0.0);
        v[static_cast<std::size_t>(tiny - column.begin())] = 1;
    }
    Rows h(v.size(), Vector(v.size()));
    for (std::size_t i = 0; i < v.size(); ++i) {
        for (std::size_t j = 0; j < v.size(); ++j) h[i][j] = -2 * v[i] * v[j];
        h[i][i] += 1;
    }
    return h;
}

// Every reflector is a full matrix, every product multiplied out.
void textbook_householder(const Rows &x, Rows &q_transposed, Rows &r) {
    Rows z = x, &p = q_transposed;
    for (std::size_t k = 0; k < kCols; ++k) {
        Vector column(kRows);
        for (std::size_t i = 0; i < kRows; ++i) {  // identity in the first k rows and columns
            for (std::size_t j = 0; j < kCols; ++j)
                if (i < k || j < k) z[i][j] = i == j ? 1 : 0;
            column[i] = z[i][k];
        }
        const Rows h = reflector(column, k, x[k][k]);
        z = product(h, z);
        p = k == 0 ? h : product(h, p);
    }
    r = product(p, x);
}

template <typename Element>
void compare_with_textbook(benchmark::State &state, Element element) {
    Matrix *const x = matrix_new(kRows, kCols), *q = nullptr, *r = nullptr;
    Rows rows(kRows, Vector(kCols)), peer_q, peer_r;  // peer_q is transposed
    for (std::size_t i = 0; i < kRows; ++i)
        for (std::size_t j = 0; j < kCols; ++j) x->v[i][j] = rows[i][j] = element(i, j);
    const auto ours = [&] {
        matrix_delete(q);
        matrix_delete(r);
        householder(x, &r, &q);
    };
    bench::compare(state, 1, ours, [&] { textbook_householder(rows, peer_q, peer_r); });

    const auto bits = [](double x) { return std::bit_cast<std::uint64_t>(x); };
    int differing = 0;
    for (std::size_t i = 0; i < kRows; ++i) {
        for (std::size_t j = 0; j < kRows; ++j) differing += bits(q->v[i][j]) != bits(peer_q[j][i]);
        for (std::size_t j = 0; j < kCols; ++j) differing += bits(r->v[i][j]) != bits(peer_r[i][j]);
    }
    for (Matrix *m : {x, q, r}) matrix_delete(m);
    state.counters["differing"] = differing;
    state.counters["speedup"] = state.counters["peer_ns"] / state.counters["ours_ns"];
}

void householder_of_noise_against_textbook(benchmark::State &state) {
    const Vector noise = bench::noise(kRows * kCols);
    compare_with_textbook(state, [&](std::size_t i, std::size_t j) { return noise[i * kCols + j]; });
}
MENSURA_COMPARE(householder_of_noise_against_textbook, 10);

// Of rank 2: most of the steps have nothing to reflect but rounding errors.
void householder_of_i_plus_j_against_textbook(benchmark::State &state) {
    compare_with_textbook(state, [](std::size_t i, std::size_t j) { return static_cast<double>(i + j); });
}
MENSURA_COMPARE(householder_of_i_plus_j_against_textbook, 10);

}  // namespace

BENCHMARK_MAIN();
