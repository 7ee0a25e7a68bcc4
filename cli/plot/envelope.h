// Long records as curves of bounded size.
#pragma once

#include <cstddef>
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
    void add(double value);
    // A curve over time, or over the sample's number if the rate is 0.
    Curve curve(const std::string &title, double rate) const;

  private:
    struct Bucket {
        double low, high;
        bool low_first;
    };
    void merge_pairs();

    std::size_t capacity_;
    std::vector<Bucket> buckets_;
    std::size_t stride_ = 1, filled_ = 0;  // samples in a bucket, and in the last one
};

// The least and the largest value in each pixel column of an axis, of points whose x increases.  On a logarithmic axis,
// where an Envelope would leave few points at its low end, those at 0 are left out.
Curve bounded_curve(const std::string &title, std::span<const double> x, std::span<const double> y,
                    const PlotOptions &plot, bool logarithmic);

}  // namespace cli
