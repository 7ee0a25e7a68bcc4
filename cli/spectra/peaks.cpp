#include "cli/spectra/peaks.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>

namespace cli {

namespace {

constexpr double kRounding = 1e-14;         // of the highest bin; lower maxima are rounding
constexpr double kMostBetween = 1.6;        // a line midway between two bins over its value in them, rectangle: pi / 2
constexpr double kMargin = 1.01;            // for the ripple of a flat top
constexpr std::size_t kMostSources = 1000;  // of side lobes that are looked at, the highest

// A window's transform over its value at 0, as a bound that only falls: the largest value at a distance or beyond.
// Over the distance in bins it is the same for all long windows.
class SideLobes {
  public:
    SideLobes(const Window &window, std::size_t samples) {
        const std::size_t length = std::min<std::size_t>(samples, 16384);
        const std::size_t points = std::bit_ceil(kFineness * std::max<std::size_t>(length, 8));
        bound_ = Transform(points).moduli(weights_of(window, length, true));
        for (std::size_t k = bound_.size() - 1; k-- > 0;) bound_[k] = std::max(bound_[k], bound_[k + 1]);
        scale_ = static_cast<double>(points) / static_cast<double>(length);
    }
    double at(double bins) const {
        const auto k = static_cast<std::size_t>(std::max(bins - kNearer, 0.0) * scale_);
        return scale_ * bound_[std::min(k, bound_.size() - 1)];
    }

  private:
    static constexpr std::size_t kFineness = 16;  // values for each bin
    static constexpr double kNearer = 0.1;        // bins by which a line may lie elsewhere than was found
    std::vector<double> bound_;
    double scale_;
};

struct Candidate {
    std::size_t bin;
    double offset, height;  // of the maximum from the bin's centre, in bins; estimated
};

// The vertex of the parabola through the logarithms of a bin and its neighbours.
Candidate estimated(const std::vector<double> &amplitudes, std::size_t bin) {
    const double c = amplitudes[bin];
    if (bin == 0 || bin + 1 == amplitudes.size()) return {bin, 0, c};
    const double l = std::log(amplitudes[bin - 1] / c), r = std::log(amplitudes[bin + 1] / c), bend = l + r;
    if (!std::isfinite(bend) || !(bend < 0)) return {bin, 0, c};
    const double offset = 0.5 * (l - r) / bend;
    return {bin, offset, c * std::min(std::exp(-0.25 * (l - r) * offset), kMostBetween)};
}

std::vector<Candidate> maxima_of(const std::vector<double> &amplitudes) {
    const std::size_t n = amplitudes.size();
    const double floor = kRounding * *std::ranges::max_element(amplitudes);
    std::vector<Candidate> maxima;
    for (std::size_t k = 0; k < n; ++k) {
        const bool rises = k == 0 || amplitudes[k] > amplitudes[k - 1];
        const bool falls = k + 1 == n || amplitudes[k] >= amplitudes[k + 1];
        if (rises && falls && amplitudes[k] > floor && std::isfinite(amplitudes[k]))
            maxima.push_back(estimated(amplitudes, k));
    }
    std::ranges::stable_sort(maxima, std::ranges::greater(), &Candidate::height);
    return maxima;
}

// Newton's method on the logarithm of the amplitude, with differences in place of its derivatives.  All in units of the
// rate.
Peak refined(const Segments &segments, double frequency, double reach) {
    const double h = 0.05 / static_cast<double>(segments.layout().samples);
    const double lowest = frequency - reach, highest = frequency + reach;
    for (int i = 0; i < 5; ++i) {
        const double l = std::log(segments.amplitude_at(frequency - h));
        const double c = std::log(segments.amplitude_at(frequency));
        const double r = std::log(segments.amplitude_at(frequency + h));
        const double bend = l - 2 * c + r, step = 0.5 * h * (l - r) / bend;
        if (!(bend < 0) || !std::isfinite(step)) break;
        frequency = std::clamp(frequency + step, lowest, highest);
        if (std::abs(step) < 0.01 * h) break;  // what is left is a hundredth of it at most
    }
    return {frequency, segments.amplitude_at(frequency)};
}

// What lines of these amplitudes and their mirror images at negative frequencies can have elsewhere.
double leakage(const std::vector<Peak> &lines, const SideLobes &lobes, double frequency, double samples) {
    double sum = 0;
    for (const Peak &line : lines) {
        const double image = std::min(frequency + line.frequency, 1 - frequency - line.frequency);
        sum += line.amplitude * (lobes.at(samples * std::abs(frequency - line.frequency)) + lobes.at(samples * image));
    }
    return sum;
}

}  // namespace

std::vector<Peak> highest_peaks(std::vector<double> amplitudes, const Segments &segments, double rate,
                                const FrequencyBand &band, std::size_t most) {
    const SpectrumLayout &layout = segments.layout();
    const SideLobes lobes(segments.window(), layout.samples);
    const double spacing = layout.frequency(1, 1);
    for (std::size_t k = 0; k < amplitudes.size(); ++k)
        if (!layout.mirrored(k)) amplitudes[k] *= 2;  // as high as its neighbours, which have the power of two
    std::vector<Peak> lines, peaks;
    for (const Candidate &candidate : maxima_of(amplitudes)) {
        if (peaks.size() == most) break;
        const double centre = layout.frequency(candidate.bin, 1), height = amplitudes[candidate.bin];
        if (height <= kMargin * leakage(lines, lobes, centre, static_cast<double>(layout.samples))) continue;
        Peak line{centre + candidate.offset * spacing, candidate.height};
        const bool wanted =
            layout.mirrored(candidate.bin) && line.frequency * rate >= band.from && line.frequency * rate <= band.to;
        if (wanted) line = refined(segments, line.frequency, spacing);
        if (wanted) peaks.push_back({line.frequency * rate, line.amplitude});
        if (!layout.mirrored(candidate.bin)) line.amplitude /= 2;  // which is its own mirror image
        if (lines.size() < kMostSources) lines.push_back(line);
    }
    std::ranges::stable_sort(peaks, std::ranges::greater(), &Peak::amplitude);
    return peaks;
}

}  // namespace cli
