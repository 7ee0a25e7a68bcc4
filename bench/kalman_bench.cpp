// The Kalman filter against the same algebra in Eigen, per update.

#include <mensura/kalman.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "compare.h"
#include "matrix_peer.h"

namespace {

using Vector = std::vector<double>;

void compare_with_Eigen(benchmark::State &state, const peer::KalmanModel &model) {
    constexpr int kUpdates = 100;
    const auto [n, m, A, C, Q, R, P] = model;
    const Vector z = bench::noise(static_cast<std::size_t>(m * kUpdates));
    const auto ours = std::make_unique<KalmanFilter>();
    initKalmanFilter_d(ours.get(), A, C, Q, R, P, nullptr, m, n);
    RMATRIX measured;
    const peer::Job eigen = peer::kalman_filter(model, z.data());
    bench::compare(
        state, kUpdates,
        [&, rows = m] {
            for (int i = 0; i < kUpdates; ++i)
                KalmanFilter_update(ours.get(), setRMATRIX_ptr(z.data() + rows * i, rows, 1, &measured));
        },
        [&] { eigen.run(kUpdates); });

    double error = 0;
    const RMATRIX *const x = getKalmanFilter_state(ours.get());
    for (int i = 0; i < n; ++i) error = std::max(error, std::abs(x->data[i * RMATRIX_CAPACITY] - eigen.result[i]));
    state.counters["difference"] = error;
}

void KalmanFilter_update_against_Eigen(benchmark::State &state) {
    constexpr int n = 9, m = 3;
    double A[n * n], C[m * n], Q[n * n], R[m * m], P[n * n];
    compare_with_Eigen(state, {n, m, getKalmanFilterA(A, n, 0.01), getKalmanFilterC(C, m),
                               getKalmanFilterQ(Q, n, 1e-4, 0, 0, 1e-2, 0, 1), getKalmanFilterR(R, m, 0.25),
                               getKalmanFilterP(P, n, 1.0)});
}
MENSURA_COMPARE(KalmanFilter_update_against_Eigen, 1000);

Vector diagonal(int rows, int cols, double value) {
    Vector x(static_cast<std::size_t>(rows * cols));
    for (int i = 0; i < std::min(rows, cols); ++i) x[static_cast<std::size_t>(i * cols + i)] = value;
    return x;
}

// Two measurements; every state but the last two grows by the one after next.
void KalmanFilter_update_of_two_measurements_against_Eigen(benchmark::State &state) {
    constexpr int m = 2;
    const int n = static_cast<int>(state.range(0));
    Vector A = diagonal(n, n, 1);
    for (int i = 0; i + m < n; ++i) A[static_cast<std::size_t>(i * n + i + m)] = 0.01;
    const Vector C = diagonal(m, n, 1), Q = diagonal(n, n, 0.01), R = diagonal(m, m, 0.25), P = diagonal(n, n, 1);
    compare_with_Eigen(state, {n, m, A.data(), C.data(), Q.data(), R.data(), P.data()});
}
MENSURA_COMPARE(KalmanFilter_update_of_two_measurements_against_Eigen, 1000)->Arg(4)->Arg(8);

}  // namespace

BENCHMARK_MAIN();
