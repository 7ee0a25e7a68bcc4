#include "cli/data/cascade.h"

#include <fmt/format.h>
#include <mensura/sos.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "cli/app/diagnostics.h"

namespace cli {

namespace {

constexpr std::size_t kRegisters = 4;  // of a section

std::ptrdiff_t signed_size(std::size_t size) { return static_cast<std::ptrdiff_t>(size); }

std::ptrdiff_t usual_extension(const Sections &sections, int ends) {
    return ends == MENSURA_SOS_ENDS_NONE ? 0 : checked(mensura_sos_extension(data_of(sections), count_of(sections)));
}

}  // namespace

CascadeFilter::CascadeFilter(const Sections &sections) : sections_(sections) {
    std::vector<double> state(kRegisters * sections.size());
    const int code = mensura_sos_steady_state(data_of(sections), count_of(sections), 1, state.data());
    settles_ = code != MENSURA_SOS_STEADY_STATE;
    if (settles_) checked(code);
}

void CascadeFilter::run(std::span<double> frames, std::size_t channels) {
    if (started_.size() < channels) {
        waiting_ += channels - started_.size();
        started_.resize(channels);
        states_.resize(channels * kRegisters * sections_.size());
    }
    while (waiting_ > 0 && !frames.empty()) {
        start(frames.first(channels));
        filter(frames.first(channels), channels);
        frames = frames.subspan(channels);
    }
    filter(frames, channels);
}

void CascadeFilter::restart(std::size_t channel) {
    if (channel >= started_.size() || !started_[channel]) return;
    started_[channel] = false;
    ++waiting_;
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

void CascadeFilter::filter(std::span<double> frames, std::size_t channels) {
    const std::ptrdiff_t stride = signed_size(channels), n = signed_size(frames.size() / channels);
    checked(mensura_sos_filter_channels(data_of(sections_), count_of(sections_), states_.data(),
                                        static_cast<int>(channels), frames.data(), stride, 1, frames.data(), stride, 1,
                                        n));
}

void filter_both_ways(const Sections &sections, int ends, std::span<double> samples) {
    const std::ptrdiff_t n = signed_size(samples.size());
    const std::ptrdiff_t extension = n > 0 ? std::min(usual_extension(sections, ends), n - 1) : 0;
    checked(mensura_sos_filtfilt(data_of(sections), count_of(sections), ends, extension, samples.data(), 1,
                                 samples.data(), 1, n, nullptr));
}

void remark_if_short(const std::string &name, std::size_t n, const Sections &sections, int ends) {
    const std::ptrdiff_t usual = usual_extension(sections, ends);
    if (usual > 0 && usual >= signed_size(n))
        remark("{}: {} too few to extend the ends by {}: extended by {}", name,
               n == 1 ? "1 sample is" : fmt::format("{} samples are", n), usual, n - 1);
}

}  // namespace cli
