#include "cli/app/spectrum_options.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <string_view>

#include "cli/app/diagnostics.h"
#include "cli/app/quantity.h"

namespace cli {

namespace {

constexpr double kMostOverlap = 99;  // percent

// "10-45kHz": both in kHz.
std::optional<FrequencyBand> parse_band(std::string_view from, std::string_view to) {
    std::string error;
    const std::size_t unit = to.find_last_of("0123456789.") + 1;
    const bool bare = !from.empty() && from.find_last_of("0123456789.") + 1 == from.size();
    const std::string lower = bare && unit > 0 ? std::string(from) + std::string(to.substr(unit)) : std::string(from);
    const std::optional<double> low = parse_quantity(lower, kHertz, error), high = parse_quantity(to, kHertz, error);
    if (!low || !high) return {};
    return FrequencyBand{*low, *high};
}

// A number may have a minus sign in it (1e-3Hz): the first one at which both sides are frequencies divides.
std::optional<FrequencyBand> parse_band(std::string_view text) {
    for (std::size_t at = text.find('-'); at != std::string_view::npos; at = text.find('-', at + 1))
        if (const auto band = parse_band(text.substr(0, at), text.substr(at + 1))) return band;
    return {};
}

}  // namespace

void add_window_shape(const Command &app, Window &window) {
    add_quantity(
        app, "--alpha", window.alpha, kPlain,
        fmt::format("fraction of the samples left flat in the window's middle, 0 (default) to {}", kLargestAlpha));
    add_quantity(app, "--beta", window.beta, kPlain,
                 fmt::format("shape parameter, 0 to {}; default: {}", kLargestBeta, beta_defaults()));
}

void add_window_option(const Command &app, SpectrumOptions &options, const std::string &default_window) {
    const auto take = [&options](const std::string &name) {
        options.window.kind = window_kind("--window", name);
        options.window_chosen = true;
    };
    app.add_option("--window", take,
                   fmt::format("data window: {}; default {}; flattop shows true amplitudes between bins",
                               window_names(), default_window))
        .type_name("NAME")
        .words(window_words());
    add_window_shape(app, options.window);
}

void add_spectrum_options(const Command &app, SpectrumOptions &options, const std::string &default_window) {
    add_window_option(app, options, default_window);
    const auto add_scale = [&app, &options](const char *name, Scale scale, const char *help) {
        return app.add_flag(
            name, [&options, scale] { options.scale = scale; }, help);
    };
    add_scale("--amplitude", Scale::Amplitude, "amplitude A of sines, in the unit of the data (default)");
    add_scale("--power", Scale::Power, "mean square A^2/2, in the square of the data's unit; at 0 Hz the square")
        .excludes({"--amplitude"});
    const auto take_decibel = [&options] {
        options.scale = options.scale == Scale::Density ? Scale::DensityDecibel : Scale::Decibel;
    };
    app.add_flag("--db", take_decibel, "20 log10 A, in dB; of a density 10 log10").excludes({"--amplitude", "--power"});
    app.add_flag("--no-mean", options.no_mean, "subtract the mean first, of each segment its own");
}

void add_density(const Command &app, SpectrumOptions &options) {
    const auto take = [&options] {
        options.scale = options.scale == Scale::Decibel ? Scale::DensityDecibel : Scale::Density;
    };
    app.add_flag("--density", take, "one-sided power spectral density, in the square of the data's unit per Hz")
        .excludes({"--amplitude", "--power"});
}

void add_segments(const Command &app, std::optional<int> &segment, std::optional<double> &overlap,
                  const std::string &default_segment) {
    const auto take_segment = [&segment](int samples) {
        if (samples < 2 || samples > kLongestTransform)
            reject_option("--segment", fmt::format("{} must lie between 2 and {} samples", samples, kLongestTransform));
        segment = samples;
    };
    add_count(app, "--segment", std::function<void(int)>(take_segment),
              fmt::format("samples in a segment, 2 to {}; default {}", kLongestTransform, default_segment));
    const auto take_overlap = [&overlap](double percent) {
        if (!(percent >= 0 && percent <= kMostOverlap))
            reject_option("--overlap", fmt::format("{} must lie between 0 and {} percent", percent, kMostOverlap));
        overlap = percent;
    };
    add_quantity(app, "--overlap", std::function<void(double)>(take_overlap), kPlain,
                 "what a segment shares with the next, in percent, 0 to 99; default 50")
        .type_name("PERCENT");
}

void add_averaging(const Command &app, AveragingOptions &options) {
    app.add_flag("--average", options.average,
                 "average the powers of segments (Welch's method), each with --window and --no-mean");
    add_segments(app, options.segment, options.overlap,
                 "the longest power of two of which 8 fit, half of each overlapped");
    app.add_flag("--median", options.median,
                 "their median instead of their mean, less its bias for noise; bursts do not count then");
}

std::optional<Averaging> averaging_of(const AveragingOptions &options) {
    if (!options.average && (options.segment || options.overlap || options.median))
        reject("--segment, --overlap and --median belong to --average");
    if (!options.average) return {};
    return Averaging{options.segment, options.overlap.value_or(kUsualOverlap), options.median};
}

std::vector<FrequencyBand> parse_bands(const std::string &option, const std::string &list) {
    std::vector<FrequencyBand> bands;
    for (std::size_t from = 0; from <= list.size();) {
        const std::size_t to = std::min(list.find(',', from), list.size());
        const std::optional<FrequencyBand> band = parse_band(std::string_view(list).substr(from, to - from));
        if (!band)
            reject_option(option, fmt::format("\"{}\" is not a band; expected two frequencies, such as 10Hz-45Hz",
                                              list.substr(from, to - from)));
        bands.push_back(*band);
        from = to + 1;
    }
    return bands;
}

}  // namespace cli
