#include "cli/plot/options.h"

#include <fmt/format.h>

#include <cstddef>
#include <string_view>

#include "cli/app/number.h"

namespace cli {

std::string suffix_of(const std::string &file) {
    const std::size_t dot = file.rfind('.');
    return dot == std::string::npos ? "" : lower(std::string_view(file).substr(dot + 1));
}

bool is_picture(const std::string &file) {
    const std::string suffix = suffix_of(file);
    return suffix == "svg" || suffix == "png" || suffix == "pdf";
}

void add_plot_options(const Command &app, PlotOptions &plot) {
    const auto take = [&plot](const std::string &file) {
        if (file != kPlotInTerminal && !is_picture(file))
            reject_option("--plot", fmt::format("\"{}\" does not end in .svg, .png or .pdf", file));
        plot = {file == kPlotInTerminal ? PlotOptions::Terminal : PlotOptions::File, file};
    };
    app.add_option(
           "--plot", take,
           "draw a picture, --plot=FILE.svg, .png or .pdf; plain --plot draws in the terminal instead of the data")
        .type_name("[=FILE]");
    app.add_flag(
        "--plot-script", [&plot] { plot.kind = PlotOptions::Script; },
        "print the gnuplot script of the picture instead of the data");
}

std::string data_file(const PlotOptions &plot, const std::string &output) {
    return plot.on_standard_output() && output.empty() ? "/dev/null" : output;
}

}  // namespace cli
