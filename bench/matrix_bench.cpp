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
    const std::size_t rows = x.size(), cols = x[0].size();
    Rows z = x, &p = q_transposed;
    for (std::size_t k = 0; k < std::min(cols, rows - 1); ++k) {
        Vector column(rows);
        for (std::size_t i = 0; i < rows; ++i) {  // identity in the first k rows and columns
            for (std::size_t j = 0; j < cols; ++j)
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
void compare_with_textbook(benchmark::State &state, std::size_t m, std::size_t n, Element element) {
    Matrix *const x = matrix_new(static_cast<int>(m), static_cast<int>(n)), *q = nullptr, *r = nullptr;
    Rows rows(m, Vector(n)), peer_q, peer_r;  // peer_q is transposed
    for (std::size_t i = 0; i < m; ++i)
        for (std::size_t j = 0; j < n; ++j) x->v[i][j] = rows[i][j] = element(i, j);
    const std::size_t times = 1 + 100000 / std::max<std::size_t>(m * m * m * n, 1);
    const auto repeated = [&](auto decompose) {
        return [&, decompose] {
            for (std::size_t t = 0; t < times; ++t) decompose();
        };
    };
    const auto ours = [&] {
        matrix_delete(q);
        matrix_delete(r);
        householder(x, &r, &q);
    };
    bench::compare(state, static_cast<double>(times), repeated(ours),
                   repeated([&] { textbook_householder(rows, peer_q, peer_r); }));

    const auto bits = [](double value) { return std::bit_cast<std::uint64_t>(value); };
    int differing = 0;
    for (std::size_t i = 0; i < m; ++i) {
        for (std::size_t j = 0; j < m; ++j) differing += bits(q->v[i][j]) != bits(peer_q[j][i]);
        for (std::size_t j = 0; j < n; ++j) differing += bits(r->v[i][j]) != bits(peer_r[i][j]);
    }
    for (Matrix *made : {x, q, r}) matrix_delete(made);
    state.counters["differing"] = differing;
    state.counters["speedup"] = state.counters["peer_ns"] / state.counters["ours_ns"];
}

void compare_noise_with_textbook(benchmark::State &state, std::size_t m, std::size_t n) {
    const Vector noise = bench::noise(m * n);
    compare_with_textbook(state, m, n, [&](std::size_t i, std::size_t j) { return noise[i * n + j]; });
}

void householder_of_noise_against_textbook(benchmark::State &state) { compare_noise_with_textbook(state, 168, 84); }
MENSURA_COMPARE(householder_of_noise_against_textbook, 6);

void householder_square_against_textbook(benchmark::State &state) {
    const auto n = static_cast<std::size_t>(state.range(0));
    compare_noise_with_textbook(state, n, n);
}
MENSURA_COMPARE(householder_square_against_textbook, 400)->Arg(4)->Arg(16);

// Of rank 2: most of the steps have nothing to reflect but rounding errors.
void householder_of_i_plus_j_against_textbook(benchmark::State &state) {
    compare_with_textbook(state, 168, 84, [](std::size_t i, std::size_t j) { return static_cast<double>(i + j); });
}
MENSURA_COMPARE(householder_of_i_plus_j_against_textbook, 6);

}  // namespace

BENCHMARK_MAIN();
