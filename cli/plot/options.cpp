#include "cli/plot/options.h"

#include <fmt/format.h>

#include <cstddef>
#include <string_view>

#include "cli/app/diagnostics.h"
#include "cli/app/names.h"
#include "cli/app/number.h"

namespace cli {

namespace {

struct AxisName {
    const char *word;
    PlotOptions::Axis axis;
};
constexpr AxisName kAxes[] = {{"linear", PlotOptions::Linear}, {"log", PlotOptions::Logarithmic}};

}  // namespace

std::string suffix_of(const std::string &file) {
    const std::size_t dot = file.rfind('.');
    return dot == std::string::npos ? "" : lower(std::string_view(file).substr(dot + 1));
}

bool is_picture(const std::string &file) {
    const std::string suffix = suffix_of(file);
    return suffix == "svg" || suffix == "png" || suffix == "pdf" || suffix == "html";
}

bool PlotOptions::is_page() const { return kind == File && suffix_of(file) == "html"; }

void add_plot_options(const Command &app, PlotOptions &plot) {
    const auto take = [&plot](const std::string &file) {
        if (file != kPlotInTerminal && !is_picture(file))
            reject_option("--plot", fmt::format("\"{}\" does not end in .svg, .png, .pdf or .html", file));
        plot.kind = file == kPlotInTerminal ? PlotOptions::Terminal : PlotOptions::File;
        plot.file = file;
    };
    app.add_option(
           "--plot", take,
           "draw a picture, --plot=FILE.svg, .png or .pdf, or .html to zoom into; plain --plot draws in the terminal "
           "instead of the data")
        .type_name("[=FILE]");
    app.add_flag(
        "--plot-script", [&plot] { plot.kind = PlotOptions::Script; },
        "print the gnuplot script of the picture instead of the data");
}

void add_axis_option(const Command &app, PlotOptions &plot) {
    add_choice(
        app, "--axis", kAxes, &AxisName::word, [&plot](const AxisName &name) { plot.axis = name.axis; },
        "with --plot, the axis of frequencies: {}")
        .type_name("KIND");
}

void check_axis(const PlotOptions &plot) {
    if (plot.axis != PlotOptions::Automatic && !plot.wanted()) reject("--axis is for --plot and --plot-script");
}

std::string data_file(const PlotOptions &plot, const std::string &output) {
    return plot.on_standard_output() && output.empty() ? "/dev/null" : output;
}

}  // namespace cli
