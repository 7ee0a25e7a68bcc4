#include "cli/plot/envelope.h"

#include <algorithm>
#include <cmath>

namespace cli {

void Envelope::add(std::size_t place, double value) {
    next_ = place + 1;
    while (place / stride_ >= capacity_) merge_pairs();
    if (buckets_.size() <= place / stride_) buckets_.resize(place / stride_ + 1);
    buckets_.back() = merged(buckets_.back(), {value, value});
}

Envelope::Bucket Envelope::merged(const Bucket &a, const Bucket &b) {
    if (std::isnan(a.low)) return b;
    if (std::isnan(b.low)) return a;
    const bool low_in_a = !(b.low < a.low), high_in_a = !(b.high > a.high);
    const bool first_of_one = low_in_a ? a.low_first : b.low_first;
    return {std::min(a.low, b.low), std::max(a.high, b.high), low_in_a == high_in_a ? first_of_one : low_in_a};
}

void Envelope::merge_pairs() {
    buckets_.resize((buckets_.size() + 1) / 2 * 2);
    for (std::size_t i = 0; i < buckets_.size() / 2; ++i) buckets_[i] = merged(buckets_[2 * i], buckets_[2 * i + 1]);
    buckets_.resize(buckets_.size() / 2);
    stride_ *= 2;
}

Curve Envelope::curve(const std::string &title, double rate, std::size_t longest_bridge) const {
    Curve curve{.title = title};
    const double width = static_cast<double>(stride_) * (rate > 0 ? 1 / rate : 1.0);
    const auto add = [&curve, width](double bucket, double y) {
        curve.x.push_back(bucket * width);
        curve.y.push_back(y);
    };
    std::size_t missing = 0;
    for (std::size_t i = 0; i < buckets_.size(); ++i) {
        const auto &[low, high, low_first] = buckets_[i];
        if (std::isnan(low)) {
            missing += stride_;
            continue;
        }
        const auto place = static_cast<double>(i);
        if (missing > longest_bridge && !curve.x.empty()) add(place - 0.25, std::nan(""));
        missing = 0;
        add(place, low_first ? low : high);
        if (stride_ > 1) add(place + 0.5, low_first ? high : low);
    }
    return curve;
}

Curve bounded_curve(const std::string &title, std::span<const double> x, std::span<const double> y,
                    const PlotOptions &plot, bool logarithmic) {
    Curve curve{.title = title};
    const auto place = [logarithmic](double value) { return logarithmic ? std::log(value) : value; };
    const std::size_t first = logarithmic && !x.empty() && x[0] <= 0 ? 1 : 0;
    if (x.size() <= first) return curve;
    const double from = place(x[first]), width = (place(x.back()) - from) / static_cast<double>(plot.columns());
    const auto add = [&](std::size_t i) {
        curve.x.push_back(x[i]);
        curve.y.push_back(y[i]);
    };
    for (std::size_t i = first, end = i; i < x.size(); i = end) {
        const double column = std::floor((place(x[i]) - from) / width);
        std::size_t lowest = i, highest = i;
        for (end = i + 1; end < x.size() && std::floor((place(x[end]) - from) / width) == column; ++end) {
            if (y[end] < y[lowest]) lowest = end;
            if (y[end] > y[highest]) highest = end;
        }
        add(std::min(lowest, highest));
        if (lowest != highest) add(std::max(lowest, highest));
    }
    return curve;
}

}  // namespace cli
