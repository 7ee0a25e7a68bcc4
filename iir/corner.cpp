// The corner of an analog cascade, and moving it to 1 rad/s.
//
// The corner is the first point of a fixed grid at which the magnitude, by a stated sequence of complex operations, is
// below 0.7071 of DC.  That sequence costs two dozen operations and a division a section.  Most points lie far above: a
// screen that evaluates |H|^2 in real arithmetic, several points at a time, passes over those that are above by more
// than its error can be, and only the others are evaluated as stated.  The point found is the same.

#include <mensura/iir.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

namespace {

using Size = std::size_t;

constexpr double kCornerLevel = 0.7071;
constexpr double kGridStep = 0.001953125;  // 1/512 rad/s
constexpr int kLastPoint = 5999;

double frequency(int point) { return point * kGridStep; }

struct Cascade {
    std::span<double> num2, num1, num0, den2, den1, den0;

    Size size() const { return den0.size(); }

    double dc_factor() const {
        double g = 1.0;
        for (Size k = 0; k < size(); ++k) g *= den0[k] / num0[k];
        return g;
    }
};

// c2 s^2 + c1 s + c0
CplxD quadratic(double c2, double c1, double c0, CplxD s, CplxD s2) {
    return CplxDAdd(CplxDAdd(CplxDMult_coef(s2, c2), CplxDMult_coef(s, c1)), {c0, 0.0});
}

// Whether |g H(jw)| < 0.7071, exactly as the grid's definition evaluates it.
bool below_corner(const Cascade &c, double g, double w) {
    const CplxD s{0.0, w}, s2 = CplxDMult(s, s);
    CplxD H{1.0, 0.0};
    for (Size k = 0; k < c.size(); ++k) {
        H = CplxDMult(H, quadratic(c.num2[k], c.num1[k], c.num0[k], s, s2));
        H = CplxDDivision(H, quadratic(c.den2[k], c.den1[k], c.den0[k], s, s2));
    }
    return CplxDCabs(CplxDMult_coef(H, g)) < kCornerLevel;
}

// The screen: num = g^2 prod |N|^2 and den = prod |D|^2 over the sections, for a batch of frequencies.
//
// Real and imaginary parts of N and D carry the same roundings as in the exact evaluation; what follows errs by less
// than 20 roundings a section, 1e-13 for 50 sections, so a margin of 1e-9 is ample, as long as nothing over- or
// underflows.  That is so where products of upper bounds stay below 1e100 and the products themselves end above 1e-30:
// then each factor, and each product of some of them, lies between 1e-130 and 1e100.
constexpr double kLargestBound = 1e100;
constexpr double kSmallestProduct = 1e-30;
constexpr double kLevelSquared = kCornerLevel * kCornerLevel * (1 + 1e-9);
constexpr Size kBatch = 16;

// An upper bound of |c2 s^2 + c1 s + c0|^2 on the grid, or 1 if that is less, multiplied over the sections.
double bound_of_product(std::span<const double> c2, std::span<const double> c1, std::span<const double> c0) {
    const double w = frequency(kLastPoint + static_cast<int>(kBatch));
    double product = 1;
    for (Size k = 0; k < c0.size(); ++k) {
        const double re = std::fabs(c0[k]) + std::fabs(c2[k]) * (w * w), im = c1[k] * w;
        product *= std::max(re * re + im * im, 1.0);
    }
    return product;
}

bool can_screen(const Cascade &c, double g) {
    return std::max(g * g, 1.0) * bound_of_product(c.num2, c.num1, c.num0) <= kLargestBound &&
           bound_of_product(c.den2, c.den1, c.den0) <= kLargestBound;
}

using Batch = std::array<double, kBatch>;

// products *= prod |c2 s^2 + c1 s + c0|^2 at s = jw.  Both sections of a conjugate pair are alike and stand together.
void multiply_by_squares(Batch &products, const Batch &w, std::span<const double> c2, std::span<const double> c1,
                         std::span<const double> c0) {
    for (Size k = 0; k < c0.size(); ++k) {
        const bool twice = k + 1 < c0.size() && c2[k] == c2[k + 1] && c1[k] == c1[k + 1] && c0[k] == c0[k + 1];
        for (Size i = 0; i < kBatch; ++i) {
            const double re = c0[k] - c2[k] * (w[i] * w[i]), im = c1[k] * w[i];
            const double square = re * re + im * im;
            products[i] *= twice ? square * square : square;
        }
        if (twice) ++k;
    }
}

// How many points of the batch at `point` are certain to lie above the corner level.
int clear_points(const Cascade &c, double g, int point) {
    Batch w, num, den;
    for (Size i = 0; i < kBatch; ++i) w[i] = frequency(point + static_cast<int>(i));
    num.fill(g * g);
    den.fill(1.0);
    multiply_by_squares(num, w, c.num2, c.num1, c.num0);
    multiply_by_squares(den, w, c.den2, c.den1, c.den0);
    Size i = 0;
    while (i < kBatch && num[i] > kLevelSquared * den[i] && num[i] >= kSmallestProduct && den[i] >= kSmallestProduct)
        ++i;
    return static_cast<int>(i);
}

// The first point from `point` on that may lie below the corner level, or one beyond the last.
int pass_over_clear_points(const Cascade &c, double g, int point) {
    while (point <= kLastPoint) {
        const int clear = clear_points(c, g, point);
        point += clear;
        if (clear < static_cast<int>(kBatch)) break;
    }
    return point;
}

double find_corner(const Cascade &c) {
    const double g = c.dc_factor();
    const bool screened = can_screen(c, g);
    for (int point = 1;; ++point) {
        if (screened) point = pass_over_clear_points(c, g, point);
        if (point > kLastPoint) return frequency(kLastPoint);
        if (below_corner(c, g, frequency(point))) return frequency(point);
    }
}

}  // namespace

void SetCornerFreq(int count, double *den2, double *den1, double *den0, double *num2, double *num1, double *num0) {
    const auto n = static_cast<Size>(std::clamp(count, 0, static_cast<int>(MAX_IIR_SECTIONS)));
    const Cascade c{{num2, n}, {num1, n}, {num0, n}, {den2, n}, {den1, n}, {den0, n}};
    const double scale = 1.0 / find_corner(c);
    for (Size k = 0; k < n; ++k) {
        const double r = std::sqrt(den0[k]);
        if (r != 0) {
            if (den2[k] != 0) {  // keeps the damping and moves the natural frequency r
                den0[k] = r * r * (scale * scale);
                den1[k] = 2 * (den1[k] / r * 0.5) * r * scale;
            } else {
                den0[k] *= scale;
            }
        }
        if (num2[k] != 0) num0[k] = scale * scale * num0[k];
    }
}
