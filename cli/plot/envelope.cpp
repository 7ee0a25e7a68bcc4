#include "cli/plot/envelope.h"

#include <algorithm>
#include <cmath>

namespace cli {

void Envelope::add(double value) {
    if (buckets_.empty() || filled_ == stride_) {
        if (buckets_.size() == capacity_) merge_pairs();
        buckets_.push_back({value, value, true});
        filled_ = 1;
        return;
    }
    ++filled_;
    Bucket &last = buckets_.back();
    if (value < last.low || std::isnan(last.low)) {
        last.low = value;
        last.low_first = false;
    }
    if (value > last.high || std::isnan(last.high)) {
        last.high = value;
        last.low_first = true;
    }
}

void Envelope::merge_pairs() {
    for (std::size_t i = 0; i < buckets_.size() / 2; ++i) {
        const Bucket &a = buckets_[2 * i], &b = buckets_[2 * i + 1];
        const bool low_in_a = !(b.low < a.low), high_in_a = !(b.high > a.high);
        buckets_[i] = {std::fmin(a.low, b.low), std::fmax(a.high, b.high),
                       low_in_a == high_in_a ? (low_in_a ? a.low_first : b.low_first) : low_in_a};
    }
    buckets_.resize(buckets_.size() / 2);
    stride_ *= 2;
}

Curve Envelope::curve(const std::string &title, double rate) const {
    Curve curve{.title = title};
    const double step = rate > 0 ? 1 / rate : 1.0, stride = static_cast<double>(stride_);
    for (std::size_t i = 0; i < buckets_.size(); ++i) {
        const Bucket &bucket = buckets_[i];
        const double x = static_cast<double>(i) * stride * step;
        curve.x.push_back(x);
        curve.y.push_back(bucket.low_first ? bucket.low : bucket.high);
        if (stride_ == 1) continue;
        curve.x.push_back(x + 0.5 * stride * step);
        curve.y.push_back(bucket.low_first ? bucket.high : bucket.low);
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
