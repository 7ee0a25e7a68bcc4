#include "sections.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace mensura::sos {

namespace {

struct Denominator {
    double a1, a2;
};

Factor denominator(const Section &s) { return Factor::of(1, s.a1, s.a2); }
Factor numerator(const Section &s) { return Factor::of(s.b0, s.b1, s.b2); }

// What a choice of a1 and a2 costs: the squares of the relative errors of the denominator on the unit circle, at the
// frequency of resonance and at z = 1.  All poles are nearer to z = 1 than to -1, or on the imaginary axis.
class Cost {
  public:
    explicit Cost(const Factor &ideal)
        : plus_(static_cast<double>(ideal.plus)), skew_(static_cast<double>(ideal.skew)) {
        // The tangent of half the angle of resonance is |s|, whose square is plus / minus.
        const auto square = static_cast<double>(ideal.plus / ideal.minus);
        versine_ = 2 * square / (1 + square);
        sine_squared_ = 4 * square / ((1 + square) * (1 + square));
    }

    // plus_error: of 1 + a1 + a2; a2_error: of a2.
    double operator()(double plus_error, double a2_error) const {
        const double re = plus_error - a2_error * versine_;
        const double resonance = (re * re + a2_error * a2_error * sine_squared_) / (skew_ * skew_ * sine_squared_);
        const double constant = plus_error / plus_;
        return resonance + constant * constant;
    }

  private:
    double plus_, skew_, versine_, sine_squared_;
};

// Near z = 1 the sum 1 + a1 + a2 is the square of the poles' frequency.  It is far smaller than a1 and a2, so it matters
// most how their roundings add up: for each a1 around its ideal value, a2 is either the one that gives the best sum or
// the one nearest to its own ideal value.
Denominator rounded_near_one(const Factor &ideal) {
    constexpr double kStep = std::numeric_limits<double>::epsilon();  // the spacing of a1 below -1
    const Cost cost(ideal);
    const Real a2 = 1 - ideal.skew;
    const auto nearest_a1 = static_cast<double>(ideal.plus - 1 - a2);
    const auto nearest_a2 = static_cast<double>(a2);
    Denominator best{nearest_a1, nearest_a2};
    double least = std::numeric_limits<double>::infinity();
    for (const double a1 : {nearest_a1, nearest_a1 - kStep, nearest_a1 + kStep}) {
        const Real rest = 1 + static_cast<Real>(a1);
        for (const double candidate : {static_cast<double>(ideal.plus - rest), nearest_a2}) {
            const double c =
                cost(static_cast<double>(rest + candidate - ideal.plus), static_cast<double>(candidate - a2));
            if (c < least) {
                least = c;
                best = {a1, candidate};
            }
        }
    }
    return best;
}

// Poles nearer to z = -1 are mirrored: a1 changes its sign.
Denominator rounded(const IdealSection &section) {
    const Factor &ideal = section.denominator;
    if (section.first_order) {
        const Real a1 = ideal.plus < ideal.minus ? ideal.plus - 1 : 1 - ideal.minus;
        return {static_cast<double>(a1), 0};
    }
    if (ideal.plus <= ideal.minus) return rounded_near_one(ideal);
    const Denominator mirrored = rounded_near_one({ideal.minus, ideal.plus, ideal.skew});
    return {-mirrored.a1, mirrored.a2};
}

// b2 is b0, -b0 or 0, so that zeros on the unit circle stay there.
Section with_numerator(const Denominator &d, const IdealSection &ideal, Real gain) {
    const auto b0 = static_cast<double>(gain);
    const auto b1 = static_cast<double>(b0 * ideal.numerator.c1());
    const double b2 = ideal.first_order ? 0 : (ideal.numerator.skew == 0 ? b0 : -b0);
    return {b0, b1, b2, 1.0, d.a1, d.a2};
}

}  // namespace

void round_sections(const IdealCascade &ideal, const HalfAngle &reference, Real gain, std::span<Section> sections) {
    for (std::size_t i = 0; i < sections.size(); ++i) {
        const IdealSection &section = ideal.sections[i];
        const Denominator d = rounded(section);
        const Real unit = std::sqrt(Factor::of(1, d.a1, d.a2).norm(reference) / section.numerator.norm(reference));
        sections[i] = with_numerator(d, section, i == 0 ? gain * unit : unit);
    }
}

void round_all_pass(const IdealCascade &ideal, Real gain, std::span<Section> sections) {
    for (std::size_t i = 0; i < sections.size(); ++i) {
        const Denominator d = rounded(ideal.sections[i]);
        const double g = i == 0 ? static_cast<double>(gain) : 1.0;
        sections[i] = ideal.sections[i].first_order ? Section{g * d.a1, g, 0, 1, d.a1, 0}
                                                    : Section{g * d.a2, g * d.a1, g, 1, d.a1, d.a2};
    }
}

bool are_stable(std::span<const Section> sections) {
    constexpr Real kLeast =
        4 * std::numeric_limits<double>::epsilon();  // so that the radius of a pole rounds to below 1
    return std::ranges::all_of(sections, [](const Section &s) {
        const Factor d = denominator(s);
        return d.plus >= kLeast && d.minus >= kLeast && d.skew >= kLeast;
    });
}

Real power_gain(std::span<const Section> sections, const HalfAngle &angle) {
    Real power = 1;
    for (const Section &s : sections) power *= numerator(s).norm(angle) / denominator(s).norm(angle);
    return power;
}

Real largest_shift(const IdealCascade &ideal, std::span<const Section> sections) {
    Real largest = 0;
    for (std::size_t i = 0; i < sections.size(); ++i) {
        const Factor wanted = ideal.sections[i].denominator;
        const Factor got = denominator(sections[i]);
        const Factor shift = {got.plus - wanted.plus, got.minus - wanted.minus, got.skew - wanted.skew};
        const HalfAngle resonance = HalfAngle::at(std::sqrt(wanted.plus / wanted.minus));
        largest = std::max(largest, shift.norm(resonance) / wanted.norm(resonance));
    }
    return std::sqrt(largest);
}

}  // namespace mensura::sos
