#include "cli/data/statistics.h"

#include <algorithm>
#include <cmath>

namespace cli {

void Statistics::add(double sample) {
    if (std::isnan(sample)) {
        ++missing_;
        return;
    }
    ++count_;
    lowest_ = std::fmin(lowest_, sample);
    highest_ = std::fmax(highest_, sample);
    if (count_ == 1) first_ = sample;
    const long double x = sample - first_, off = x - mean_;
    mean_ += off / static_cast<long double>(count_);
    squares_ += off * (x - mean_);
}

double Statistics::mean() const { return count_ > 0 ? static_cast<double>(first_ + mean_) : kNone; }

double Statistics::rms() const {
    if (count_ == 0) return kNone;
    const long double mean = first_ + mean_;
    return static_cast<double>(std::sqrt(mean * mean + squares_ / static_cast<long double>(count_)));
}

double Statistics::standard_deviation() const {
    if (count_ < 2) return kNone;
    return static_cast<double>(std::sqrt(squares_ / static_cast<long double>(count_ - 1)));
}

double Statistics::crest_factor() const {
    const double level = rms();
    return level > 0 ? std::max(std::abs(lowest_), std::abs(highest_)) / level : kNone;
}

}  // namespace cli
