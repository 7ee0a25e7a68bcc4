#include "transform.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <utility>

#include "../iir/pass_types.h"
#include "request.h"

namespace mensura::sos {

namespace {

// tan(pi f / rate).  Above a quarter of the rate it is the reciprocal of the tangent of what is left to half the rate.
Real prewarped(Real frequency, Real rate) {
    if (frequency <= rate / 4) return std::tan(kPi * (frequency / rate));
    return 1 / std::tan(kPi * ((rate / 2 - frequency) / rate));
}

// ---- Poles and zeros of the prototype, paired ----------------------------------------------------------------------

// (s^2 + zero^2) / ((s - pole)(s - its conjugate)), or 1 / (s - pole) when the pole is real.
struct LowPassSection {
    Complex pole;
    Real zero;  // infinite: no zero
};

struct LowPass {
    std::array<LowPassSection, kMostPairs> sections;
    std::size_t count;
};

constexpr Real kNoZero = std::numeric_limits<Real>::infinity();

// A pole of large quality |pole| / (2 |re|) resonates.
bool resonates_less(const LowPassSection &a, const LowPassSection &b) {
    return a.pole.re * a.pole.re * norm(b.pole) > b.pole.re * b.pole.re * norm(a.pole);
}

// The pole that resonates most chooses first.
LowPass paired(const Prototype &prototype) {
    LowPass result{};
    result.count = prototype.pole_count;
    const auto sections = std::span(result.sections).first(result.count);
    for (std::size_t i = 0; i < sections.size(); ++i) sections[i] = {prototype.poles[i], kNoZero};
    std::ranges::sort(sections, resonates_less);

    auto zeros = prototype.zeros;
    auto left = std::span(zeros).first(prototype.zero_count);
    for (std::size_t i = sections.size(); i > 0 && !left.empty(); --i) {
        LowPassSection &section = sections[i - 1];
        if (section.pole.im == 0) continue;
        const auto distance = [&section](Real zero) { return norm(section.pole - Complex{0, zero}); };
        const auto nearest = std::ranges::min_element(left, {}, distance);
        section.zero = *nearest;
        std::swap(*nearest, left.back());
        left = left.first(left.size() - 1);
    }
    return result;
}

// ---- Bilinear transform --------------------------------------------------------------------------------------------

// s2 s^2 + s1 s + s0 with s = (1 - z^-1) / (1 + z^-1), times (1 + z^-1)^2 and scaled to begin with 1.
Factor bilinear(Real s2, Real s1, Real s0) {
    const Real scale = 1 / (s2 + s1 + s0);
    return {4 * s0 * scale, 4 * s2 * scale, 2 * s1 * scale};
}

// The same for s1 s + s0, times 1 + z^-1.
Factor bilinear(Real s1, Real s0) {
    const Real scale = 1 / (s1 + s0);
    return {2 * s0 * scale, 2 * s1 * scale, 1};
}

// ---- Pass types ----------------------------------------------------------------------------------------------------

// s becomes s / w.
void add_low_pass(const LowPassSection &section, Real w, IdealCascade &cascade) {
    const Complex p = w * section.pole;
    const Real zero = w * section.zero;
    if (p.im == 0)
        cascade.add(bilinear(0, 1), bilinear(1, -p.re), true);
    else
        cascade.add(section.zero == kNoZero ? bilinear(0, 0, 1) : bilinear(1, 0, zero * zero),
                    bilinear(1, -2 * p.re, norm(p)));
}

// s becomes w / s.
void add_high_pass(const LowPassSection &section, Real w, IdealCascade &cascade) {
    const Complex p = section.pole;
    const Real zero = section.zero;
    if (p.im == 0)
        cascade.add(bilinear(1, 0), bilinear(-p.re, w), true);
    else
        cascade.add(zero == kNoZero ? bilinear(1, 0, 0) : bilinear(zero * zero, 0, w * w),
                    bilinear(norm(p), -2 * p.re * w, w * w));
}

// A root of s^2 - 2 h s + w2 and its twin: their product is w2 = w0^2.  The larger one is h + sqrt(h^2 - w2), whose
// sign is chosen so that nothing cancels.  Both come with their conjugates, as quadratics.
struct Twins {
    Factor low, high;
};

Twins pole_twins(Complex h, Real w2) {
    const Complex square = {h.re * h.re - h.im * h.im - w2, 2 * h.re * h.im};
    const Real modulus = std::sqrt(norm(square));
    const Real larger = std::sqrt((modulus + std::fabs(square.re)) / 2);
    const Real smaller = std::fabs(square.im) / (2 * larger);
    const bool real_is_larger = square.re > 0;
    const Real re = h.re - (real_is_larger ? larger : smaller);  // h.re < 0, h.im > 0
    const Real im = h.im + (real_is_larger ? smaller : larger);
    const Real q = re * re + im * im;
    return {bilinear(q, -2 * re * w2, w2 * w2), bilinear(1, -2 * re, q)};
}

// Of zeros at +j and -j times y + sqrt(y^2 + w2) and its twin.
Twins zero_twins(Real y, Real w2) {
    const Real u = y + std::sqrt(y * y + w2);
    return {bilinear(u * u, 0, w2 * w2), bilinear(1, 0, u * u)};
}

void add_twins(const Twins &zeros, const Twins &poles, IdealCascade &cascade) {
    cascade.add(zeros.low, poles.low);
    cascade.add(zeros.high, poles.high);
}

// s becomes (s^2 + w0^2) / (width s).
void add_band_pass(const LowPassSection &section, const Edges &edges, IdealCascade &cascade) {
    const Real w2 = edges.centre_squared;
    const Real half = edges.width / 2;
    if (section.pole.im == 0) {
        cascade.add(bilinear(0, 1, 0), bilinear(1, -edges.width * section.pole.re, w2));
        return;
    }
    const Twins zeros =
        section.zero == kNoZero ? Twins{bilinear(1, 0, 0), bilinear(0, 0, 1)} : zero_twins(half * section.zero, w2);
    add_twins(zeros, pole_twins(half * section.pole, w2), cascade);
}

// s becomes width s / (s^2 + w0^2): the band-pass of the reciprocals of poles and zeros.
void add_notch(const LowPassSection &section, const Edges &edges, IdealCascade &cascade) {
    const Real w2 = edges.centre_squared;
    const Real half = edges.width / 2;
    const Factor centre = bilinear(1, 0, w2);
    if (section.pole.im == 0) {
        cascade.add(centre, bilinear(1, -edges.width / section.pole.re, w2));
        return;
    }
    const Twins zeros = section.zero == kNoZero ? Twins{centre, centre} : zero_twins(half / section.zero, w2);
    const Complex reciprocal = (1 / norm(section.pole)) * section.pole;  // of the conjugate
    add_twins(zeros, pole_twins(half * reciprocal, w2), cascade);
}

}  // namespace

// The width is tan(pi (f2 - f1) / rate) (1 + tan(pi f1 / rate) tan(pi f2 / rate)): nothing cancels when it is narrow.
Edges prewarped_edges(const mensura_sos_request &request) {
    const Real first = prewarped(request.edge[0], request.rate);
    if (!iir::is_band_type(request.pass_type)) return {{first, first}, 1, 0, 0};
    if (request.band == MENSURA_SOS_TWO_EDGES) {
        const Real second = prewarped(request.edge[1], request.rate);
        const Real centre_squared = first * second;
        const Real difference = static_cast<Real>(request.edge[1]) - request.edge[0];
        return {{first, second}, 2, prewarped(difference, request.rate) * (1 + centre_squared), centre_squared};
    }
    const Real centre_squared = first * first;
    const Real width = prewarped(request.edge[1], request.rate) * (1 + centre_squared);
    const Real upper = (width + std::sqrt(width * width + 4 * centre_squared)) / 2;
    return {{centre_squared / upper, upper}, 2, width, centre_squared};
}

IdealCascade transformed(const Prototype &prototype, int pass_type, const Edges &edges) {
    const LowPass low_pass = paired(prototype);
    IdealCascade cascade;
    for (const LowPassSection &section : std::span(low_pass.sections).first(low_pass.count)) {
        if (pass_type == ptHighPass)
            add_high_pass(section, edges.at[0], cascade);
        else if (pass_type == ptBandPass)
            add_band_pass(section, edges, cascade);
        else if (pass_type == ptNotch)
            add_notch(section, edges, cascade);
        else
            add_low_pass(section, edges.at[0], cascade);
    }
    return cascade;
}

HalfAngle reference_frequency(int pass_type, const Edges &edges) {
    if (pass_type == ptHighPass) return kAtNyquist;
    if (pass_type == ptBandPass) return HalfAngle::at(std::sqrt(edges.centre_squared));
    return kAtDc;
}

}  // namespace mensura::sos
