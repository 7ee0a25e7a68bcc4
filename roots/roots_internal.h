// Shared by the closed forms and the iterative finder: what both do to a polynomial before and after the hard part.
#pragma once

namespace mensura::roots {

using real = long double;

// A trailing coefficient this small beside its neighbour stands for a root at 0.  A double on purpose, as all decimal
// constants of the root finder: the last bits of the roots hang on them.
inline constexpr real kNegligible = 1e-30;
inline constexpr real kTwoToMinus63 = 0x1p-63L;

inline real magnitude(real x) { return __builtin_fabsl(x); }

inline bool has_root_at_zero(const real *p, int degree) {
    return magnitude(p[degree]) <= magnitude(p[degree - 1]) * kNegligible;
}

// Drops leading zeros and returns the degree that is left.
[[nodiscard]] int drop_leading_zeros(real *p, int degree);

// Divides p[1 .. degree] by p[0] and sets p[0] to 1.
void make_monic(real *p, int degree);

// Roots of a monic polynomial of degree 1 to 4; p is scratch afterwards.
void solve_closed_form(real *p, int degree, real *re, real *im);

}  // namespace mensura::roots
