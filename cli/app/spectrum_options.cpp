#include "cli/app/spectrum_options.h"

#include <fmt/format.h>

#include <string>

#include "cli/app/quantity.h"

namespace cli {

void add_window_shape(const Command &app, Window &window) {
    add_quantity(
        app, "--alpha", window.alpha, kPlain,
        fmt::format("fraction of the samples left flat in the window's middle, 0 (default) to {}", kLargestAlpha));
    add_quantity(app, "--beta", window.beta, kPlain,
                 fmt::format("shape parameter, 0 to {}; default: {}", kLargestBeta, beta_defaults()));
}

void add_spectrum_options(const Command &app, SpectrumOptions &options) {
    app.add_option(
           "--window",
           [&window = options.window](const std::string &name) { window.kind = window_kind("--window", name); },
           fmt::format("data window: {}; default {}, which changes nothing; flattop shows true amplitudes between bins",
                       window_names(), window_name(options.window.kind)))
        .type_name("NAME")
        .words(window_words());
    add_window_shape(app, options.window);
    const auto add_scale = [&app, &options](const char *name, Scale scale, const char *help) {
        return app.add_flag(
            name, [&options, scale] { options.scale = scale; }, help);
    };
    add_scale("--amplitude", Scale::Amplitude, "amplitude A of sines, in the unit of the data (default)");
    add_scale("--power", Scale::Power, "mean square A^2/2, in the square of the data's unit; at 0 Hz the square")
        .excludes({"--amplitude"});
    add_scale("--db", Scale::Decibel, "20 log10 A, in dB").excludes({"--amplitude", "--power"});
    app.add_flag("--no-mean", options.no_mean, "subtract the mean first");
}

}  // namespace cli
