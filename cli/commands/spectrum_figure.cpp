// The picture of mensura spectrum.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "cli/commands/spectrum_label.h"
#include "cli/commands/spectrum_report.h"
#include "cli/plot/comparison.h"
#include "cli/plot/envelope.h"

namespace cli {

namespace {

constexpr double kDepthOfPicture = 200;  // dB below the highest bin; anything lower is rounding
constexpr double kRoomForLabel = 0.12;   // of the axis

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

double median(std::span<const double> values) {
    std::vector<double> sorted(values.begin(), values.end());
    const auto middle = sorted.begin() + std::ssize(sorted) / 2;
    std::ranges::nth_element(sorted, middle);
    return *middle;
}

// The higher of the median levels on either side of a bin, because many spectra fall with the frequency.
double surroundings(std::span<const double> levels, std::size_t bin) {
    const std::size_t reach = std::clamp<std::size_t>(levels.size() / 50, 10, 500);
    const std::size_t below = std::min(bin, reach), above = std::min(levels.size() - bin - 1, reach);
    return std::max(median(levels.subspan(bin - below, below)), median(levels.subspan(bin + 1, above)));
}

// Where the parabola through a bin and its neighbours is highest.
double summit(const std::vector<double> &levels, const std::vector<double> &frequencies, std::size_t bin) {
    const double before = levels[bin - 1], at = levels[bin], after = levels[bin + 1];
    const double offset = 0.5 * (before - after) / (before - 2 * at + after);
    return frequencies[bin] + (std::isfinite(offset) ? offset * (frequencies[bin + 1] - frequencies[bin]) : 0);
}

// Bins that exceed both neighbours, the highest first; the lowest bins hold what is left of the mean and of its drift.
std::vector<std::size_t> summits(const std::vector<double> &levels) {
    constexpr std::size_t kMost = 1000, kFirst = 5;
    std::vector<std::size_t> bins;
    for (std::size_t k = kFirst; k + 1 < levels.size(); ++k)
        if (std::isfinite(levels[k]) && levels[k] > levels[k - 1] && levels[k] >= levels[k + 1]) bins.push_back(k);
    std::ranges::sort(bins, std::greater(), [&levels](std::size_t k) { return levels[k]; });
    bins.resize(std::min(bins.size(), kMost));
    return bins;
}

// The bins of lines: 14 dB above what surrounds them, which noise hardly ever is.
std::vector<Label> lines_of(const ChannelSpectrum &channel, const SpectrumReport &report) {
    constexpr double kAbove = 14;  // dB
    const std::vector<double> levels = levels_of(channel, report.request.spectrum.scale);
    std::vector<Label> lines;
    for (const std::size_t k : summits(levels))
        if (levels[k] > surroundings(levels, k) + kAbove)
            lines.push_back({report.frequencies[k], channel.values[k],
                             fmt::format("{:.4g} Hz", summit(levels, report.frequencies, k))});
    return lines;
}

std::vector<Label> peaks_of(const ChannelSpectrum &channel, const SpectrumReport &report) {
    std::vector<Label> labels;
    for (const Peak &peak : channel.peaks)
        labels.push_back({peak.frequency, height_of(peak, report), fmt::format("{:.5g} Hz", peak.frequency)});
    return labels;
}

// The peaks of the request, else the highest lines: of those that are close together the highest.
std::vector<Label> labels_of(const ChannelSpectrum &channel, const SpectrumReport &report, bool logarithmic) {
    constexpr std::size_t kMostLines = 5;
    const auto place = [logarithmic](double x) { return logarithmic ? std::log(x) : x; };
    const double range = place(report.frequencies.back()) - place(lowest_of(report, logarithmic));
    const std::size_t most = report.request.peaks ? channel.peaks.size() : kMostLines;
    std::vector<Label> labels;
    for (const Label &label : report.request.peaks ? peaks_of(channel, report) : lines_of(channel, report)) {
        const auto beside = [&](const Label &other) {
            return std::abs(place(label.x) - place(other.x)) < kRoomForLabel * range;
        };
        if (labels.size() < most && std::ranges::none_of(labels, beside)) labels.push_back(label);
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
                                 .y_label = scale_label(channel.name, report.request.spectrum.scale),
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
