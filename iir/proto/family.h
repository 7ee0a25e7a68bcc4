// Shared by the prototype families.
#pragma once

#include <mensura/iir.h>
#include <mensura/roots.h>

#include <array>

namespace mensura::iir {

// Whether the roots of order n fit the arrays.  A family that finds the roots of |H(s)|^2 writes two for each pole.
inline bool order_fits(int n, int roots_per_pole) { return n >= 1 && n <= MAX_IIR_SECTIONS / roots_per_pole; }

// A polynomial of up to degree MAX_IIR_SECTIONS by ascending power.
using Polynomial = std::array<double, MAX_IIR_SECTIONS + 1>;

// Roots of a polynomial given by ascending power, which is reversed in place.  Returns their number.
inline int roots_of_ascending(Polynomial &p, int degree, CplxD *roots) {
    ReverseCoeff(p.data(), degree);
    return FindRoots(degree, p.data(), roots);
}

// 1 for even m, -1 for odd m.
inline double alternating(int m) { return m % 2 == 0 ? 1.0 : -1.0; }

}  // namespace mensura::iir
