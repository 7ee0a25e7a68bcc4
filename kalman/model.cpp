// The tracking model: position, velocity and acceleration of k axes, in this order.

#include <mensura/kalman.h>

#include <algorithm>
#include <cstddef>

namespace {

using Size = std::size_t;

Size count(int n) { return static_cast<Size>(std::max(n, 0)); }

double *zeroed(double *m, Size rows, Size cols) {
    std::fill_n(m, rows * cols, 0.0);
    return m;
}

// Of one axis; symmetric.
struct Covariance {
    double pp, pv, pa, vv, va, aa;
};

double *covariance(double *m, int states, const Covariance &c) {
    const Size n = count(states), k = n / 3;
    zeroed(m, n, n);
    const auto set_both = [&](Size i, Size j, double value) { m[i * n + j] = m[j * n + i] = value; };
    for (Size i = 0; i < k; ++i) {
        const Size p = i, v = i + k, a = i + 2 * k;
        set_both(p, p, c.pp);
        set_both(p, v, c.pv);
        set_both(p, a, c.pa);
        set_both(v, v, c.vv);
        set_both(v, a, c.va);
        set_both(a, a, c.aa);
    }
    return m;
}

// Ones, or r, on the diagonal.
double *diagonal(double *m, Size rows, Size cols, double value) {
    zeroed(m, rows, cols);
    for (Size i = 0; i < rows; ++i) m[i * cols + i] = value;
    return m;
}

}  // namespace

double *getKalmanFilterA(double *A, int states, double dt) {
    const Size n = count(states), k = n / 3;
    zeroed(A, n, n);
    for (Size i = 0; i < 3 * k; ++i) A[i * n + i] = 1.0;
    for (Size i = 0; i < 2 * k; ++i) A[i * n + i + k] = dt;
    return A;
}

double *getKalmanFilterC(double *C, int m) { return diagonal(C, count(m), 3 * count(m), 1.0); }

double *getKalmanFilterQ(double *Q, int n, double qpp, double qpv, double qpa, double qvv, double qva, double qaa) {
    return covariance(Q, n, {qpp, qpv, qpa, qvv, qva, qaa});
}

double *getKalmanFilterR(double *R, int m, double r) { return diagonal(R, count(m), count(m), r); }

double *getKalmanFilterP(double *P, int n, double p) {
    return covariance(P, n, {p, p, p, 100000.0 * p, 100.0 * p, 1000.0 * p});
}
