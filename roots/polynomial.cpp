// Operations of the root finder on polynomials: reversal, normalisation, derivative, division by a quadratic.

#include <mensura/roots.h>

#include <algorithm>
#include <utility>

#include "roots_internal.h"

namespace mensura::roots {

int drop_leading_zeros(real *p, int degree) {
    int zeros = 0;
    while (zeros < degree && p[zeros] == 0) ++zeros;
    if (zeros > 0) std::copy(p + zeros, p + degree + 1, p);
    return degree - zeros;
}

void make_monic(real *p, int degree) {
    if (p[0] == 1) return;
    for (int i = 1; i <= degree; ++i) p[i] /= p[0];
    p[0] = 1;
}

void divide_by_quadratic(const real *P, int N, const real *TUV, real *R) {
    const real u = TUV[1], v = TUV[2];
    real before = R[0] = P[0];
    real last = R[1] = P[1] - u * before;
    for (int j = 2; j <= N; ++j) {
        const real term = next_term(P[j], u, last, v, before);
        before = last;
        last = R[j] = term;
    }
    R[N + 1] = before * u + last;
}

}  // namespace mensura::roots

using namespace mensura::roots;

void ReversePoly(long double *P, int N) {
    if (N < 0) return;
    for (int i = 0; i <= N / 2; ++i) std::swap(P[i], P[N - i]);
    if (P[0] == 0) return;
    for (int i = N; i >= 0; --i) P[i] /= P[0];
}

void DerivOfP(long double *P, int N, long double *D) {
    if (N < 0) return;
    real power = N;
    for (int i = 0; i < N; ++i) {
        D[i] = power * P[i];
        power -= 1;
    }
    D[N] = 0;
}

void QuadSynDiv(long double *P, int N, long double *TUV, long double *R) {
    if (N >= 1) divide_by_quadratic(P, N, TUV, R);
}
