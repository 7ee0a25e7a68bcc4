// Work on matrices in Eigen.  Compiled with -march=MENSURA_PEER_ARCH, native by default.
#pragma once

#include <functional>

namespace peer {

// Keeps its matrices from run to run; `result` lies in one of them.  All arrays are packed row by row.
struct Job {
    std::function<void(int times)> run;
    const double *result;
};

// n x n, a size that the compiler does not know.
Job product(int n, const double *a, const double *b);
Job inverse(int n, const double *a);

// Sizes that the compiler knows: 9 states and 3 measurements, 4 and 2, or 8 and 2.  Update i of a run takes the
// measurements from z + measurements * i; gives the state.
struct KalmanModel {
    int states, measurements;
    const double *A, *C, *Q, *R, *P;
};
Job kalman_filter(const KalmanModel &model, const double *z);

}  // namespace peer
