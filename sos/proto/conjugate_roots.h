// All roots of a real polynomial at once, in extended precision (Aberth O, Math Comp 27:339, 1973).
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>

#include "prototype.h"

namespace mensura::sos {

// The value of a polynomial and of its derivative.
struct Value {
    Complex value, slope;
};

// sum of c[m] z^m
inline Value evaluate_powers(std::span<const Real> c, Complex z) {
    Complex value = {c.back(), 0}, slope = {0, 0};
    for (std::size_t m = c.size() - 1; m > 0; --m) {
        slope = slope * z + value;
        value = value * z + Complex{c[m - 1], 0};
    }
    return {value, slope};
}

// sum of c[m] T_m(x), T_m being the Chebyshev polynomials, by Clenshaw's recurrence
inline Value evaluate_chebyshev(std::span<const Real> c, Complex x) {
    Complex b = {0, 0}, previous_b = {0, 0}, d = {0, 0}, previous_d = {0, 0};  // d: derivative of b
    const Complex twice = Real{2} * x;
    for (std::size_t m = c.size() - 1; m > 0; --m) {
        const Complex next_d = Real{2} * b + twice * d - previous_d;
        const Complex next_b = Complex{c[m], 0} + twice * b - previous_b;
        previous_d = d;
        previous_b = b;
        d = next_d;
        b = next_b;
    }
    return {Complex{c[0], 0} + x * b - previous_b, b + x * d - previous_d};
}

// The sum of 1 / (z - root) over all other roots; one above the real axis stands for its conjugate, too.
inline Complex repulsion(std::span<const Complex> roots, std::size_t self) {
    const Complex z = roots[self];
    Complex sum = {0, z.im > 0 ? -1 / (2 * z.im) : 0};  // of its own conjugate
    for (std::size_t j = 0; j < roots.size(); ++j) {
        if (j == self) continue;
        const Complex d = {z.re - roots[j].re, z.im};
        sum = sum + (roots[j].im > 0 ? Real{2} * d / (d * d + Complex{roots[j].im * roots[j].im, 0}) : reciprocal(d));
    }
    return sum;
}

// Improves approximations of the roots with im >= 0; a real one (im = 0) stays real.  Returns whether they converge.
template <typename Evaluate>
bool improve_roots(const Evaluate &evaluate, std::span<Complex> roots) {
    constexpr int kMostRounds = 60;
    constexpr Real kSmall = 1e-12L;  // a step of this size leaves an error of its cube
    for (int round = 0; round < kMostRounds; ++round) {
        Real limit = 0;  // of a step: half of the largest root, as longer ones may circle for ever
        for (const Complex root : roots) limit = std::max(limit, norm(root) / 4);
        bool converged = true;
        for (std::size_t i = 0; i < roots.size(); ++i) {
            const auto [value, slope] = evaluate(roots[i]);
            Complex step = value / (slope - value * repulsion(roots, i));
            const Real square = norm(step);
            converged = converged && square <= kSmall * kSmall * norm(roots[i]);
            if (square > limit) step = std::sqrt(limit / square) * step;
            const bool is_real = roots[i].im == 0;
            roots[i] = {roots[i].re - step.re, is_real ? 0 : std::fabs(roots[i].im - step.im)};
        }
        if (converged) return true;
    }
    return false;
}

}  // namespace mensura::sos
