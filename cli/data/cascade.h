// Cascades of second-order sections (mensura/sos.h) at work on channels.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "cli/app/sections.h"
#include "cli/data/frame_filter.h"

namespace cli {

// Runs sections over frames, a sample of each channel, in place, and keeps their state.  Each channel
// starts with its first number, as if that had always been its input; where that leads to no steady state, from rest.
class CascadeFilter : public FrameFilter {
  public:
    explicit CascadeFilter(const Sections &sections);
    void run(std::span<double> frames, std::size_t channels) override;
    void restart(std::size_t channel) override;
    bool starts_settled() const { return settles_; }

  private:
    void start(std::span<const double> frame);
    void filter(std::span<double> frames, std::size_t channels);

    Sections sections_;
    bool settles_;
    std::vector<double> states_;
    std::vector<bool> started_;
    std::size_t waiting_ = 0;  // channels that have not started
};

// Filters a record forwards and backwards, continued at its ends as `ends` says (a mensura_sos_ends code), by as many
// samples as usual or, in a short record, as can be.
void filter_both_ways(const Sections &sections, int ends, std::span<double> samples);

// The same for frames, all channels at once.
void filter_both_ways(const Sections &sections, int ends, std::span<double> frames, std::size_t channels);

// Says on stderr when a record of n samples is too short for the usual extension.
void remark_if_short(const std::string &name, std::size_t n, const Sections &sections, int ends);

}  // namespace cli
