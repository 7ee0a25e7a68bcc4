// The quadratic stage: a damped Newton iteration for a factor x^2 + u x + v, of the kind of Jenkins MA, Traub JF: A
// three-stage algorithm for real polynomials using quadratic iteration, SIAM J Numer Anal 7(4):545-566 (1970).

#include <mensura/roots.h>

#include "roots_internal.h"

namespace mensura::roots {

namespace {

constexpr int kSteps = 20;
constexpr int kDampedSteps = 3;
constexpr real kDamping = 0.75;
constexpr int kLastEarlyStep = 18;  // the tests of the size of a step begin after it
constexpr real kFarBeyond = 10;     // a step this many times larger than what it changes leads nowhere
constexpr real kShortOfZero = 0.9;  // the part of a step that is taken where all of it leads to v = 0
constexpr real kAboveAllErrors = 1e100;

// KQ[j] = new_K(QP[j], QK[j-1]), and in the same pass QK = KQ divided by x^2 + u x + v: the division needs each new
// KQ[j] once, and the old QK[j-1] is read before it is overwritten.  Unless K is kept, only KQ[0], KQ[N-2] and
// KQ[N-1] are stored.
template <bool keep_K, typename NewK>
void next_K(int N, const real *QP, real *KQ, real *QK, real u, real v, NewK new_K) {
    real before = QP[0], k = N > 2 ? new_K(QP[1], QK[0]) : 0;
    real last = k - u * before;
    KQ[0] = QK[0] = before;
    if (keep_K) KQ[1] = k;
    for (int j = 2; j < N - 1; ++j) {
        k = new_K(QP[j], QK[j - 1]);
        QK[j - 1] = last;
        if (keep_K) KQ[j] = k;
        const real term = next_term(k, u, last, v, before);
        before = last;
        last = term;
    }
    if (N > 2) {
        KQ[N - 2] = k;
        QK[N - 2] = last;
        const real term = next_term(0, u, last, v, before);
        before = last;
        last = term;
    }
    KQ[N - 1] = 0;
    QK[N - 1] = last;
    QK[N] = before * u + last;
}

// The next K from the quotients of P and K by x^2 + u x + v.  Their remainders are b (x + u) + a and d (x + u) + c, so
// that C1 = P(s1) P(s2) at the roots of the quadratic: the factor is the -P(s) / K(s) of the real stage for two roots.
// Not inlined, so that the loop has the eight registers of the x87 unit to itself.
template <bool keep_K>
[[gnu::noinline]] void update_K(int N, const real *QP, real *KQ, real *QK, real u, real v) {
    const real a = QP[N], b = QP[N - 1], c = QK[N - 1], d = QK[N - 2];
    const real C1 = v * b * b + u * a * b + a * a;
    const real C2 = c * a + u * a * d + v * b * d;
    if (magnitude(C1) < magnitude(C2) * kHuge) {
        const real factor = C1 / -C2;
        next_K<keep_K>(N, QP, KQ, QK, u, v, [factor](real qp, real qk) { return qp + qk * factor; });
    } else {
        next_K<keep_K>(N, QP, KQ, QK, u, v, [](real, real qk) { return qk; });
    }
}

// The Newton step of u and v.  False where H, its denominator, is next to 0.
bool find_step(const real *P, int N, const real *QP, const real *KQ, const real *QK, real u, real v, real &du,
               real &dv) {
    const real a = QP[N], b = QP[N - 1], c = QK[N - 1], d = QK[N - 2], k = KQ[N - 2];
    const real G = b * c - a * d;
    const real H = k * G * v + (d * v * d + u * c * d + c * c) * P[N];
    if (magnitude(P[N]) > magnitude(H) * kHuge) return false;
    du = k * (a * u * d + c * a + b * v * d) * v / H;
    dv = -k * G * v * v / H;
    return true;
}

// |step| at least |x| 2^-63, so that x moves.
inline real at_least_one_ulp(real step, real x) {
    const real smallest = magnitude(x) * kTwoToMinus63;
    if (magnitude(step) < smallest) return step < 0 ? -smallest : smallest;
    return step;
}

inline bool negligible_beside(real step, real x) { return magnitude(step) < magnitude(x) * 0x1p-60L; }
inline bool far_beyond(real step, real x) { return magnitude(step) > kFarBeyond * magnitude(x); }

void newton_step(IterationMemory &memory, Step step, const real *P, int N, real *QP, real *KQ, real *QK, real *TUV,
                 bool keep_K, int *flag) {
    if (step == 0) memory.damping_restarted = 0;
    if (*flag == kNoProgress) memory.damping_restarted = step;

    const real u = TUV[1], v = TUV[2];
    real du, dv;
    if (keep_K)
        update_K<true>(N, QP, KQ, QK, u, v);
    else
        update_K<false>(N, QP, KQ, QK, u, v);
    if (!find_step(P, N, QP, KQ, QK, u, v, du, dv)) {
        *flag = kAbandon;
        return;
    }
    du = at_least_one_ulp(du, u);
    dv = at_least_one_ulp(dv, v);
    if (step > kLastEarlyStep) {
        if (negligible_beside(du, u) && negligible_beside(dv, v)) {
            *flag = kStepNegligible;
            return;
        }
        if (far_beyond(du, u) || far_beyond(dv, v)) {
            *flag = kAbandon;
            return;
        }
    }
    if (step - memory.damping_restarted < kDampedSteps) {
        du *= kDamping;
        dv *= kDamping;
    }
    TUV[1] = u + du;
    TUV[2] = v + dv;
    if (magnitude(TUV[2]) < kNegligible) TUV[2] = v + kShortOfZero * dv;
    if (magnitude(TUV[1]) * kNegligible <= magnitude(TUV[2])) {
        *flag = kRunning;
        divide_by_quadratic(P, N, TUV, QP);
    } else {
        *flag = kAbandon;
    }
}

}  // namespace

int quadratic_stage(IterationMemory &memory, int pass, const real *P, real *QP, real *KQ, real *QK, int N, real *TUV,
                    KeepK keep, int *flag) {
    const real n = N;
    const real weight = 1 / (magnitude(P[N]) * (n * n * n) * kErrorScale);  // n^3 is exact
    *flag = kRunning;
    divide_by_quadratic(P, N, TUV, QP);
    divide_by_quadratic(KQ, N - 1, TUV, QK);
    real best = kAboveAllErrors;
    for (int i = 0; i < kSteps; ++i) {
        const bool keep_K = keep == KeepK::kOfEveryStep || i + 1 == kSteps;
        newton_step(memory, Step{pass} * kSteps + i, P, N, QP, KQ, QK, TUV, keep_K, flag);
        if (*flag == kAbandon) return 0;

        const real error = (magnitude(QP[N + 1]) + magnitude(QP[N - 1])) * weight;
        if (error < kTwoToMinus63) return 2;
        if (*flag == kStepNegligible) {
            const bool close_enough = error < n * 4 * kTwoToMinus63;
            *flag = close_enough ? kRunning : kAbandon;
            return close_enough ? 2 : 0;
        }
        if (error > kHuge || (magnitude(QK[N]) + magnitude(QK[N - 2])) * weight > kHuge) {
            *flag = kAbandon;
            return 0;
        }
        if (error < best) {
            *flag = kImproved;
            best = error;
        } else if (i > 2) {
            *flag = kNoProgress;
        }
    }
    *flag = kRunning;
    return 0;
}

}  // namespace mensura::roots

using namespace mensura::roots;

void UpdateTUV(int Step, long double *P, int N, long double *QP, long double *KQ, long double *QK, long double *TUV,
               int *Flag) {
    if (N >= 2) newton_step(this_threads_memory(), Step, P, N, QP, KQ, QK, TUV, true, Flag);
}

int QuadIterate(int Pass, long double *P, long double *QP, long double *KQ, long double *QK, int N, long double *TUV,
                int *Flag) {
    if (N < 2) return 0;
    return quadratic_stage(this_threads_memory(), Pass, P, QP, KQ, QK, N, TUV, KeepK::kOfEveryStep, Flag);
}
