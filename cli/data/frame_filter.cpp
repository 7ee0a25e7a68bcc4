#include "cli/data/frame_filter.h"

#include <cmath>

namespace cli {

void ChannelByChannel::run(std::span<double> frames, std::size_t channels) {
    while (filters_.size() < channels) filters_.push_back(make_());
    for (std::size_t i = 0; i < frames.size(); ++i)
        if (!std::isnan(frames[i])) frames[i] = filters_[i % channels](frames[i]);
}

void ChannelByChannel::restart(std::size_t channel) {
    if (channel < filters_.size()) filters_[channel] = make_();
}

}  // namespace cli
