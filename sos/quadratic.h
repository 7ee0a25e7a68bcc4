// The numerators and denominators of sections, on the unit circle and at their roots.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>

#include "../internal/constants.h"
#include "arguments.h"

namespace mensura::sos {

struct Quadratic {  // Q = c0 + c1 z^-1 + c2 z^-2
    double c0, c1, c2;
};

// Of a section b0 b1 b2 1 a1 a2.
inline Quadratic numerator(const double *section) { return {section[0], section[1], section[2]}; }
inline Quadratic denominator(const double *section) { return {section[3], section[4], section[5]}; }

// Near z = 1 and z = -1, where the poles of low and high cut-offs lie, the terms of Q nearly cancel.  There these two
// sums are exact in this order, because each subtraction is of numbers within a factor of two of each other; the zeros
// of an all-pass, which lie outside of the circle, have the larger number last.
inline double at_plus_one(const Quadratic &q) {
    return std::abs(q.c0) >= std::abs(q.c2) ? q.c0 + q.c1 + q.c2 : q.c2 + q.c1 + q.c0;
}
inline double at_minus_one(const Quadratic &q) { return at_plus_one({q.c0, -q.c1, q.c2}); }

// Whether the gain at DC of a section is infinite.
inline bool has_pole_at_one(const double *sos, int sections) {
    for (const double *s = sos; s != end_of(sos, sections); s += kNumbers)
        if (at_plus_one(denominator(s)) == 0) return true;
    return false;
}

// Of a section.
inline double gain_at_dc(const double *section) {
    return at_plus_one(numerator(section)) / at_plus_one(denominator(section));
}

// The angle theta = 2 pi x at a frequency of x cycles a sample, 0 .. 1/2, by the sine and cosine of its half; exact at
// both ends.  The smaller of the two is a sine, the other one at least sqrt(1/2).
class Angle {
  public:
    explicit Angle(double cycles)
        : nearer_to_zero_(cycles <= 0.25),
          smaller_(std::sin(mensura::kPi * (nearer_to_zero_ ? cycles : 0.5 - cycles))),
          larger_(std::sqrt(1 - smaller_ * smaller_)) {}

    bool nearer_to_zero() const { return nearer_to_zero_; }
    double sine() const { return 2 * smaller_ * larger_; }
    double one_minus_larger_cosine() const { return 2 * smaller_ * smaller_; }  // 1 - |cos(theta)|

  private:
    bool nearer_to_zero_;
    double smaller_, larger_;
};

// exp(i theta) Q = c1 + (c0 + c2) cos(theta) + i (c0 - c2) sin(theta).  The cosine is written as its difference from
// 1 or -1, whichever is nearer, so that only small terms are added where Q is small.  The factor exp(i theta) cancels
// in a quotient.
struct Turned {
    double re, im;

    Turned(const Quadratic &q, const Angle &theta) : im((q.c0 - q.c2) * theta.sine()) {
        const double rest = (q.c0 + q.c2) * theta.one_minus_larger_cosine();
        re = theta.nearer_to_zero() ? at_plus_one(q) - rest : rest - at_minus_one(q);
    }
    double norm() const { return re * re + im * im; }  // |Q|^2
};

struct Root {
    double re, im;

    double modulus() const { return std::hypot(re, im); }
};

struct Roots {
    std::array<Root, 2> z;
    std::size_t count;
};

// a^2 - b c to the last bits, however much it cancels: what the product b c loses is taken off, too.
inline double square_minus_product(double a, double b, double c) {
    const double product = b * c, lost = std::fma(b, c, -product);
    return std::fma(a, a, -product) - lost;
}

// The roots of c0 z^2 + c1 z + c2, except those at the origin or at infinity.
inline Roots roots(const Quadratic &q) {
    if (q.c0 == 0) {
        if (q.c1 == 0 || q.c2 == 0) return {{}, 0};
        return {{{{-q.c2 / q.c1, 0}, {}}}, 1};
    }
    const double half = -0.5 * q.c1, discriminant = square_minus_product(half, q.c0, q.c2);
    if (!(discriminant >= 0)) {
        const double real = half / q.c0, imag = std::sqrt(-discriminant) / std::abs(q.c0);
        return {{{{real, imag}, {real, -imag}}}, 2};
    }
    const double larger = half + std::copysign(std::sqrt(discriminant), half);
    if (larger == 0) return {{}, 0};
    return {{{{larger / q.c0, 0}, {q.c2 / larger, 0}}}, q.c2 == 0 ? 1U : 2U};
}

}  // namespace mensura::sos
