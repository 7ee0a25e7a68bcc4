#include "cli/commands/spectrum_lines.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>
#include <span>

namespace cli {

namespace {

double median(std::span<const double> values) {
    std::vector<double> sorted(values.begin(), values.end());
    const auto middle = sorted.begin() + std::ssize(sorted) / 2;
    std::ranges::nth_element(sorted, middle);
    return *middle;
}

// The higher of the median levels on either side of a bin, because many spectra fall with the frequency; up to the next
// line.
double surroundings(std::span<const double> levels, std::size_t bin, const std::vector<std::size_t> &lines) {
    const std::size_t reach = std::clamp<std::size_t>(levels.size() / 50, 10, 500);
    std::size_t from = bin - std::min(bin, reach), to = std::min(bin + reach + 1, levels.size());
    for (const std::size_t line : lines) {
        if (line < bin) from = std::max(from, line + 1);
        if (line > bin) to = std::min(to, line);
    }
    return std::max(median(levels.subspan(from, bin - from)), median(levels.subspan(bin + 1, to - bin - 1)));
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

}  // namespace

std::vector<std::size_t> lines_in(const std::vector<double> &levels) {
    constexpr double kAbove = 14;                  // dB
    constexpr std::size_t kMost = 20, kApart = 6;  // lines; bins
    std::vector<std::size_t> lines;
    for (const std::size_t k : summits(levels)) {
        const auto is_close = [k](std::size_t line) { return k < line + kApart && line < k + kApart; };
        if (std::ranges::any_of(lines, is_close) || levels[k] <= surroundings(levels, k, lines) + kAbove) continue;
        lines.push_back(k);
        if (lines.size() == kMost) break;
    }
    return lines;
}

double summit(const std::vector<double> &levels, const std::vector<double> &frequencies, std::size_t bin) {
    const double before = levels[bin - 1], at = levels[bin], after = levels[bin + 1];
    const double offset = 0.5 * (before - after) / (before - 2 * at + after);
    return frequencies[bin] + (std::isfinite(offset) ? offset * (frequencies[bin + 1] - frequencies[bin]) : 0);
}

}  // namespace cli
