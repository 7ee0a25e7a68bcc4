// The picture of mensura spectrum.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "cli/commands/spectrum_label.h"
#include "cli/commands/spectrum_lines.h"
#include "cli/commands/spectrum_report.h"
#include "cli/plot/comparison.h"
#include "cli/plot/envelope.h"
#include "cli/table/columns.h"

namespace cli {

namespace {

constexpr double kDepthOfPicture = 200;                        // dB below the highest bin; anything lower is rounding
constexpr double kWidthOfLabel = 0.09, kHeightOfLabel = 0.07;  // parts of the axes

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

// What lies lower is not shown.
double floor_of(const ChannelSpectrum &channel, Scale scale) {
    const double highest = highest_finite(channel.values);
    switch (scale) {
        case Scale::Decibel:
        case Scale::DensityDecibel: return highest - kDepthOfPicture;
        case Scale::Density: return highest * std::pow(10, -0.1 * kDepthOfPicture);
        default: return 0;
    }
}

Curve curve_of(const ChannelSpectrum &channel, const SpectrumReport &report, const PlotOptions &plot) {
    const double lowest = floor_of(channel, report.request.spectrum.scale);
    std::vector<double> values = channel.values;
    for (double &value : values) value = std::max(value, lowest);
    return bounded_curve("", report.frequencies, values, plot, plot.logarithmic(false));
}

double height_of(const Peak &peak, const SpectrumReport &report) {
    return scaled(peak.amplitude, true, report.request.spectrum.scale, report.noise_bandwidth);
}

// In dB, whatever the scale of the request.
std::vector<double> levels_of(const ChannelSpectrum &channel, Scale scale) {
    std::vector<double> levels = channel.values;
    if (scale == Scale::Decibel || scale == Scale::DensityDecibel) return levels;
    const double factor = scale == Scale::Amplitude ? 20 : 10;
    for (double &level : levels) level = factor * std::log10(level);
    return levels;
}

std::vector<Label> lines_of(const ChannelSpectrum &channel, const SpectrumReport &report) {
    const std::vector<double> levels = levels_of(channel, report.request.spectrum.scale);
    const double digit = std::pow(10, std::floor(std::log10(0.1 * report.layout.frequency(1, report.rate))));
    std::vector<Label> lines;
    for (const std::size_t k : lines_in(levels)) {
        const double frequency = digit * std::round(summit(levels, report.frequencies, k) / digit);
        lines.push_back({report.frequencies[k], channel.values[k], fmt::format("{:.8g} Hz", frequency)});
    }
    return lines;
}

std::vector<Label> peaks_of(const ChannelSpectrum &channel, const SpectrumReport &report) {
    std::vector<Label> labels;
    for (const Peak &peak : channel.peaks)
        labels.push_back({peak.frequency, height_of(peak, report), fmt::format("{:.5g} Hz", peak.frequency)});
    return labels;
}

// The peaks of the request, else the highest lines: of labels that would overlap the one of the higher.
std::vector<Label> labels_of(const ChannelSpectrum &channel, const SpectrumReport &report, const Panel &panel) {
    constexpr std::size_t kMostLines = 5;
    if (panel.curves[0].y.empty()) return {};
    const auto x_of = [&panel](double x) { return panel.logarithmic ? std::log(x) : x; };
    const auto y_of = [&panel](double y) { return panel.y_logarithmic ? std::log(y) : y; };
    const auto [lowest, highest] = std::ranges::minmax(panel.curves[0].y, {}, y_of);
    const double width = kWidthOfLabel * (x_of(*panel.x_highest) - x_of(*panel.x_lowest));
    const double height = kHeightOfLabel * (y_of(highest) - y_of(lowest));
    const std::size_t most = report.request.peaks ? channel.peaks.size() : kMostLines;
    std::vector<Label> labels;
    for (const Label &label : report.request.peaks ? peaks_of(channel, report) : lines_of(channel, report)) {
        const auto overlaps = [&](const Label &other) {
            return std::abs(x_of(label.x) - x_of(other.x)) < width && std::abs(y_of(label.y) - y_of(other.y)) < height;
        };
        if (labels.size() < most && std::ranges::none_of(labels, overlaps)) labels.push_back(label);
    }
    return labels;
}

std::vector<Shade> bands_of(const ChannelSpectrum &channel, const SpectrumReport &report) {
    std::vector<Shade> bands;
    for (std::size_t i = 0; i < channel.rms.size(); ++i) {
        const FrequencyBand &band = report.request.bands[i];
        bands.push_back({band.from, band.to, fmt::format("rms {:.4g}", channel.rms[i])});
    }
    return bands;
}

Panel panel_of(const ChannelSpectrum &channel, const SpectrumReport &report, const PlotOptions &plot) {
    const Scale scale = report.request.spectrum.scale;
    const bool logarithmic = plot.logarithmic(false);
    Panel panel{.x_label = "frequency [Hz]",
                .y_label = scale_label(labelled(channel.name, channel.unit), scale),
                .curves = {curve_of(channel, report, plot)},
                .bands = bands_of(channel, report),
                .logarithmic = logarithmic,
                .y_logarithmic = scale == Scale::Density && highest_finite(channel.values) > 0,
                .x_lowest = lowest_of(report, logarithmic),
                .x_highest = report.request.to.value_or(report.frequencies.back())};
    panel.labels = labels_of(channel, report, panel);
    return panel;
}

}  // namespace

Figure figure_of(const SpectrumReport &report, const PlotOptions &plot) {
    const std::string title = title_of(report);
    Figure figure{.title = title};
    for (const ChannelSpectrum &channel : report.channels) {
        if (figure.panels.size() == kMostPanels) break;
        figure.panels.push_back(panel_of(channel, report, plot));
    }
    if (figure.panels.size() == 1) figure.panels[0].title = title;
    remark_on_channels_left_out(report.channels.size());
    return figure;
}

}  // namespace cli
