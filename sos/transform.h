// From the analog low-pass to the sections of the pass type on the z-plane.
#pragma once

#include <array>
#include <cstddef>

#include "complex.h"
#include "proto/prototype.h"

namespace mensura::sos {

// The edges of a filter under the bilinear transform, where a frequency f becomes tan(pi f / rate).
struct Edges {
    std::array<Real, 2> at;  // one, or for band types the lower and the upper edge
    std::size_t count;
    Real width;           // band types: upper minus lower edge
    Real centre_squared;  // and their product
};

// Of a request that has been checked.
Edges prewarped_edges(const mensura_sos_request &request);

// A frequency of the z-plane, by the half of its angle: its tangent is the analog frequency.
struct HalfAngle {
    Real cosine_squared, sine_squared, product;  // product: of sine and cosine

    static HalfAngle at(Real tangent) {
        const Real scale = 1 / (1 + tangent * tangent);
        return {scale, tangent * tangent * scale, tangent * scale};
    }
};
inline constexpr HalfAngle kAtDc = {1, 0, 0};
inline constexpr HalfAngle kAtNyquist = {0, 1, 0};

// c0 + c1 z^-1 + c2 z^-2 by its values at z = 1 and z = -1 and by c0 - c2.  Where roots are close to z = 1 or -1 these
// are small, and are known with all their digits, while the coefficients are close to 1, -2 or 2, and 1.
struct Factor {
    Real plus, minus, skew;

    static Factor of(Real c0, Real c1, Real c2) { return {c0 + c1 + c2, c0 - c1 + c2, c0 - c2}; }
    Real c1() const { return (plus - minus) / 2; }

    // The square of its magnitude on the unit circle: of exp(i theta) times it, which is
    // plus cos^2(theta/2) - minus sin^2(theta/2) + i skew sin(theta).
    Real norm(const HalfAngle &angle) const {
        const Real re = plus * angle.cosine_squared - minus * angle.sine_squared;
        const Real im = 2 * skew * angle.product;
        return re * re + im * im;
    }
};

// A section before rounding.  Numerator and denominator begin with 1; a section of first order has c2 = 0 in both.
struct IdealSection {
    Factor numerator, denominator;
    bool first_order;
};

struct IdealCascade {
    std::array<IdealSection, MENSURA_SOS_MAX_SECTIONS> sections;
    std::size_t count = 0;

    void add(const Factor &numerator, const Factor &denominator, bool first_order = false) {
        sections[count] = {numerator, denominator, first_order};
        ++count;
    }
};

// Sections with the least resonance come first, so that what the last ones amplify has been attenuated before; each has
// the zeros nearest to its poles.
IdealCascade transformed(const Prototype &prototype, int pass_type, const Edges &edges);

// The frequency at which the request's gain is taken.
HalfAngle reference_frequency(int pass_type, const Edges &edges);

}  // namespace mensura::sos
