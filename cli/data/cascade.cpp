#include "cli/data/cascade.h"

#include <mensura/sos.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "cli/app/diagnostics.h"

namespace cli {

namespace {

constexpr std::size_t kRegisters = 4;  // of a section

int checked(int code) {
    if (code < 0) fail("{}", mensura_sos_message(code));
    return code;
}

std::ptrdiff_t signed_size(std::size_t size) { return static_cast<std::ptrdiff_t>(size); }

}  // namespace

CascadeFilter::CascadeFilter(const Sections &sections) : sections_(sections) {
    std::vector<double> state(kRegisters * sections.size());
    const int code = mensura_sos_steady_state(data_of(sections), count_of(sections), 1, state.data());
    settles_ = code != MENSURA_SOS_STEADY_STATE;
    if (settles_) checked(code);
}

void CascadeFilter::operator()(std::span<double> frames, std::size_t channels) {
    if (started_.size() < channels) {
        waiting_ += channels - started_.size();
        started_.resize(channels);
        states_.resize(channels * kRegisters * sections_.size());
    }
    while (waiting_ > 0 && !frames.empty()) {
        start(frames.first(channels));
        run(frames.first(channels), channels);
        frames = frames.subspan(channels);
    }
    run(frames, channels);
}

void CascadeFilter::start(std::span<const double> frame) {
    const std::size_t registers = states_.size() / frame.size();
    for (std::size_t k = 0; k < frame.size(); ++k) {
        if (started_[k] || std::isnan(frame[k])) continue;
        double *const state = states_.data() + k * registers;
        if (settles_)
            checked(mensura_sos_steady_state(data_of(sections_), count_of(sections_), frame[k], state));
        else
            std::fill_n(state, registers, 0.0);
        started_[k] = true;
        --waiting_;
    }
}

void CascadeFilter::run(std::span<double> frames, std::size_t channels) {
    const std::ptrdiff_t stride = signed_size(channels), n = signed_size(frames.size() / channels);
    checked(mensura_sos_filter_channels(data_of(sections_), count_of(sections_), states_.data(),
                                        static_cast<int>(channels), frames.data(), stride, 1, frames.data(), stride, 1,
                                        n));
}

std::size_t usual_extension(const Sections &sections) {
    return static_cast<std::size_t>(checked(mensura_sos_extension(data_of(sections), count_of(sections))));
}

std::size_t filter_both_ways(const Sections &sections, int ends, std::vector<double> &samples) {
    const std::size_t most = samples.empty() ? 0 : samples.size() - 1;
    const std::size_t extension = ends == MENSURA_SOS_ENDS_NONE ? 0 : std::min(usual_extension(sections), most);
    checked(mensura_sos_filtfilt(data_of(sections), count_of(sections), ends, signed_size(extension), samples.data(), 1,
                                 samples.data(), 1, signed_size(samples.size()), nullptr));
    return extension;
}

}  // namespace cli
