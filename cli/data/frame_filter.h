// Filters of many channels that keep their state from call to call.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace cli {

class FrameFilter {
  public:
    FrameFilter() = default;
    virtual ~FrameFilter() = default;
    FrameFilter(const FrameFilter &) = delete;
    FrameFilter &operator=(const FrameFilter &) = delete;

    // Filters frames, a sample of each channel, in place.  A channel begins with its first number; before that it is
    // missing (NaN), after that never, unless the filter takes what is missing.
    virtual void run(std::span<double> frames, std::size_t channels) = 0;
    virtual bool takes_missing() const { return false; }
    // The channel begins anew with its next number.
    virtual void restart(std::size_t channel) = 0;
};

// A filter of one channel: a sample in, a sample out.
using ChannelFilter = std::function<double(double)>;
using MakeFilter = std::function<ChannelFilter()>;

// Every channel with a filter of its own.
class ChannelByChannel : public FrameFilter {
  public:
    explicit ChannelByChannel(MakeFilter make) : make_(std::move(make)) {}
    void run(std::span<double> frames, std::size_t channels) override;
    void restart(std::size_t channel) override;

  private:
    MakeFilter make_;
    std::vector<ChannelFilter> filters_;
};

}  // namespace cli
