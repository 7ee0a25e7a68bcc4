#include "cli/plot/script.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <optional>

#include "cli/app/utf8.h"

namespace cli {

namespace {

// Grey for the first curve, then colours that people with any kind of colour vision can distinguish (Okabe and Ito).
constexpr std::array kColours{"#999999", "#0072b2", "#d55e00", "#009e73", "#cc79a7", "#56b4e9", "#e69f00", "#000000"};

std::string gnuplot_string(const std::string &text) {
    std::string result = "'";
    for (const char c : as_utf8(text)) {
        if (c == '\'') result += '\'';
        result += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
    }
    return result + "'";
}

std::string coordinate(double value) { return std::isfinite(value) ? fmt::format("{:.7g}", value) : "NaN"; }

void append_data(std::string &script, const std::string &name, const Curve &curve) {
    script += fmt::format("{} << EOD\n", name);
    for (std::size_t i = 0; i < curve.x.size(); ++i)
        script += coordinate(curve.x[i]) + ' ' + coordinate(curve.y[i]) + '\n';
    script += "EOD\n";
}

std::string limit(std::optional<double> value) { return value ? coordinate(*value) : "*"; }

const char *style_of(const Curve &curve) {
    if (curve.crosses) return "points pointtype 2";
    return curve.points ? "points pointtype 6" : "lines";
}

void append_panel(std::string &script, const Panel &panel, std::size_t number) {
    auto out = std::back_inserter(script);
    fmt::format_to(out, "set title {} noenhanced\nset xlabel {} noenhanced\nset ylabel {} noenhanced\n",
                   gnuplot_string(panel.title), gnuplot_string(panel.x_label), gnuplot_string(panel.y_label));
    fmt::format_to(out, "set key {}\n",
                   panel.curves.size() < 2 ? "off"
                   : panel.key_below       ? "on inside bottom left"
                                           : "on above right horizontal");
    fmt::format_to(out, "set {}logscale x\nset size {}\nunset arrow\n", panel.logarithmic ? "" : "no",
                   panel.square ? "ratio -1" : "noratio");
    fmt::format_to(out, "set xrange [{}:{}] noextend\nset yrange [{}:{}]\n", limit(panel.x_lowest),
                   limit(panel.x_highest), limit(panel.y_lowest), limit(panel.y_highest));
    fmt::format_to(out, "set ytics {}\n", panel.y_step ? coordinate(*panel.y_step) : "autofreq");
    for (const double x : panel.marks)
        fmt::format_to(out, "set arrow from {0}, graph 0 to {0}, graph 1 nohead dashtype 2 linecolor rgb '#666666'\n",
                       coordinate(x));
    for (const double y : panel.levels)
        fmt::format_to(
            out, "set arrow from graph 0, first {0} to graph 1, first {0} nohead dashtype 2 linecolor rgb '#666666'\n",
            coordinate(y));
    script += "plot ";
    for (std::size_t i = 0; i < panel.curves.size(); ++i) {
        const Curve &curve = panel.curves[i];
        const std::size_t colour = panel.curves.size() == 1 ? 1 : i % kColours.size();
        fmt::format_to(out, "{}$panel{}curve{} with {} linecolor rgb '{}' linewidth 1.5 title {} noenhanced",
                       i > 0 ? ", \\\n     " : "", number, i, style_of(curve), kColours[colour],
                       gnuplot_string(curve.title));
    }
    script += '\n';
}

}  // namespace

Figure drawable(Figure figure) {
    const auto has_no_point = [](const Curve &curve) {
        return std::ranges::none_of(curve.y, [](double y) { return std::isfinite(y); });
    };
    for (Panel &panel : figure.panels) std::erase_if(panel.curves, has_no_point);
    std::erase_if(figure.panels, [](const Panel &panel) { return panel.curves.empty(); });
    return figure;
}

std::string gnuplot_script(const Figure &figure, bool grid) {
    std::string script = grid ? "set grid linetype 1 linecolor rgb '#dddddd'\n" : "";
    for (std::size_t i = 0; i < figure.panels.size(); ++i)
        for (std::size_t k = 0; k < figure.panels[i].curves.size(); ++k)
            append_data(script, fmt::format("$panel{}curve{}", i, k), figure.panels[i].curves[k]);
    const bool several = figure.panels.size() > 1;
    if (several)
        script += fmt::format("set multiplot layout {}, 1 title {} noenhanced\n", figure.panels.size(),
                              gnuplot_string(figure.title));
    for (std::size_t i = 0; i < figure.panels.size(); ++i) append_panel(script, figure.panels[i], i);
    if (several) script += "unset multiplot\n";
    return script;
}

}  // namespace cli
