// The corner of an analog cascade, and moving it to 1 rad/s.
//
// The corner is the first point of a fixed grid at which |g H(jw)| is below 0.7071, g being 1 / H(0).  Its exact
// evaluation is a sequence of complex operations, two dozen of them and a division for each section.  Most points lie
// far from the level.  A screen bounds |g H|^2 in real arithmetic, on stretches of the grid that become shorter towards
// the corner and end as single points.  It passes over what is above the level by more than its error can be, and ends
// at a point that is below by as much; only points in doubt are evaluated exactly, so the corner is the same.
//
// The screen takes num = g^2 prod |N|^2 and den = prod |D|^2 over the sections.  At a single point, real and imaginary
// parts of N and D carry the same roundings as in the exact evaluation, and what follows errs by less than 20 roundings
// a section, 1e-13 for 50 sections.  On a stretch, the real part c0 - c2 w^2 may round by c2 w^2 2^-52.  As stretches
// have at least four points, it reaches c2 w^2 / 2500 at one end, so a square exceeds those at the ends by 2e-12 at most,
// 1e-10 for 50 sections.  A margin of 1e-9 is ample as long as nothing over- or underflows.  That is so where products
// of upper bounds stay below 1e100 and the products themselves end above 1e-100: then each factor, and each product of
// some of them, lies between 1e-200 and 1e100, and quotients of products lie between 1e-300 and 1e300.

#include <mensura/iir.h>

#include <algorithm>
#include <cmath>

#include "corner_kernel.h"

using namespace mensura::iir;

namespace {

constexpr double kLargestBound = 1e100;

double frequency(int point) { return point * kGridStep; }

// 1 / H(0)
double inverse_of_dc_gain(const AnalogCascade &c) {
    double g = 1.0;
    for (std::size_t k = 0; k < c.sections; ++k) g *= c.den0[k] / c.num0[k];
    return g;
}

// c2 s^2 + c1 s + c0
CplxD quadratic(double c2, double c1, double c0, CplxD s, CplxD s2) {
    return CplxDAdd(CplxDAdd(CplxDMult_coef(s2, c2), CplxDMult_coef(s, c1)), {c0, 0.0});
}

// Whether |g H(jw)| < 0.7071: the exact evaluation.
bool below_corner(const AnalogCascade &c, double g, double w) {
    const CplxD s{0.0, w}, s2 = CplxDMult(s, s);
    CplxD H{1.0, 0.0};
    for (std::size_t k = 0; k < c.sections; ++k) {
        H = CplxDMult(H, quadratic(c.num2[k], c.num1[k], c.num0[k], s, s2));
        H = CplxDDivision(H, quadratic(c.den2[k], c.den1[k], c.den0[k], s, s2));
    }
    return CplxDCabs(CplxDMult_coef(H, g)) < kCornerLevel;
}

// An upper bound of |c2 s^2 + c1 s + c0|^2 wherever the screen evaluates it, or 1 if that is more, multiplied over the
// sections.
double bound_of_product(std::size_t sections, const double *c2, const double *c1, const double *c0) {
    const double w = frequency(kLastPoint + kStretchesAtOnce * kLongestStretch);
    double product = 1;
    for (std::size_t k = 0; k < sections; ++k) {
        const double re = std::fabs(c0[k]) + std::fabs(c2[k]) * (w * w), im = c1[k] * w;
        product *= std::max(re * re + im * im, 1.0);
    }
    return product;
}

bool can_screen(const AnalogCascade &c, double g) {
    return std::max(g * g, 1.0) * bound_of_product(c.sections, c.num2, c.num1, c.num0) <= kLargestBound &&
           bound_of_product(c.sections, c.den2, c.den1, c.den0) <= kLargestBound;
}

// The corner in rad/s; the last point of the grid if no point lies below the level.
double find_corner(const AnalogCascade &c) {
    const double g = inverse_of_dc_gain(c);
    const bool screened = can_screen(c, g);
    for (int point = 1; point <= kLastPoint; ++point) {
        bool below = false;
        if (screened) {
            const ScreenedPoint doubtful = screen_points(c, g, point);
            if (doubtful.point > kLastPoint) break;
            point = doubtful.point;
            below = doubtful.below;
        }
        if (below || below_corner(c, g, frequency(point))) return frequency(point);
    }
    return frequency(kLastPoint);
}

// c2 s^2 + c1 s + c0 with its roots multiplied by `scale`: the damping c1 / (2 r) stays, the natural frequency
// r = sqrt(c0) moves.
void scale_denominator(double c2, double &c1, double &c0, double scale) {
    const double r = std::sqrt(c0);
    if (r == 0) return;
    if (c2 != 0) {
        c0 = r * r * (scale * scale);
        c1 = 2 * (c1 / r * 0.5) * r * scale;
    } else {
        c0 *= scale;
    }
}

}  // namespace

void SetCornerFreq(int count, double *den2, double *den1, double *den0, double *num2, double *num1, double *num0) {
    const auto sections = static_cast<std::size_t>(std::clamp(count, 0, static_cast<int>(MAX_IIR_SECTIONS)));
    const AnalogCascade c{sections, num2, num1, num0, den2, den1, den0};
    const double scale = 1.0 / find_corner(c);
    for (std::size_t k = 0; k < sections; ++k) {
        scale_denominator(den2[k], den1[k], den0[k], scale);
        if (num2[k] != 0) num0[k] = scale * scale * num0[k];
    }
}
