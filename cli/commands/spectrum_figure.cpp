// The picture of mensura spectrum.
#include <algorithm>
#include <cmath>
#include <string>

#include "cli/commands/spectrum_report.h"
#include "cli/plot/comparison.h"
#include "cli/plot/envelope.h"

namespace cli {

namespace {

constexpr double kDepthOfPicture = 200;  // dB below the highest bin; anything lower is rounding
constexpr double kRoomForLabel = 0.12;   // of the axis

std::string label_of(const std::string &name, Scale scale) {
    switch (scale) {
        case Scale::Amplitude: break;
        case Scale::Power: return name + ", mean square";
        case Scale::Density: return name + ", density [unit^2/Hz]";
        case Scale::Decibel: return name + " [dB]";
        case Scale::DensityDecibel: return name + ", density [dB/Hz]";
    }
    return name;
}

std::string title_of(const SpectrumReport &report) {
    const std::string window = fmt::format("{} window", window_name(report.request.spectrum.window.kind));
    if (!report.request.averaging) return "spectrum, " + window;
    return fmt::format("spectrum, {}, {} of {} segments", window, report.request.averaging->median ? "median" : "mean",
                       report.channels.front().segments);
}

// A logarithmic axis begins at the first frequency above 0.
double lowest_of(const SpectrumReport &report, bool logarithmic) {
    const double from = report.request.from.value_or(0);
    return logarithmic && from <= 0 ? report.layout.frequency(1, report.rate) : from;
}

double highest_finite(const std::vector<double> &values) {
    double highest = std::nan("");
    for (const double value : values)
        if (std::isfinite(value)) highest = std::fmax(highest, value);
    return highest;
}

Curve curve_of(const ChannelSpectrum &channel, const SpectrumReport &report, const PlotOptions &plot) {
    const Scale scale = report.request.spectrum.scale;
    const bool decibel = scale == Scale::Decibel || scale == Scale::DensityDecibel;
    const double lowest = decibel ? highest_finite(channel.values) - kDepthOfPicture : 0.0;
    std::vector<double> values = channel.values;
    for (double &value : values) value = std::max(value, lowest);
    return bounded_curve("", report.frequencies, values, plot, plot.logarithmic(false));
}

// Of the peaks, the highest first, those that are not beside one which has a label.
std::vector<Label> labels_of(const ChannelSpectrum &channel, const SpectrumReport &report, bool logarithmic) {
    const auto place = [logarithmic](double x) { return logarithmic ? std::log(x) : x; };
    const double range = place(report.frequencies.back()) - place(lowest_of(report, logarithmic));
    std::vector<Label> labels;
    for (const Peak &peak : channel.peaks) {
        const auto beside = [&](const Label &label) {
            return std::abs(place(label.x) - place(peak.frequency)) < kRoomForLabel * range;
        };
        if (std::ranges::any_of(labels, beside)) continue;
        const double height = scaled(peak.amplitude, true, report.request.spectrum.scale, report.noise_bandwidth);
        labels.push_back({peak.frequency, height, fmt::format("{:.5g} Hz", peak.frequency)});
    }
    return labels;
}

}  // namespace

Figure figure_of(const SpectrumReport &report, const PlotOptions &plot) {
    const std::string title = title_of(report);
    const bool logarithmic = plot.logarithmic(false);
    Figure figure{.title = title};
    for (const ChannelSpectrum &channel : report.channels) {
        if (figure.panels.size() == kMostPanels) break;
        figure.panels.push_back({.title = report.channels.size() == 1 ? title : "",
                                 .x_label = "frequency [Hz]",
                                 .y_label = label_of(channel.name, report.request.spectrum.scale),
                                 .curves = {curve_of(channel, report, plot)},
                                 .labels = labels_of(channel, report, logarithmic),
                                 .logarithmic = logarithmic,
                                 .x_lowest = lowest_of(report, logarithmic),
                                 .x_highest = report.request.to.value_or(report.frequencies.back())});
    }
    remark_on_channels_left_out(report.channels.size());
    return figure;
}

}  // namespace cli
