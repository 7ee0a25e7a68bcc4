// The Kalman filter as textbooks write it, with the fixed-capacity matrices: what depends on an empty one is empty.
#pragma once

#include <mensura/matrix.h>

namespace reference {

inline RMATRIX operator+(const RMATRIX &a, const RMATRIX &b) { return rmatrix_add(a, b); }
inline RMATRIX operator-(const RMATRIX &a, const RMATRIX &b) { return rmatrix_sub(a, b); }
inline RMATRIX operator*(const RMATRIX &a, const RMATRIX &b) { return rmatrix_multi(a, b); }

struct Kalman {
    RMATRIX A, C, Q, R, P, x, K{};

    void update(const RMATRIX &z) {
        const RMATRIX transposed = rmatrix_transpose(C), predicted = A * x;
        P = A * P * rmatrix_transpose(A) + Q;
        K = P * transposed * rmatrix_inverse(C * P * transposed + R);
        x = predicted + K * (z - C * predicted);
        RMATRIX one;
        initRMATRIX_identity(&one, A.rows, A.rows);
        P = (one - K * C) * P;
    }

    RMATRIX output() const { return C * x; }
};

}  // namespace reference
