// mensura roots: the roots of a polynomial, checked by multiplying them out again.
#include <mensura/roots.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <memory>
#include <numbers>
#include <optional>
#include <string>
#include <vector>

#include "cli/app/commands.h"
#include "cli/app/diagnostics.h"
#include "cli/app/options.h"
#include "cli/app/quantity.h"
#include "cli/commands/checked_roots.h"
#include "cli/data/json.h"
#include "cli/files/output.h"
#include "cli/plot/draw.h"
#include "cli/table/csv.h"

namespace cli {

namespace {

constexpr const char *kExamples =
    "  mensura roots 1 -6 11 -6          # x^3 - 6 x^2 + 11 x - 6: 1, 2 and 3\n"
    "  mensura roots 1 0 0 1e-30 > roots.csv\n"
    "  mensura roots --json 1 -1.2 .9 -.3\n"
    "  mensura roots --plot=circle.svg 1 -1.2 .9 -.3\n";

constexpr double kMargin = 1.2;  // the width of the picture over that of what it shows
constexpr std::size_t kMostCoefficients = 101;

struct Options {
    std::vector<std::string> coefficients;
    bool json = false;
    std::string output;
    PlotOptions plot;
};

std::vector<double> parse_coefficients(const std::vector<std::string> &texts) {
    std::vector<double> c;
    for (const std::string &text : texts) {
        std::string error;
        const std::optional<double> value = parse_quantity(text, kPlain, error);
        if (!value) reject("{}", error);
        c.push_back(*value);
    }
    if (c.size() < 2 || c.size() > kMostCoefficients)
        reject("expected 2 to {} coefficients, the highest power first; there are {}", kMostCoefficients, c.size());
    if (c.front() == 0) reject("the first coefficient, of the highest power, is 0; leave it out");
    return c;
}

void write_roots(const std::vector<double> &c, const std::vector<CplxD> &roots, Output &out) {
    out.write("real,imaginary,residual\n");
    for (const CplxD &z : roots) write_row({z.re + 0.0, z.im + 0.0, residual(c, z)}, out);  // no -0
}

void print_json(const std::vector<double> &c, const CheckedRoots &answer, Output &out) {
    nlohmann::ordered_json roots = nlohmann::ordered_json::array();
    for (const CplxD &z : answer.roots)
        roots.push_back({{"real", z.re + 0.0}, {"imaginary", z.im + 0.0}, {"residual", residual(c, z)}});
    write_json({{"coefficients", c},
                {"roots", roots},
                {"fits", answer.fits()},
                {"largest_misfit", static_cast<double>(answer.misfit)}},
               out);
}

std::vector<double> all_of(std::vector<double> a, const std::vector<double> &b) {
    std::ranges::copy_if(b, std::back_inserter(a), [](double x) { return std::isfinite(x); });
    return a;
}

// Equal ranges on both axes, so that a circle is one.
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
    const auto [left, right] = std::ranges::minmax(all_of(circle.x, points.x));
    const auto [lowest, highest] = std::ranges::minmax(all_of(circle.y, points.y));
    const double half = kMargin * 0.5 * std::max(right - left, highest - lowest);
    const double x = 0.5 * (left + right), y = 0.5 * (lowest + highest);
    const Panel panel{.title = fmt::format("roots of a polynomial of degree {}", roots.size()),
                      .x_label = "real part",
                      .y_label = "imaginary part",
                      .curves = {circle, points},
                      .square = true,
                      .y_lowest = y - half,
                      .y_highest = y + half,
                      .x_lowest = x - half,
                      .x_highest = x + half};
    return {.panels = {panel}};
}

void run(const Options &options) {
    const std::vector<double> c = parse_coefficients(options.coefficients);
    const CheckedRoots answer = find_checked_roots(c);
    Output out(data_file(options.plot, options.output));
    if (options.json)
        print_json(c, answer, out);
    else
        write_roots(c, answer.roots, out);
    out.commit();
    if (options.plot.wanted()) draw(figure_of(answer.roots), options.plot);
    if (!answer.fits())
        fail("no x = s t gives roots that fit; the closest are off by {:.1g} in the coefficient of x^{}", answer.misfit,
             answer.power);
}

}  // namespace

void add_roots(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app = program.add_command("roots", "the roots of a polynomial", kExamples);
    app.add_option(
           "C", options->coefficients,
           fmt::format("coefficients, the highest power first: 2 to {} numbers without a unit", kMostCoefficients))
        .type_name("...")
        .required();
    app.add_flag("--json", options->json,
                 "print them as JSON, and how far the coefficients are off when they are multiplied out");
    add_output(app, options->output);
    add_plot_options(app, options->plot);
    app.callback([options] { run(*options); });
}

}  // namespace cli
