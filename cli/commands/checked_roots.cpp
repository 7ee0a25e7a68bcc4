#include "cli/commands/checked_roots.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <utility>

#include "cli/app/diagnostics.h"

namespace cli {

namespace {

using Real = long double;
using Complex = std::complex<Real>;

// The most that a coefficient may be off when the roots are multiplied out, relative to the same coefficient of
// |c0| prod (x + |z|), which bounds what rounding can do.  Random polynomials of degree 2 to 100 stay below 1e-12,
// roots up to threefold below 1e-9; wrong roots give 1e-5 and more, most of them 1.  Some four- and fivefold roots lie
// between, at 1e-8 to 1e-6: they have lost digits, and another scale often saves those.
constexpr Real kMostMisfit = 1e-9L;

// ---- Do the roots fit? ----------------------------------------------------------------------------------------------

void multiply(std::vector<Complex> &polynomial, Complex root) {
    polynomial.emplace_back(0);
    for (std::size_t k = polynomial.size() - 1; k > 0; --k) polynomial[k] -= root * polynomial[k - 1];
}

Real relative(Real error, Real bound) {
    const Real ratio = error == 0 ? 0 : error / bound;
    return std::isnan(ratio) ? std::numeric_limits<Real>::infinity() : ratio;
}

void compare(CheckedRoots &answer, const std::vector<double> &c) {
    std::vector<Complex> product{c.front()}, bound{std::abs(c.front())};
    for (const CplxD &z : answer.roots) {
        const Complex root(z.re, z.im);
        multiply(product, root);
        multiply(bound, -std::abs(root));
    }
    answer.misfit = 0;
    for (std::size_t k = 0; k < c.size(); ++k) {
        const Real misfit = relative(std::abs(product[k] - Complex(c[k])), bound[k].real());
        if (misfit <= answer.misfit) continue;
        answer.misfit = misfit;
        answer.power = c.size() - 1 - k;
        answer.rebuilt = product[k].real();
    }
}

// ---- Finding them ---------------------------------------------------------------------------------------------------

// The roots, found after the substitution x = 2^exponent t, which rounds nothing.  The last coefficient is not 0.
CheckedRoots solve(const std::vector<double> &c, int exponent) {
    const int degree = static_cast<int>(c.size()) - 1;
    std::vector<double> scaled = c;
    for (int k = 0; k <= degree; ++k)
        scaled[static_cast<std::size_t>(k)] = std::ldexp(c[static_cast<std::size_t>(k)], -exponent * k);
    CheckedRoots answer;
    answer.roots.resize(c.size() - 1);
    answer.roots.resize(static_cast<std::size_t>(FindRoots(degree, scaled.data(), answer.roots.data())));
    for (CplxD &z : answer.roots) z = {std::ldexp(z.re, exponent), std::ldexp(z.im, exponent)};
    if (!answer.roots.empty()) compare(answer, c);
    return answer;
}

// The power of two next to the geometric mean of the roots' moduli, |c_N / c_0|^(1/N).
int typical_exponent(const std::vector<double> &c) {
    const double ratio = std::log2(std::abs(c.back())) - std::log2(std::abs(c.front()));
    return static_cast<int>(std::lround(ratio / static_cast<double>(c.size() - 1)));
}

void remark_on_misfit(const CheckedRoots &answer, const std::vector<double> &c) {
    if (answer.roots.empty())
        remark("no roots were found at first");
    else
        remark("the roots found at first do not fit: multiplied out they give {:.6g} x^{} instead of {} x^{}",
               answer.rebuilt, answer.power, c[c.size() - 1 - answer.power], answer.power);
}

// The scale of the roots themselves is the best one as a rule; where it fails, a neighbouring one mostly helps.
CheckedRoots solve_scaled(const std::vector<double> &c, CheckedRoots best) {
    const int typical = typical_exponent(c);
    for (const int offset : {0, 1, -1, 2, -2}) {
        const int exponent = typical + offset;
        CheckedRoots answer = exponent == 0 ? CheckedRoots() : solve(c, exponent);
        if (answer.misfit < best.misfit) best = std::move(answer);
        if (!best.fits()) continue;
        remark("the roots found after the substitution x = {} t fit", std::ldexp(1.0, exponent));
        break;
    }
    return best;
}

}  // namespace

bool CheckedRoots::fits() const { return misfit <= kMostMisfit; }

CheckedRoots find_checked_roots(std::vector<double> c) {
    const std::size_t count = c.size();
    while (c.back() == 0) c.pop_back();
    CheckedRoots answer{.misfit = 0};  // holds for c x^N, all of whose roots are 0
    if (c.size() > 1) answer = solve(c, 0);
    if (!answer.fits()) {
        remark_on_misfit(answer, c);
        answer = solve_scaled(c, std::move(answer));
    }
    if (answer.misfit > 0 && answer.roots.empty()) fail("no roots found, nor after any substitution x = s t");
    answer.roots.insert(answer.roots.begin(), count - c.size(), CplxD{0, 0});
    return answer;
}

// Outside the unit circle, the reversed polynomial at 1/z is evaluated: it has the same ratio and does not overflow.
double residual(std::vector<double> c, const CplxD &root) {
    Complex z(root.re, root.im);
    if (std::abs(z) > 1) {
        std::ranges::reverse(c);
        z = Real{1} / z;
    }
    Complex value = 0;
    Real bound = 0;
    for (const double coefficient : c) {
        value = value * z + Complex(coefficient);
        bound = bound * std::abs(z) + std::abs(coefficient);
    }
    return static_cast<double>(relative(std::abs(value), bound));
}

}  // namespace cli
