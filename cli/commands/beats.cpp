#include "cli/commands/beats.h"

#include <algorithm>
#include <cmath>

namespace cli {

namespace {

constexpr double kFoot = 0.05, kRefractory = 0.2, kShift = 0.008;  // s
constexpr double kLowest = 1;                                      // mV

std::size_t samples(double seconds, double rate) { return static_cast<std::size_t>(std::lround(seconds * rate)); }

// 0 where a foot lies outside the record.
double height(std::span<const double> x, std::size_t i, std::size_t foot) {
    if (i < foot || i + foot >= x.size()) return 0;
    return x[i] - 0.5 * (x[i - foot] + x[i + foot]);
}

}  // namespace

std::vector<std::size_t> r_peaks(std::span<const double> ecg, double rate) {
    const std::size_t foot = samples(kFoot, rate), reach = samples(kRefractory, rate);
    std::vector<double> heights;
    for (std::size_t i = 0; i < ecg.size(); ++i) heights.push_back(height(ecg, i, foot));
    std::vector<std::size_t> peaks;
    for (std::size_t i = 0; i < ecg.size(); ++i) {
        if (heights[i] < kLowest) continue;
        const auto around = std::span(heights).subspan(i - std::min(i, reach));
        const double highest = *std::ranges::max_element(around.first(std::min(around.size(), 2 * reach + 1)));
        if (heights[i] == highest && (peaks.empty() || i - peaks.back() > reach)) peaks.push_back(i);
    }
    return peaks;
}

std::vector<double> heights_of(std::span<const std::size_t> peaks, std::span<const double> ecg, double rate, int lag) {
    const std::size_t foot = samples(kFoot, rate), reach = samples(kShift, rate);
    std::vector<double> heights;
    for (const std::size_t peak : peaks) {
        const std::size_t at = std::min(peak + static_cast<std::size_t>(lag), ecg.size() - 1);
        const auto around = ecg.subspan(at - std::min(at, reach));
        const auto window = around.first(std::min(around.size(), 2 * reach + 1));
        const auto top = static_cast<std::size_t>(std::ranges::max_element(window) - window.begin());
        heights.push_back(height(ecg, at - std::min(at, reach) + top, foot));
    }
    return heights;
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    if (values.size() % 2 == 1) return *middle;
    return 0.5 * (*middle + *std::max_element(values.begin(), middle));
}

}  // namespace cli
