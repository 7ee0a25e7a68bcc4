// Long records as curves of bounded size.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/plot/figure.h"

namespace cli {

// A long record as its minimum and maximum per pixel column, in bounded memory.
class Envelope {
  public:
    void add(double value);
    // A curve over time, or over the sample's number if the rate is 0.
    Curve curve(const std::string &title, double rate) const;

  private:
    struct Bucket {
        double low, high;
        bool low_first;
    };
    void merge_pairs();

    static constexpr std::size_t kCapacity = 1600;  // a picture has no more than half as many columns
    std::vector<Bucket> buckets_;
    std::size_t stride_ = 1, filled_ = 0;  // samples in a bucket, and in the last one
};

}  // namespace cli
