#include "tuning.h"

#include <algorithm>
#include <cmath>

namespace mensura::sos {

namespace {

using Pair = std::array<Real, 2>;  // one number for either edge, or for either of the last two sections

// Of |H|^2: 1e-7 dB and 0.01 dB.
constexpr Real kGoodEnough = 2.3e-8L;
constexpr Real kMostShift = 2.3e-3L;
constexpr int kMostRounds = 4;

// |H|^2 / level^2 - 1 at each edge.
Pair errors(const Target &target, std::span<const Section> sections) {
    Pair error{};
    for (std::size_t e = 0; e < target.edges.count; ++e)
        error[e] = power_gain(sections, HalfAngle::at(target.edges.at[e])) / (target.level * target.level) - 1;
    return error;
}

Real larger(const Pair &error) { return std::max(std::fabs(error[0]), std::fabs(error[1])); }

// The slope of ln |D|^2 over the logarithm of the damping 1 - a2.
Real slope(const Factor &d, const HalfAngle &angle) {
    const Real im = 2 * d.skew * angle.product;
    return 2 * im * im / d.norm(angle);
}

// Least squares for slopes[e][k] change[k] = -error[e], biased towards no change where slopes are far below 1.
Pair least_squares(const std::array<Pair, 2> &slopes, const Pair &error) {
    const auto &[first, second] = slopes;
    constexpr Real kBias = 1e-2L;
    const Real a = first[0] * first[0] + second[0] * second[0] + kBias;
    const Real b = first[0] * first[1] + second[0] * second[1];
    const Real c = first[1] * first[1] + second[1] * second[1] + kBias;
    const Real u = -(first[0] * error[0] + second[0] * error[1]);
    const Real v = -(first[1] * error[0] + second[1] * error[1]);
    const Real determinant = a * c - b * b;
    return {(c * u - b * v) / determinant, (a * v - b * u) / determinant};
}

// The last section resonates next to the edge, of a band type to the upper one; the last but one is then its twin at the
// lower edge, unless there is only one.  The damping stays within a relative distance of `most` from the ideal one.
void tune(const Target &target, const Pair &error, const IdealCascade &ideal, Real most, IdealCascade &cascade) {
    const std::size_t used = std::min(target.edges.count, cascade.count);
    const auto last = std::span(cascade.sections).subspan(cascade.count - used, used);
    std::array<Pair, 2> slopes{};
    for (std::size_t e = 0; e < target.edges.count; ++e)
        for (std::size_t k = 0; k < used; ++k)
            slopes[e][k] = slope(last[k].denominator, target.reference) -
                           slope(last[k].denominator, HalfAngle::at(target.edges.at[e]));
    const Pair change = least_squares(slopes, error);
    for (std::size_t k = 0; k < used; ++k) {
        const Real skew = ideal.sections[cascade.count - used + k].denominator.skew;
        Real &tuned = last[k].denominator.skew;
        tuned = std::clamp(tuned * (1 + change[k]), skew * (1 - most), skew * (1 + most));
    }
}

}  // namespace

bool settle_edges(const IdealCascade &ideal, const Target &target, std::span<Section> sections) {
    Pair error = errors(target, sections);
    if (!(larger(error) <= kMostShift)) return false;
    if (larger(error) <= kGoodEnough) return true;
    IdealCascade tuned = ideal;
    // A change c of the damping changes |H| where it resonates by about c of its largest value.  A level deep in the stop
    // band hardly depends on the damping; it is not mended at the cost of the pass band.
    const Real most = std::min(4 * target.level / target.gain * larger(error), 8 * largest_shift(ideal, sections));
    for (int round = 0; round < kMostRounds && larger(error) > kGoodEnough; ++round) {
        tune(target, error, ideal, most, tuned);
        std::array<Section, MENSURA_SOS_MAX_SECTIONS> better;
        const auto candidate = std::span(better).first(sections.size());
        round_sections(tuned, target.reference, target.gain, candidate);
        const Pair left = errors(target, candidate);
        if (!(larger(left) < larger(error))) break;
        std::ranges::copy(candidate, sections.begin());
        error = left;
    }
    return true;
}

}  // namespace mensura::sos
