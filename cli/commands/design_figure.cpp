// The pictures of mensura design.
#include <fmt/format.h>
#include <mensura/sos.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <numbers>

#include "cli/app/diagnostics.h"
#include "cli/commands/design_output.h"

namespace cli {

namespace {

constexpr double kDegrees = 180 / std::numbers::pi;  // in a radian
constexpr double kDepth = 100, kMargin = 5;          // dB: what lies deeper is not shown; above the highest gain

std::vector<double> edges_of(const Design &design) {
    std::vector<double> edges;
    for (const Level &edge : design.achieved.edges) edges.push_back(edge.frequency);
    return edges;
}

// ", 4 Hz wide, sampled at 360 Hz"
std::string width_and_rate(const Design &design) {
    const std::vector<double> edges = design.leading ? design.achieved.half_power : edges_of(design);
    const std::string width = edges.size() == 2 ? fmt::format(", {:.6g} Hz wide", edges[1] - edges[0]) : "";
    return fmt::format("{}, sampled at {:.6g} Hz", width, design.rate);
}

// "lowpass, butterworth, 6 poles, -3 dB at 40 Hz"; of several families without the one and, where they differ, the
// other.
std::string title_of(const std::vector<Design> &designs) {
    const Design &first = designs.front();
    const mensura_sos_request &made = first.made;
    if (designs.size() == 1) return first.summary + width_and_rate(first);
    std::string text = pass_type_name(made.pass_type);
    if (!first.request.by_requirement()) text += fmt::format(", {} poles", made.poles);
    if (first.leading)
        return fmt::format("{}, leading sections, asked for at {:.6g} Hz, sampled at {:.6g} Hz", text, made.edge[0],
                           first.rate);
    if (made.passes == 2) text += ", zero phase";
    return fmt::format("{}, {}{}", text, edges_text(first), width_and_rate(first));
}

// Of a curve over frequency.
int points_of(const PlotOptions &plot) { return plot.is_page() ? 5000 : 1000; }

// ---- Over frequency ------------------------------------------------------------------------------------------------

struct Axis {
    double from, to;  // Hz
    bool logarithmic;
    int points;

