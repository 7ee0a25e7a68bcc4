// mensura window: the weights of a data window.
#include <memory>
#include <string>
#include <vector>

#include "cli/app/commands.h"
#include "cli/app/diagnostics.h"
#include "cli/app/options.h"
#include "cli/app/quantity.h"
#include "cli/app/spectrum_options.h"
#include "cli/files/output.h"
#include "cli/plot/draw.h"
#include "cli/plot/envelope.h"
#include "cli/spectra/window.h"
#include "cli/table/csv.h"

namespace cli {

namespace {

constexpr const char *kExamples =
    "  mensura window hanning 1024 > hanning.csv\n"
    "  mensura window kaiser 64 --beta 6 --plot\n"
    "  mensura window sine 500 --alpha 0.5 --unity-gain --plot=window.svg\n";

constexpr int kLongest = 100000000;  // 1.2 GB of memory

struct Options {
    Window window;
    int samples = 0;
    bool unity_gain = false;
    std::string output;
    PlotOptions plot;
};

void write_weights(const std::vector<double> &weights, Output &out) {
    out.write("sample,weight\n");
    for (std::size_t i = 0; i < weights.size(); ++i) {
        out.write(fmt::format("{},", i));
        write_row({weights[i]}, out);
    }
}

Figure figure_of(const std::vector<double> &weights, int kind, const PlotOptions &plot) {
    Envelope envelope(plot);
    for (const double weight : weights) envelope.add(weight);
    const Panel panel{.title = fmt::format("{} window of {} samples", window_name(kind), weights.size()),
                      .x_label = "sample",
                      .y_label = "weight",
                      .curves = {envelope.curve("", 0)}};
    return {.panels = {panel}};
}

void run(const Options &options) {
    if (options.samples < 1 || options.samples > kLongest)
        reject("N of {}: must lie within 1 and {} samples", options.samples, kLongest);
    remark_on(options.window);
    const std::vector<double> weights =
        weights_of(options.window, static_cast<std::size_t>(options.samples), options.unity_gain);
    Output out(data_file(options.plot, options.output));
    write_weights(weights, out);
    out.commit();
    if (options.plot.wanted()) draw(figure_of(weights, options.window.kind, options.plot), options.plot);
}

}  // namespace

void add_window(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app = program.add_command("window", "the weights of a data window", kExamples);
    app.add_option(
           "KIND", [&window = options->window](const std::string &name) { window.kind = window_kind("KIND", name); },
           window_names())
        .required()
        .words(window_words());
    add_count(app, "N", options->samples, fmt::format("number of samples, 1 to {}", kLongest)).type_name("").required();
    add_window_shape(app, options->window);
    app.add_flag("--unity-gain", options->unity_gain, "divide the weights by their mean");
    add_output(app, options->output);
    add_plot_options(app, options->plot);
    app.callback([options] { run(*options); });
}

}  // namespace cli
