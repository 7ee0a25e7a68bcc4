// Figures that describe a channel, in one pass.
#pragma once

#include <cstddef>
#include <limits>

namespace cli {

class Statistics {
  public:
    // A sample; NaN is a missing one.
    void add(double sample);

    std::size_t count() const { return count_; }
    std::size_t missing() const { return missing_; }
    // NaN where there are too few samples: of the standard deviation fewer than two, of the others none.
    double mean() const;
    double rms() const;
    double standard_deviation() const;  // sqrt(sum (x - mean)^2 / (n - 1))
    double lowest() const { return lowest_; }
    double highest() const { return highest_; }
    double peak_to_peak() const { return highest_ - lowest_; }
    double crest_factor() const;  // max |x| / rms

  private:
    static constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    std::size_t count_ = 0, missing_ = 0;
    double lowest_ = kNone, highest_ = kNone;
    // Welford, Technometrics 4:419, 1962, of the differences from the first number, which keeps the digits of a small
    // noise on a large offset.  Squares of all doubles are in the range of long double.
    long double first_ = 0, mean_ = 0, squares_ = 0;  // mean: of x - first; squares: sum (x - first - mean)^2
};

}  // namespace cli
