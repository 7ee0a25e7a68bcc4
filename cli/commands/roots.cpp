// mensura roots: the roots of a polynomial, checked by multiplying them out again.
#include <mensura/roots.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <memory>
#include <numbers>

#include "cli/app/commands.h"
#include "cli/app/diagnostics.h"
#include "cli/app/quantity.h"
#include "cli/data/rewrite.h"

namespace cli {

namespace {

using Real = long double;
using Complex = std::complex<Real>;

constexpr const char *kExamples =
    "  mensura roots 1 -6 11 -6          # x^3 - 6 x^2 + 11 x - 6: 1, 2 and 3\n"
    "  mensura roots 1 0 0 1e-30 > roots.csv\n"
    "  mensura roots --plot=circle.svg 1 -1.2 .9 -.3\n";

constexpr std::size_t kMostCoefficients = 101;

// The most that a coefficient may be off when the roots are multiplied out, relative to the same coefficient of
// |c0| prod (x + |z|), which bounds what rounding can do.  Random polynomials of degree 2 to 100 stay below 1e-12, roots
// up to threefold below 1e-9; wrong roots give 1e-5 and more, most of them 1.  Some four- and fivefold roots lie
// between, at 1e-8 to 1e-6: they have lost digits, and another scale often saves those.
constexpr Real kMostMisfit = 1e-9L;

struct Options {
    std::vector<std::string> coefficients;
    std::string output;
    PlotOptions plot;
};

std::vector<double> parse_coefficients(const std::vector<std::string> &texts) {
    std::vector<double> c;
    for (const std::string &text : texts) {
        std::string complaint;
        const std::optional<double> value = parse_quantity(text, kPlain, complaint);
        if (!value) reject("{}", complaint);
        c.push_back(*value);
    }
    if (c.size() < 2 || c.size() > kMostCoefficients)
        reject("2 to {} coefficients are wanted, the highest power first; there are {}", kMostCoefficients, c.size());
    if (c.front() == 0) reject("the first coefficient, of the highest power, is 0; leave it out");
    return c;
}

// ---- Do the roots fit? ----------------------------------------------------------------------------------------------

struct Answer {
    std::vector<CplxD> roots = {};
    Real misfit = std::numeric_limits<Real>::infinity();  // of the worst coefficient
    std::size_t power = 0;                                // its power of x
    Real rebuilt = 0;                                     // what the roots give for it

    bool fits() const { return misfit <= kMostMisfit; }
};

void multiply(std::vector<Complex> &polynomial, Complex root) {
    polynomial.emplace_back(0);
    for (std::size_t k = polynomial.size() - 1; k > 0; --k) polynomial[k] -= root * polynomial[k - 1];
}

Real relative(Real error, Real bound) {
    const Real ratio = error == 0 ? 0 : error / bound;
    return std::isnan(ratio) ? std::numeric_limits<Real>::infinity() : ratio;
}

void compare(Answer &answer, const std::vector<double> &c) {
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

// |p(z)| / sum |c_k| |z|^k.  Outside the unit circle by the reversed polynomial at 1/z, which has the same ratio and
// does not overflow.
Real residual(std::vector<double> c, const CplxD &root) {
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
    return relative(std::abs(value), bound);
}

// ---- Finding them ---------------------------------------------------------------------------------------------------

// The roots by way of x = 2^exponent t, which rounds nothing; `c` ends in a coefficient other than 0.
Answer solve(const std::vector<double> &c, int exponent) {
    const int degree = static_cast<int>(c.size()) - 1;
    std::vector<double> scaled = c;
    for (int k = 0; k <= degree; ++k)
        scaled[static_cast<std::size_t>(k)] = std::ldexp(c[static_cast<std::size_t>(k)], -exponent * k);
    Answer answer;
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

void remark_on_misfit(const Answer &answer, const std::vector<double> &c) {
    if (answer.roots.empty())
        remark("no roots are found at first");
    else
        remark("the roots found at first do not fit: multiplied out they give {} x^{} instead of {} x^{}",
               answer.rebuilt, answer.power, c[c.size() - 1 - answer.power], answer.power);
}

// The best scale is the roots' own, and where that fails a neighbour of it helps as a rule.
Answer solve_scaled(const std::vector<double> &c, Answer best) {
    const int typical = typical_exponent(c);
    for (const int offset : {0, 1, -1, 2, -2}) {
        const int exponent = typical + offset;
        Answer answer = exponent == 0 ? Answer() : solve(c, exponent);
        if (answer.misfit < best.misfit) best = std::move(answer);
        if (!best.fits()) continue;
        remark("those found with x = {} t fit", std::ldexp(1.0, exponent));
        break;
    }
    return best;
}

Answer solve_and_check(std::vector<double> c) {
    const std::size_t count = c.size();
    while (c.back() == 0) c.pop_back();
    Answer answer{.misfit = 0};  // of c x^N, whose roots are zeros
    if (c.size() > 1) answer = solve(c, 0);
    if (!answer.fits()) {
        remark_on_misfit(answer, c);
        answer = solve_scaled(c, std::move(answer));
    }
    if (answer.misfit > 0 && answer.roots.empty()) fail("no roots found, with no x = s t either");
    answer.roots.insert(answer.roots.begin(), count - c.size(), CplxD{0, 0});
    return answer;
}

// ---- Showing them ---------------------------------------------------------------------------------------------------

void write_roots(const std::vector<double> &c, const std::vector<CplxD> &roots, Output &out) {
    out.write("real,imaginary,residual\n");
    for (const CplxD &z : roots) {
        out.number(z.re + 0.0);  // no -0
        out.write(",");
        out.number(z.im + 0.0);
        out.write(",");
        out.number(static_cast<double>(residual(c, z)));
        out.write("\n");
    }
}

Figure figure_of(const std::vector<CplxD> &roots) {
    Curve circle{.title = "unit circle"}, points{.title = "roots", .points = true};
    for (int degree = 0; degree <= 360; ++degree) {
        circle.x.push_back(std::cos(degree * std::numbers::pi / 180));
        circle.y.push_back(std::sin(degree * std::numbers::pi / 180));
    }
    for (const CplxD &z : roots) {
        points.x.push_back(z.re);
        points.y.push_back(z.im);
    }
    const Panel panel{.title = fmt::format("roots of a polynomial of degree {}", roots.size()),
                      .x_label = "real part",
                      .y_label = "imaginary part",
                      .curves = {circle, points},
                      .square = true};
    return {.panels = {panel}};
}

void run(const Options &options) {
    const std::vector<double> c = parse_coefficients(options.coefficients);
    const Answer answer = solve_and_check(c);
    Output out(data_file(options.plot, options.output));
    write_roots(c, answer.roots, out);
    out.commit();
    if (options.plot.wanted()) draw(figure_of(answer.roots), options.plot);
    if (!answer.fits())
        fail("no x = s t gives roots that fit; these are the closest, off by {:.1g} in x^{}", answer.misfit,
             answer.power);
}

}  // namespace

void add_roots(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app = program.add_command("roots", "the roots of a polynomial", kExamples);
    app.add_option("C", options->coefficients, "coefficients, the highest power first: 2 to 101 numbers without a unit")
        .type_name("...")
        .required();
    add_output(app, options->output);
    add_plot_options(app, options->plot);
    app.callback([options] { run(*options); });
}

}  // namespace cli
