// Streaming filters by their rules, one sample after the other.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <span>
#include <vector>

namespace reference {

// central_difference at sample i; the neighbour beyond an end is a line's.
inline double central_difference(std::span<const double> x, std::size_t i, double dt) {
    const double before = i == 0 ? x[0] + x[0] - x[1] : x[i - 1];
    const double after = i + 1 == x.size() ? x[i] + x[i] - x[i - 1] : x[i + 1];
    return (after - before) / (2 * dt);
}

// The online form has it a sample late, and 0 for the first two.
class Difference {
  public:
    explicit Difference(double dt) : dt_(dt) {}
    double operator()(double x) {
        samples_.push_back(x);
        return samples_.size() < 3 ? 0 : central_difference(samples_, samples_.size() - 2, dt_);
    }

  private:
    double dt_;
    std::vector<double> samples_;
};

// A sample that is further than the limit from the last one kept is replaced by that: 18 in a row at most, and none of
// the first six.
class AmplitudeLimit {
  public:
    explicit AmplitudeLimit(double limit) : limit_(limit) {}
    double operator()(double x) {
        const bool rejects = count_ >= 6 && std::fabs(x - kept_) > limit_ && rejected_ < 18;
        rejected_ = rejects ? rejected_ + 1 : 0;
        if (!rejects) kept_ = x;
        if (count_ < 6) ++count_;
        return kept_;
    }
    int count() const { return count_ + rejected_; }  // as the record has it

  private:
    double limit_, kept_ = 0;
    int count_ = 0, rejected_ = 0;
};

// The sum of the slots in their order, over how many are filled.
class MovingAverage {
  public:
    explicit MovingAverage(int length) : slots_(static_cast<std::size_t>(length)) {}
    double operator()(double x) {
        slots_[count_++ % slots_.size()] = x;
        const double sum = std::accumulate(slots_.begin(), slots_.end(), 0.0);
        return sum / static_cast<double>(std::min(count_, slots_.size()));
    }

  private:
    std::vector<double> slots_;
    std::size_t count_ = 0;
};

}  // namespace reference
