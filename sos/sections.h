// Sections of doubles from ideal ones.
#pragma once

#include <span>

#include "transform.h"

namespace mensura::sos {

struct Section {
    double b0, b1, b2, a0, a1, a2;  // a0 is 1
};

// Rounds denominators first; numerators then get the gain that these leave.  `gain` is that of the cascade at the
// reference frequency.
void round_sections(const IdealCascade &ideal, const HalfAngle &reference, Real gain, std::span<Section> sections);

// The same poles, and their reflections on the unit circle as zeros.
void round_all_pass(const IdealCascade &ideal, Real gain, std::span<Section> sections);

// Whether all poles of the sections lie inside the unit circle; false for NaN.
bool are_stable(std::span<const Section> sections);

// |H|^2.
Real power_gain(std::span<const Section> sections, const HalfAngle &angle);

// How far rounding has shifted a denominator at most, relatively, where it resonates.
Real largest_shift(const IdealCascade &ideal, std::span<const Section> sections);

}  // namespace mensura::sos
