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

// The value at s alone.
real value_at(const real *p, int degree, real s) {
    real value = p[0];
    for (int j = 1; j <= degree; ++j) value = p[j] + value * s;
    return value;
}

// What a step needs of a new K polynomial: its last coefficient and its value at s.
struct NewK {
    real last, value;
};

// KR[0] = first and KR[j] = new_K(QPR[j], QK[j-1]), QPR = P / (x - s), and in the same pass QK = KR / (x - s), each by
// Horner's rule.  The old QK[j-1] is read before it is overwritten.  KR is stored if K is kept.
template <bool keep_K, typename Coefficient>
NewK next_K(const real *P, int N, real s, real first, real *KR, real *QK, Coefficient new_K) {
    real qp = P[0], k = first, value = first;
    if (keep_K) KR[0] = k;
    for (int j = 1; j < N; ++j) {
        const real old = QK[j - 1];
        QK[j - 1] = value;
        qp = P[j] + qp * s;
        k = new_K(qp, old);
        if (keep_K) KR[j] = k;
        value = k + value * s;
    }
    QK[N - 1] = value;
    return {k, value};
}

// Not inlined, so that the loop has the eight registers of the x87 unit to itself.
template <bool keep_K>
[[gnu::noinline]] NewK update_K(const real *P, int N, real s, real value, real *KR, real *QK) {
    if (magnitude(QK[N - 1]) <= magnitude(P[N]) * kNegligible)
        return next_K<keep_K>(P, N, s, 0, KR, QK, [](real, real qk) { return qk; });
    const real factor = -value / QK[N - 1];
    return next_K<keep_K>(P, N, s, P[0], KR, QK, [factor](real qp, real qk) { return qp + qk * factor; });
}

enum class Ended { kRoot, kWithNewK, kWithOldK };  // without a root: KR is that of the last step taken, or may be older

// With K kept at the last step only, KR is untouched before that step, and QPR before the end.
Ended iterate(IterationMemory &memory, int pass, const real *P, real *QPR, real *KR, real *QK, int N, KeepK keep,
              real *S) {
    if (pass == 0) memory.previous_value = 0;
    const real smallest = magnitude(P[N]) * kNegligible;
    const real n = N;
    const real error_unit = magnitude(P[N]) * n * n * kErrorScale;
    real s = *S;
    horner(KR, N - 1, s, QK);
    for (int step = 0; step < kSteps; ++step) {
        const bool keep_K = keep == KeepK::kOfEveryStep || step + 1 == kSteps;
        const real value = keep_K ? horner(P, N, s, QPR) : value_at(P, N, s);
        const real error = magnitude(value) / error_unit;
        if (error < kTwoToMinus63) {
            if (!keep_K) horner(P, N, s, QPR);
            *S = s;
            return Ended::kRoot;
        }
        if (error > kHuge) return Ended::kWithOldK;

        const auto [last, slope] =
            keep_K ? update_K<true>(P, N, s, value, KR, QK) : update_K<false>(P, N, s, value, KR, QK);
        const Ended without_root = keep_K ? Ended::kWithNewK : Ended::kWithOldK;
        if (magnitude(last) > kHuge || magnitude(slope) <= smallest) return without_root;

        real ds = value / slope;
        if (magnitude(memory.previous_value + value) < magnitude(value)) ds *= 0.5L;  // the sign has changed
        if (s == 0 && ds == 0) {
            memory.previous_value = value;
            return without_root;
        }
        if (s != 0 && magnitude(ds) < magnitude(s) * kTwoToMinus63)  // s keeps its sign here
            ds = (ds < 0 ? -2 : 2) * s * kTwoToMinus63;
        s -= ds;
        memory.previous_value = value;
    }
    return Ended::kWithNewK;
}

}  // namespace

// Where the steps end early, which is rare, they are taken again for the K polynomial of the last one taken.
int real_stage(IterationMemory &memory, int pass, const real *P, real *QPR, real *KR, real *QK, int N,
               bool pass_follows, real *S) {
    const IterationMemory at_start = memory;
    const Ended ended = iterate(memory, pass, P, QPR, KR, QK, N, KeepK::kOfLastStep, S);
    if (ended == Ended::kWithOldK && pass_follows) {
        memory = at_start;
        iterate(memory, pass, P, QPR, KR, QK, N, KeepK::kOfEveryStep, S);
    }
    return ended == Ended::kRoot ? 1 : 0;
}

}  // namespace mensura::roots

int RealIterate(int Pass, long double *P, long double *QPR, long double *KR, long double *QK, int N, long double *S) {
    using namespace mensura::roots;
    if (N < 1) return 0;
    return iterate(this_threads_memory(), Pass, P, QPR, KR, QK, N, KeepK::kOfEveryStep, S) == Ended::kRoot ? 1 : 0;
}
