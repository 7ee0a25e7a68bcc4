// Cascades of second-order sections (mensura/sos.h) at work on channels.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "cli/app/sections.h"

namespace cli {

// Runs sections over frames, a sample of each channel, in place, and keeps their state: a FrameFilter.  Each channel
// starts with its first number, as if that had always been its input; where that leads to no steady state, from rest.
class CascadeFilter {
  public:
    explicit CascadeFilter(const Sections &sections);
    void operator()(std::span<double> frames, std::size_t channels);
    bool starts_settled() const { return settles_; }

  private:
    void start(std::span<const double> frame);
    void run(std::span<double> frames, std::size_t channels);

    Sections sections_;
    bool settles_;
    std::vector<double> states_;
    std::vector<bool> started_;
    std::size_t waiting_ = 0;  // channels that have not started
};

// Filters a record forwards and backwards, continued at its ends as `ends` says (a mensura_sos_ends code).  One too
// short for the usual extension is extended by as much as it can be; returns the samples of the extension.
std::size_t filter_both_ways(const Sections &sections, int ends, std::vector<double> &samples);

// The samples by which a record is usually extended.
std::size_t usual_extension(const Sections &sections);

}  // namespace cli
