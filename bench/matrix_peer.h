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

// Sizes that the compiler knows.  Update i of a run takes the measurements from z + kMeasurements i; gives the state.
constexpr int kStates = 9, kMeasurements = 3;
Job kalman_filter(const double *A, const double *C, const double *Q, const double *R, const double *P, const double *z);

}  // namespace peer
