// The real stage: a Newton iteration for a real root s, of the kind of Jenkins and Traub (see quadratic_stage.cpp).
// Its K polynomial converges to P / (x - s), so that K(s) approaches the slope of P.

#include <mensura/roots.h>

#include "roots_internal.h"

namespace mensura::roots {

namespace {

constexpr int kSteps = 20;

// Q[0 .. degree] by Horner's rule; returns Q[degree], the value at s.  Q may be p.
real horner(const real *p, int degree, real s, real *Q) {
    real value = Q[0] = p[0];
    for (int j = 1; j <= degree; ++j) value = Q[j] = p[j] + value * s;
    return value;
}

// KR[j] = new_K(j, QK[j-1]), and in the same pass QK = KR by Horner's rule; returns KR(s).  The old QK[j] is read
// before it is overwritten.
template <typename NewK>
real next_K(int N, real s, real *KR, real *QK, NewK new_K) {
    real old = QK[0], value = QK[0] = KR[0];
    for (int j = 1; j < N; ++j) {
        const real k = KR[j] = new_K(j, old);
        old = QK[j];
        value = QK[j] = k + value * s;
    }
    return value;
}

}  // namespace

int real_stage(IterationMemory &memory, int pass, const real *P, real *QPR, real *KR, real *QK, int N, real *S) {
    if (pass == 0) memory.previous_value = 0;
    const real smallest = magnitude(P[N]) * kNegligible;
    const real n = N;
    const real error_unit = magnitude(P[N]) * n * n * kErrorScale;
    real s = *S;
    horner(KR, N - 1, s, QK);
    for (int step = 0; step < kSteps; ++step) {
        const real value = horner(P, N, s, QPR);
        const real error = magnitude(value) / error_unit;
        if (error < kTwoToMinus63) {
            *S = s;
            return 1;
        }
        if (error > kHuge) return 0;

        real slope;
        if (magnitude(QK[N - 1]) <= smallest) {
            KR[0] = 0;
            slope = next_K(N, s, KR, QK, [](int, real qk) { return qk; });
        } else {
            const real factor = -value / QK[N - 1];
            KR[0] = QPR[0];
            slope = next_K(N, s, KR, QK, [QPR, factor](int j, real qk) { return QPR[j] + qk * factor; });
        }
        if (magnitude(KR[N - 1]) > kHuge || magnitude(slope) <= smallest) return 0;

        real ds = value / slope;
        if (magnitude(memory.previous_value + value) < magnitude(value)) ds *= 0.5L;  // the sign has changed
        if (s == 0 && ds == 0) {
            memory.previous_value = value;
            return 0;
        }
        if (s != 0 && magnitude(ds) < magnitude(s) * kTwoToMinus63)  // s keeps its sign here
            ds = (ds < 0 ? -2 : 2) * s * kTwoToMinus63;
        s -= ds;
        memory.previous_value = value;
    }
    return 0;
}

}  // namespace mensura::roots

int RealIterate(int Pass, long double *P, long double *QPR, long double *KR, long double *QK, int N, long double *S) {
    using namespace mensura::roots;
    if (N < 1) return 0;
    return real_stage(this_threads_memory(), Pass, P, QPR, KR, QK, N, S);
}