    double at(int i) const {
        const double part = static_cast<double>(i) / points;
        return std::min(logarithmic ? from * std::pow(to / from, part) : from + part * (to - from), to);
    }
};

// Two decades below the edge, up to half the rate; to either side of a band three of its widths, or a decade where it
// is wider than two octaves.
Axis axis_of(const Design &design, const PlotOptions &plot) {
    constexpr double kDecade = 10, kWidths = 3, kWide = 4;
    const double nyquist = 0.5 * design.rate;
    const std::vector<double> edges = edges_of(design);
    const int points = points_of(plot);
    if (edges.size() < 2) {
        const double edge = design.made.edge[0];
        if (plot.logarithmic(true)) return {edge / (kDecade * kDecade), nyquist, true, points};
        return {0, std::min(kDecade * edge, nyquist), false, points};
    }
    if (plot.logarithmic(edges[1] > kWide * edges[0]))
        return {edges[0] / kDecade, std::min(edges[1] * kDecade, nyquist), true, points};
    const double margin = kWidths * (edges[1] - edges[0]);
    return {std::max(edges[0] - margin, 0.0), std::min(edges[1] + margin, nyquist), false, points};
}

std::complex<double> response_at(const Design &design, double frequency) {
    double re = 0, im = 0;
    mensura_sos_response(design.sos(), design.count(), design.rate, &frequency, &re, &im, 1);
    return {re, im};
}

Curve gain_curve(const Design &design, const Axis &axis, const std::string &title) {
    constexpr double kZero = 1e-20;  // the picture ends above it
    Curve curve{.title = title};
    for (int i = 0; i <= axis.points; ++i) {
        const double magnitude = std::max(std::abs(response_at(design, axis.at(i))), kZero);
        const double level = design.made.passes * 20 * std::log10(magnitude);
        curve.x.push_back(axis.at(i));
        curve.y.push_back(std::round(1e9 * level) / 1e9);  // so that an all-pass does not show its rounding errors
    }
    return curve;
}

// No line where the phase jumps: by 360 degrees, or by 180 at a zero on the unit circle.
Curve phase_curve(const Design &design, const Axis &axis) {
    constexpr double kJump = 90;
    Curve curve;
    for (int i = 0; i <= axis.points; ++i) {
        const std::complex<double> h = response_at(design, axis.at(i));
        const double degrees = std::abs(h) < 1e-15 ? std::nan("") : std::arg(h) * kDegrees;
        if (i > 0 && std::abs(degrees - curve.y.back()) > kJump) {
            curve.x.push_back(axis.at(i));
            curve.y.push_back(std::nan(""));
        }
        curve.x.push_back(axis.at(i));
        curve.y.push_back(degrees);
    }
    return curve;
}

// "-3 dB at 40 Hz"
std::string level_text(double db, double frequency) {
    constexpr double kHalfPower = -3.0103;
    return fmt::format("{:.4g} dB at {:.6g} Hz", std::abs(db - kHalfPower) < 1e-3 ? -3 : db, frequency);
}

// Beside the lines where no curve runs: inside of the band of a band-pass, outside of that of a notch.
std::vector<Mark> marks_of(const Design &design) {
    std::vector<Mark> marks;
    const int type = design.made.pass_type;
    for (const Level &edge : design.achieved.edges) {
        const bool upper = !marks.empty();
        const bool before = type == ptLowPass || (type == ptBandPass && upper) || (type == ptNotch && !upper);
        marks.push_back({edge.frequency, level_text(edge.db, edge.frequency), before});
    }
    const double centre = marks.empty() ? 0 : 0.5 * (marks.front().at + marks.back().at);
    for (const Corner &stop : design.request.stop)
        marks.push_back({stop.frequency, level_text(-stop.loss, stop.frequency), stop.frequency < centre, true});
    return marks;
}

std::vector<Mark> without_labels(std::vector<Mark> marks) {
    for (Mark &mark : marks) mark.label.clear();
    return marks;
}

Panel frequency_panel(const Design &design, const Axis &axis, const char *label) {
    return {.x_label = "frequency [Hz]",
            .y_label = label,
            .marks = without_labels(marks_of(design)),
            .logarithmic = axis.logarithmic,
            .key_below = design.made.pass_type == ptLowPass,  // where no curve runs
            .x_lowest = axis.from,
            .x_highest = axis.to};
}

// Down to 100 dB below the requested gain.
Panel gain_panel(const std::vector<Design> &designs, const Axis &axis) {
    Panel panel = frequency_panel(designs.front(), axis, "gain [dB]");
    panel.marks = marks_of(designs.front());
    const double gain = designs.front().made.gain_db, floor = gain - kDepth;
    double lowest = gain, highest = -HUGE_VAL;
    for (const Design &design : designs) {
        panel.curves.push_back(gain_curve(design, axis, family_name(design.made.family)));
        const auto [least, most] = std::ranges::minmax(panel.curves.back().y);
        lowest = std::min(lowest, least);
        highest = std::max(highest, most);
    }
    if (lowest >= floor || highest <= floor) return panel;
    panel.y_lowest = floor;
    panel.y_highest = highest + kMargin;
    panel.y_step = 20;
    panel.levels = {{floor, fmt::format("clipped at {:.6g} dB", floor)}};
    return panel;
}

// From -180 to 180 degrees, or what is needed of it in steps of 45.
Panel phase_panel(const Design &design, const Axis &axis) {
    Panel panel = frequency_panel(design, axis, "phase [degrees]");
    panel.curves = {phase_curve(design, axis)};
    double lowest = 0, highest = 0;
    for (const double y : panel.curves[0].y) {
        lowest = std::fmin(lowest, y);
        highest = std::fmax(highest, y);
    }
    panel.y_lowest = 45 * std::floor(lowest / 45);
    panel.y_highest = std::max(45 * std::ceil(highest / 45), *panel.y_lowest + 45);
    panel.y_step = *panel.y_highest - *panel.y_lowest > 180 ? 90 : 45;
    return panel;
}

// The surroundings of the edges and of their level; the colours are those of the panel above.
Panel edge_panel(const std::vector<Design> &designs, int points) {
    const Design &first = designs.front();
    const std::vector<double> edges = edges_of(first);
    const double lower = edges.front(), upper = edges.back(), nyquist = 0.5 * first.rate;
    const double margin = edges.size() == 1 ? lower : upper - lower;
    const Axis axis{std::max(lower - margin, 0.0), std::min(upper + margin, nyquist), false, points};
    Panel panel = frequency_panel(first, axis, "gain [dB]");
    const double level = first.achieved.reference_db + first.made.level_db;
    panel.levels = {{level, fmt::format("{:.3g} dB", level)}};
    panel.key_below = false;
    panel.no_key = true;
    panel.y_lowest = first.achieved.reference_db + 5 * first.made.level_db;
    panel.y_highest = first.achieved.reference_db - 0.5 * first.made.level_db;
    for (const Design &design : designs)
        panel.curves.push_back(gain_curve(design, axis, family_name(design.made.family)));
    return panel;
}

// ---- Poles and zeros -----------------------------------------------------------------------------------------------

using Root = std::complex<double>;

// The roots of c0 z^2 + c1 z + c2; of c0 z + c1 where c2 is not there.
void add_roots(double c0, double c1, double c2, bool second_order, Curve &curve) {
    const auto add = [&curve](Root root) {
        curve.x.push_back(root.real());
        curve.y.push_back(root.imag());
    };
    if (!second_order) {
        if (c0 != 0) add(-c1 / c0);
    } else if (c0 != 0) {
        const Root half = -0.5 * c1 / c0, spread = std::sqrt(half * half - c2 / c0);
        add(half + spread);
        add(half - spread);
    }
}

Curve unit_circle() {
    Curve circle{.title = "unit circle"};
    for (int degree = 0; degree <= 360; ++degree) {
        circle.x.push_back(std::cos(degree / kDegrees));
        circle.y.push_back(std::sin(degree / kDegrees));
    }
    return circle;
}

// ---- Over time -----------------------------------------------------------------------------------------------------

constexpr std::size_t kMostSteps = 1'000'000;  // samples of a picture

// Samples that show how the slowest design settles.
std::size_t samples_to_show(const std::vector<Design> &designs) {
    double longest = 0;
    for (const Design &design : designs)
        if (design.step) longest = std::max(longest, design.step->settling);
    const double both = designs.front().made.passes == 2 ? 2 : 1;
    return static_cast<std::size_t>(std::min(1.5 * both * longest + 10, 1.0 * kMostSteps));
}

}  // namespace

Figure response_figure(const std::vector<Design> &designs, const PlotOptions &plot) {
    const Design &first = designs.front();
    const Axis axis = axis_of(first, plot);
    Figure figure{.title = title_of(designs), .panels = {gain_panel(designs, axis)}};
    if (designs.size() > 1 && !first.achieved.edges.empty()) {
        figure.panels.push_back(edge_panel(designs, axis.points));
    } else if (designs.size() == 1 && first.made.passes == 1) {
        figure.panels.push_back(phase_panel(first, axis));
    }
    if (figure.panels.size() == 1) figure.panels[0].title = figure.title;
    return figure;
}

Figure time_figure(const std::vector<Design> &designs, Input input, std::size_t samples) {
    Panel panel{.title = title_of(designs),
                .x_label = "time [ms]",
                .y_label = input == Input::Step ? "response to a step of 1" : "response to an impulse of 1"};
    if (samples == 0) samples = samples_to_show(designs);
    const std::size_t stride = std::max<std::size_t>(1, samples / 4000);
    for (const Design &design : designs) {
        const auto response = time_response(design.sections, design.made.passes, design.gain(), input, samples);
        if (!response) continue;
        Curve curve{.title = family_name(design.made.family)};
        for (std::size_t i = 0; i < response->y.size(); i += stride) {
            const auto index = response->first + static_cast<std::ptrdiff_t>(i);
            curve.x.push_back(1e3 * static_cast<double>(index) / design.rate);
            curve.y.push_back(response->y[i]);
        }
        panel.curves.push_back(curve);
    }
    return {.panels = {panel}};
}

Figure root_figure(const Design &design) {
    constexpr double kFrame = 1.2;
    Curve zeros{.title = "zeros", .points = true}, poles{.title = "poles", .crosses = true};
    for (const auto &[b0, b1, b2, a0, a1, a2] : design.sections) {
        const bool second_order = b2 != 0 || a2 != 0;
        add_roots(b0, b1, b2, second_order, zeros);
        add_roots(a0, a1, a2, second_order, poles);
    }
    const Panel panel{.title = title_of({design}),
                      .x_label = "real part",
                      .y_label = "imaginary part",
                      .curves = {unit_circle(), poles, zeros},
                      .square = true,
                      .y_lowest = -kFrame,
                      .y_highest = kFrame,
                      .x_lowest = -kFrame,
                      .x_highest = kFrame};
    return {.panels = {panel}};
}

}  // namespace cli
