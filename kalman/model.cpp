// The tracking model: position, velocity and acceleration of k axes, in this order.

#include <mensura/kalman.h>

#include <algorithm>
#include <cstddef>

namespace {

std::size_t count(int n) { return static_cast<std::size_t>(std::max(n, 0)); }

double *zeroed(double *m, std::size_t rows, std::size_t cols) {
    std::fill_n(m, rows * cols, 0.0);
    return m;
}

// The covariances of the position p, velocity v and acceleration a of one axis.
struct Covariance {
    double pp, pv, pa, vv, va, aa;
};

double *covariance(double *m, int states, const Covariance &c) {
    const std::size_t n = count(states), k = n / 3;
    zeroed(m, n, n);
    const auto set_both = [&](std::size_t i, std::size_t j, double value) { m[i * n + j] = m[j * n + i] = value; };
    for (std::size_t i = 0; i < k; ++i) {
        const std::size_t p = i, v = i + k, a = i + 2 * k;
        set_both(p, p, c.pp);
        set_both(p, v, c.pv);
        set_both(p, a, c.pa);
        set_both(v, v, c.vv);
        set_both(v, a, c.va);
        set_both(a, a, c.aa);
    }
    return m;
}

// `value` on the diagonal, 0 elsewhere.
double *diagonal(double *m, std::size_t rows, std::size_t cols, double value) {
    zeroed(m, rows, cols);
    for (std::size_t i = 0; i < rows; ++i) m[i * cols + i] = value;
    return m;
}

}  // namespace

// Each axis: p += dt v, v += dt a.
double *getKalmanFilterA(double *A, int states, double dt) {
    const std::size_t n = count(states), k = n / 3;
    zeroed(A, n, n);
    for (std::size_t i = 0; i < 3 * k; ++i) A[i * n + i] = 1.0;
    for (std::size_t i = 0; i < 2 * k; ++i) A[i * n + i + k] = dt;
    return A;
}

double *getKalmanFilterC(double *C, int m) { return diagonal(C, count(m), 3 * count(m), 1.0); }

double *getKalmanFilterQ(double *Q, int n, double qpp, double qpv, double qpa, double qvv, double qva, double qaa) {
    return covariance(Q, n, {qpp, qpv, qpa, qvv, qva, qaa});
}

double *getKalmanFilterR(double *R, int m, double r) { return diagonal(R, count(m), count(m), r); }

double *getKalmanFilterP(double *P, int n, double p) {
    return covariance(P, n, {.pp = p, .pv = p, .pa = p, .vv = 100000.0 * p, .va = 100.0 * p, .aa = 1000.0 * p});
}
