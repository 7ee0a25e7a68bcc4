#include "cli/plot/script.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <optional>
#include <vector>

#include "cli/app/utf8.h"
#include "cli/plot/colours.h"

namespace cli {

namespace {

constexpr int kLeftMargin = 11, kRightMargin = 14;  // characters: the panels stand exactly below each other
constexpr std::size_t kLongestTitle = 110,
                      kLongestLabel = 36;  // letters: the width of a picture, the height of a panel

// With an ellipsis in the middle, because a name often ends in its unit.
std::string shortened(const std::string &text, std::size_t most) {
    std::vector<std::size_t> letters;  // where they begin
    for (std::size_t i = 0; i < text.size(); ++i)
        if ((static_cast<unsigned char>(text[i]) & 0xC0U) != 0x80U) letters.push_back(i);
    if (letters.size() <= most) return text;
    return text.substr(0, letters[most / 2]) + "\u2026" + text.substr(letters[letters.size() - most / 2 + 1]);
}

std::string gnuplot_string(const std::string &text, std::size_t most = kLongestTitle) {
    std::string result = "'";
    for (const char c : shortened(as_utf8(text), most)) {
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

void append_matrix(std::string &script, const std::string &name, const Image &image) {
    script += name + " << EOD\n";
    for (std::size_t i = 0; i < image.values.size(); ++i)
        script += coordinate(image.values[i]) + ((i + 1) % image.columns == 0 ? '\n' : ' ');
    script += "EOD\n";
}

std::string palette() {
    std::string colours;
    for (std::size_t i = 0; i < kPalette.size(); ++i)
        colours += fmt::format("{}{} '{}'", i > 0 ? ", " : "", i, kPalette[i]);
    return fmt::format("set palette defined ({})\n", colours);
}

std::string limit(std::optional<double> value) { return value ? coordinate(*value) : "*"; }

const char *style_of(const Curve &curve) {
    if (curve.crosses) return "points pointtype 2";
    return curve.points ? "points pointtype 6" : "lines";
}

void append_label(std::string &script, const std::string &text, const std::string &place) {
    if (!text.empty())
        fmt::format_to(std::back_inserter(script),
                       "set label {} at {} front boxed noenhanced textcolor rgb '#555555' font ',11'\n",
                       gnuplot_string(text), place);
}

// Of a text at x, so that it stays within the panel.
const char *alignment(const Panel &panel, double x) {
    constexpr double kHalf = 0.06;  // of the width, half a label
    if (!panel.x_lowest || !panel.x_highest) return "center";
    const auto place = [&panel](double value) { return panel.logarithmic ? std::log(value) : value; };
    const double from = place(*panel.x_lowest), part = (place(x) - from) / (place(*panel.x_highest) - from);
    if (part < kHalf) return "left";
    return part > 1 - kHalf ? "right" : "center";
}

void append_lines(std::string &script, const Panel &panel) {
    const auto append_line = [&script](const std::string &from, const std::string &to) {
        fmt::format_to(std::back_inserter(script),
                       "set arrow from {} to {} nohead dashtype 2 linecolor rgb '#666666'\n", from, to);
    };
    for (const Mark &mark : panel.marks) {
        const std::string x = coordinate(mark.at);
        append_line(x + ", graph 0", x + ", graph 1");
        append_label(script, mark.label,
                     fmt::format("{}, graph {} rotate by 90 {} offset {},0", x, mark.label_on_top ? 0.95 : 0.1,
                                 mark.label_on_top ? "right" : "left", mark.label_before ? -1.1 : 1.2));
    }
    for (const Mark &level : panel.levels) {
        const std::string y = "first " + coordinate(level.at);
        append_line("graph 0, " + y, "graph 1, " + y);
        append_label(script, level.label,
                     fmt::format("graph {}, {} center offset 0,0.7", panel.key_below ? 0.45 : 0.16, y));
    }
    for (const Label &label : panel.labels)
        append_label(
            script, label.text,
            fmt::format("{}, {} {} offset 0,0.7", coordinate(label.x), coordinate(label.y), alignment(panel, label.x)));
}

void append_bands(std::string &script, const Panel &panel) {
    for (const Shade &band : panel.bands) {
        const double from = std::max(band.from, panel.x_lowest.value_or(band.from));
        const double to = std::min(band.to, panel.x_highest.value_or(band.to));
        if (!(from < to)) continue;
        fmt::format_to(std::back_inserter(script),
                       "set object rectangle from {}, graph 0 to {}, graph 1 behind fillcolor rgb '{}' "
                       "fillstyle solid 0.25 noborder\n",
                       coordinate(from), coordinate(to), kBandColour);
        const double middle = panel.logarithmic ? std::sqrt(from * to) : 0.5 * (from + to);
        append_label(script, band.label, fmt::format("{}, graph 0.95 rotate by 90 right", coordinate(middle)));
    }
}

void append_axes(std::string &script, const Panel &panel) {
    auto out = std::back_inserter(script);
    fmt::format_to(out, "set title {} noenhanced\nset xlabel {} noenhanced\nset ylabel {} noenhanced\n",
                   gnuplot_string(panel.title), gnuplot_string(panel.x_label),
                   gnuplot_string(panel.y_label, kLongestLabel));
    fmt::format_to(out, "set key {}\n",
                   panel.no_key || panel.curves.size() < 2 ? "off"
                   : panel.key_below                       ? "on inside bottom left"
                                                           : "on above right horizontal");
    fmt::format_to(out, "set {}logscale x\nset {}logscale y\nset size {}\nunset arrow\nunset label\nunset object\n",
                   panel.logarithmic ? "" : "no", panel.y_logarithmic ? "" : "no",
                   panel.square ? "ratio -1" : "noratio");
    fmt::format_to(out, "set format y '{}'\nset offsets 0, 0, {}, 0\n", panel.y_logarithmic ? "%g" : "% h",
                   panel.labels.empty() ? "0" : "graph 0.1");
    fmt::format_to(out, "set xrange [{}:{}] noextend\nset yrange [{}:{}]\n", limit(panel.x_lowest),
                   limit(panel.x_highest), limit(panel.y_lowest), limit(panel.y_highest));
    fmt::format_to(out, "set ytics {}\n", panel.y_step ? coordinate(*panel.y_step) : "autofreq");
}

void append_image(std::string &script, const Image &image, std::size_t number) {
    const double width = (image.x_to - image.x_from) / static_cast<double>(image.columns);
    const double height = (image.y_to - image.y_from) / static_cast<double>(image.rows);
    fmt::format_to(std::back_inserter(script),
                   "set cblabel {} noenhanced\nset cbrange [{}:{}]\n"
                   "plot $panel{}image matrix using ({} + {} * $1):({} + {} * $2):3 with image notitle\n",
                   gnuplot_string(image.label, kLongestLabel), limit(image.lowest), limit(image.highest), number,
                   coordinate(image.x_from + 0.5 * width), coordinate(width), coordinate(image.y_from + 0.5 * height),
                   coordinate(height));
}

void append_curves(std::string &script, const Panel &panel, std::size_t number) {
    script += "plot ";
    for (std::size_t i = 0; i < panel.curves.size(); ++i) {
        const Curve &curve = panel.curves[i];
        const std::size_t colour = panel.curves.size() == 1 ? 1 : i % kColours.size();
        fmt::format_to(std::back_inserter(script),
                       "{}$panel{}curve{} with {} linecolor rgb '{}' linewidth 1.5 title {} noenhanced",
                       i > 0 ? ", \\\n     " : "", number, i, style_of(curve), kColours[colour],
                       gnuplot_string(curve.title));
    }
    script += '\n';
}

void append_panel(std::string &script, const Panel &panel, std::size_t number) {
    append_axes(script, panel);
    append_bands(script, panel);
    append_lines(script, panel);
    if (panel.image)
        append_image(script, *panel.image, number);
    else
        append_curves(script, panel, number);
}

void append_data_of(std::string &script, const Panel &panel, std::size_t number) {
    for (std::size_t i = 0; i < panel.curves.size(); ++i)
        append_data(script, fmt::format("$panel{}curve{}", number, i), panel.curves[i]);
    if (panel.image) append_matrix(script, fmt::format("$panel{}image", number), *panel.image);
}

}  // namespace

bool has_image(const Figure &figure) {
    return std::ranges::any_of(figure.panels, [](const Panel &panel) { return panel.image.has_value(); });
}

Figure drawable(Figure figure) {
    const auto has_no_point = [](const Curve &curve) {
        return std::ranges::none_of(curve.y, [](double y) { return std::isfinite(y); });
    };
    for (Panel &panel : figure.panels) std::erase_if(panel.curves, has_no_point);
    std::erase_if(figure.panels, [](const Panel &panel) { return panel.curves.empty() && !panel.image; });
    if (figure.panels.size() == 1 && figure.panels[0].title.empty()) figure.panels[0].title = figure.title;
    return figure;
}

std::string gnuplot_script(const Figure &figure, bool grid) {
    std::string script = "set style textbox opaque noborder margins 0.3,0.3\n";
    if (grid) script += "set grid linetype 1 linecolor rgb '#dddddd'\n";
    for (std::size_t i = 0; i < figure.panels.size(); ++i) append_data_of(script, figure.panels[i], i);
    if (has_image(figure)) script += palette();
    const bool several = figure.panels.size() > 1;
    if (several && has_image(figure)) script += fmt::format("set rmargin {}\n", kRightMargin);
    if (several)
        script += fmt::format("set lmargin {}\nset multiplot layout {}, 1 title {} noenhanced\n", kLeftMargin,
                              figure.panels.size(), gnuplot_string(figure.title));
    for (std::size_t i = 0; i < figure.panels.size(); ++i) append_panel(script, figure.panels[i], i);
    if (several) script += "unset multiplot\n";
    return script;
}

}  // namespace cli
