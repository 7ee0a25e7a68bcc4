// Shared by the files of this folder: operations on polynomials, and the two iterations with the state that they keep
// between steps as an argument.  Coefficients are ordered by descending power.
#pragma once

namespace mensura::roots {

using real = long double;

// Decimal fractions have no suffix L, here and in the other files, and so are rounded to double: the last bits of the
// roots depend on it.
inline constexpr real kNegligible = 1e-30;  // a last coefficient of at most this many times its neighbour: a root at 0
inline constexpr real kHuge = 1e200;
inline constexpr real kTwoToMinus63 = 0x1p-63L;
inline constexpr real kErrorScale = 16;  // the error of a root is |P| at the root, in units of 16 n^2 |P[N]|; that of a
                                         // quadratic factor is the remainder of its division, in units of 16 n^3 |P[N]|

inline constexpr int kNumAngles = 180;

inline real magnitude(real x) { return __builtin_fabsl(x); }

// ---- polynomials ----

inline bool has_root_at_zero(const real *p, int degree) {
    return magnitude(p[degree]) <= magnitude(p[degree - 1]) * kNegligible;
}

// Drops leading zeros and returns the degree that is left.
[[nodiscard]] int drop_leading_zeros(real *p, int degree);

// Divides p[1 .. degree] by p[0] and sets p[0] to 1.
void make_monic(real *p, int degree);

// The recurrence of a division by x^2 + u x + v, from left to right.
inline real next_term(real p, real u, real last, real v, real before) { return p - u * last - v * before; }

void divide_by_quadratic(const real *P, int N, const real *TUV, real *R);

// Roots of a monic polynomial of degree 1 to 4; p is scratch afterwards.
void solve_closed_form(real *p, int degree, real *re, real *im);

// ---- iterations ----

enum Flag { kRunning = 0, kAbandon = 1, kStepNegligible = 2, kNoProgress = 3, kImproved = 4 };

using Step = long long;  // 20 steps a pass, and a pass is any int

// What the iterations keep from one call to the next.  Each thread has one; a start (Pass 0, Step 0) clears it.
struct IterationMemory {
    real previous_value = 0;     // P(s) at the previous step of the real stage
    Step damping_restarted = 0;  // the step of the quadratic stage from which damping counts
};
IterationMemory &this_threads_memory();

// Which K polynomials a stage stores: one pass hands the K of its last step to the next, and no other is read.  A store
// of 80 bits takes longer than a multiplication and an addition.
enum class KeepK { kOfLastStep, kOfEveryStep };

int quadratic_stage(IterationMemory &memory, int pass, const real *P, real *QP, real *KQ, real *QK, int N, real *TUV,
                    KeepK keep, int *flag);
int real_stage(IterationMemory &memory, int pass, const real *P, real *QPR, real *KR, real *QK, int N,
               bool pass_follows, real *S);

}  // namespace mensura::roots
