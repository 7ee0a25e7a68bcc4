#include "matrix_peer.h"

#include <benchmark/benchmark.h>

#include <Eigen/Dense>
#include <memory>

namespace peer {

namespace {

using Eigen::MatrixXd;

// Eigen stores by columns, and so reads a packed array as the transpose: (A B)^T = B^T A^T and (A^T)^-1 = (A^-1)^T.
MatrixXd transposed(int n, const double *a) { return Eigen::Map<const MatrixXd>(a, n, n); }

template <typename Work>
Job repeated(int n, Work work) {
    const auto out = std::make_shared<MatrixXd>(n, n);
    const auto run = [=](int times) {
        for (int i = 0; i < times; ++i) {
            work(*out);
            benchmark::ClobberMemory();
        }
    };
    return {run, out->data()};
}

template <int Rows, int Cols = Rows>
using Matrix = Eigen::Matrix<double, Rows, Cols>;

template <int Rows, int Cols = Rows>
Matrix<Rows, Cols> packed(const double *a) {
    return Eigen::Map<const Matrix<Cols, Rows>>(a).transpose();
}

}  // namespace

Job product(int n, const double *a, const double *b) {
    return repeated(n, [a = transposed(n, a), b = transposed(n, b)](MatrixXd &c) { c.noalias() = b * a; });
}

Job inverse(int n, const double *a) {
    return repeated(n, [a = transposed(n, a)](MatrixXd &inverted) { inverted = a.partialPivLu().inverse(); });
}

namespace {

template <int n, int m>
Job kalman_filter_of(const KalmanModel &model, const double *z) {
    const auto state = std::make_shared<Matrix<n, 1>>(Matrix<n, 1>::Zero());
    const auto run = [A = packed<n>(model.A), P = packed<n>(model.P), Q = packed<n>(model.Q), C = packed<m, n>(model.C),
                      R = packed<m>(model.R), z, state](int times) mutable {
        auto &x = *state;
        for (int i = 0; i < times; ++i) {
            x = A * x;
            P = A * P * A.transpose() + Q;
            const Matrix<m> S = C * P * C.transpose() + R;
            const Matrix<n, m> K = P * C.transpose() * S.inverse();
            x += K * (packed<m, 1>(z + m * i) - C * x);
            P = (Matrix<n>::Identity() - K * C) * P;
        }
    };
    return {run, state->data()};
}

}  // namespace

Job kalman_filter(const KalmanModel &model, const double *z) {
    if (model.states == 4) return kalman_filter_of<4, 2>(model, z);
    return model.states == 8 ? kalman_filter_of<8, 2>(model, z) : kalman_filter_of<9, 3>(model, z);
}

}  // namespace peer
