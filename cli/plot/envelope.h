// Long records as curves of bounded size.
#pragma once

#include <cstddef>
#include <limits>
#include <span>
#include <string>
#include <vector>

#include "cli/plot/figure.h"
#include "cli/plot/options.h"

namespace cli {

// A long record as its minimum and maximum per pixel column, in bounded memory.
class Envelope {
  public:
    explicit Envelope(const PlotOptions &plot) : capacity_(plot.columns()) {}
    void add(double value) { add(next_, value); }
    // At a place further on, where samples before it are missing; what is not a number is missing, too.
    void add(std::size_t place, double value);
    // A curve over time, or over the sample's number if the rate is 0, that is broken where more than so many samples
    // are missing.
    Curve curve(const std::string &title, double rate, std::size_t longest_bridge = 0) const;

  private:
    struct Bucket {
        double low = std::numeric_limits<double>::quiet_NaN(), high = low;  // NaN: nothing was added
        bool low_first = true;
    };
    static Bucket merged(const Bucket &a, const Bucket &b);
    void merge_pairs();

    std::size_t capacity_;
    std::vector<Bucket> buckets_;
    std::size_t stride_ = 1, next_ = 0;  // samples in a bucket; the place after the last one
};

// The least and the largest value in each pixel column of an axis, of points whose x increases.  On a logarithmic axis,
// where an Envelope would leave few points at its low end, those at 0 are left out.
Curve bounded_curve(const std::string &title, std::span<const double> x, std::span<const double> y,
                    const PlotOptions &plot, bool logarithmic);

}  // namespace cli
