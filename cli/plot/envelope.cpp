#include "cli/plot/envelope.h"

#include <cmath>

namespace cli {

void Envelope::add(double value) {
    if (buckets_.empty() || filled_ == stride_) {
        if (buckets_.size() == kCapacity) merge_pairs();
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

}  // namespace cli
