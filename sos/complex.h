// Zeros and poles in extended precision.
#pragma once

#include <cmath>

namespace mensura::sos {

using Real = long double;

inline constexpr Real kPi = 3.14159265358979323846264338327950288L;

// The operations are written out, so that their bits do not depend on a compiler's support functions.
struct Complex {
    Real re, im;
};

inline Complex operator+(Complex a, Complex b) { return {a.re + b.re, a.im + b.im}; }
inline Complex operator-(Complex a, Complex b) { return {a.re - b.re, a.im - b.im}; }
inline Complex operator*(Complex a, Complex b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }
inline Complex operator*(Real a, Complex b) { return {a * b.re, a * b.im}; }
inline Complex conjugate(Complex a) { return {a.re, -a.im}; }
inline Real norm(Complex a) { return a.re * a.re + a.im * a.im; }  // |a|^2
inline Complex reciprocal(Complex a) { return {a.re / norm(a), -a.im / norm(a)}; }
inline Complex operator/(Complex a, Complex b) { return a * reciprocal(b); }

}  // namespace mensura::sos
