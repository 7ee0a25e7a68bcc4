// The Kalman filter against the same algebra in Eigen, per update.

#include <mensura/kalman.h>

#include <cmath>
#include <memory>
#include <vector>

#include "compare.h"
#include "matrix_peer.h"

namespace {

void KalmanFilter_update_against_Eigen(benchmark::State &state) {
    constexpr int n = peer::kStates, m = peer::kMeasurements, kUpdates = 100;
    double A[n * n], C[m * n], Q[n * n], R[m * m], P[n * n], x[n];
    getKalmanFilterA(A, n, 0.01);
    getKalmanFilterC(C, m);
    getKalmanFilterQ(Q, n, 1e-4, 0, 0, 1e-2, 0, 1);
    getKalmanFilterR(R, m, 0.25);
    getKalmanFilterP(P, n, 1.0);
    const std::vector<double> z = bench::noise(m * kUpdates);
    const auto ours = std::make_unique<KalmanFilter>();
    initKalmanFilter_d(ours.get(), A, C, Q, R, P, nullptr, m, n);
    RMATRIX measured;
    const peer::Job eigen = peer::kalman_filter(A, C, Q, R, P, z.data());
    bench::compare(
        state, kUpdates,
        [&] {
            for (std::size_t i = 0; i < kUpdates; ++i)
                KalmanFilter_update(ours.get(), setRMATRIX_ptr(&z[m * i], m, 1, &measured));
        },
        [&] { eigen.run(kUpdates); });

    double error = 0;
    getKalmanFilter_state_d(ours.get(), x);
    for (int i = 0; i < n; ++i) error = std::max(error, std::abs(x[i] - eigen.result[i]));
    state.counters["difference"] = error;
}
MENSURA_COMPARE(KalmanFilter_update_against_Eigen, 1000);

}  // namespace

BENCHMARK_MAIN();
