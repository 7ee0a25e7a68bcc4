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

// The sample that is as far beyond an end as `mirrored` is on its other side; `last` is the sample at the end.
double beyond(int ends, double last, double mirrored) {
    if (ends == MENSURA_SOS_ENDS_ODD) return 2 * last - mirrored;
    return ends == MENSURA_SOS_ENDS_EVEN ? mirrored : last;
}

// Frames beyond both ends of a record, nearest to the end first at both.
struct Extension {
    std::vector<double> before, after;
};

Extension extended(int ends, std::span<const double> frames, std::size_t channels, std::size_t count) {
    Extension extension{std::vector<double>(count * channels), std::vector<double>(count * channels)};
    const std::size_t last = frames.size() - channels;
    for (std::size_t i = 0; i < count * channels; ++i) {
        const std::size_t k = i % channels, distance = (i / channels + 1) * channels;
        extension.before[i] = beyond(ends, frames[k], frames[k + distance]);
        extension.after[i] = beyond(ends, frames[last + k], frames[last + k - distance]);
    }
    return extension;
}

// Sections that run over frames in either direction.
class Runner {
  public:
    Runner(const Sections &sections, std::size_t channels)
        : sections_(sections), channels_(channels), states_(kRegisters * sections.size() * channels) {}

    void settle(const double *frame) {
        for (std::size_t k = 0; k < channels_; ++k)
            checked(mensura_sos_steady_state(data_of(sections_), count_of(sections_), frame[k],
                                             states_.data() + k * kRegisters * sections_.size()));
    }
    void forwards(std::span<double> frames) {
        for (std::size_t i = 0; i < frames.size(); i += block()) run(frames.subspan(i).first(size_at(frames, i)), 1);
    }
    void backwards(std::span<double> frames) {
        for (std::size_t i = 0; i < frames.size(); i += block()) {
            const std::size_t size = size_at(frames, i);
            run(frames.subspan(frames.size() - i - size, size), -1);
        }
    }

  private:
    // Frames that the processor's cache holds while all channels run over them.
    std::size_t block() const { return 256 * channels_; }
    std::size_t size_at(std::span<double> frames, std::size_t i) const { return std::min(block(), frames.size() - i); }

    void run(std::span<double> frames, int direction) {
        double *const first = direction > 0 ? frames.data() : &frames[frames.size() - channels_];
        const std::ptrdiff_t stride = direction * signed_size(channels_);
        checked(mensura_sos_filter_channels(data_of(sections_), count_of(sections_), states_.data(),
                                            static_cast<int>(channels_), first, stride, 1, first, stride, 1,
                                            signed_size(frames.size() / channels_)));
    }

    const Sections &sections_;
    std::size_t channels_;
    std::vector<double> states_;
};

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

// As mensura_sos_filtfilt does it for one channel, with its bits.
void filter_both_ways(const Sections &sections, int ends, std::span<double> frames, std::size_t channels) {
    if (frames.empty()) return;
    const auto count = std::min(usual_extension(sections, ends), signed_size(frames.size() / channels) - 1);
    auto [before, after] = extended(ends, frames, channels, static_cast<std::size_t>(count));
    Runner runner(sections, channels);
    runner.settle(count > 0 ? &before[before.size() - channels] : frames.data());
    runner.backwards(before);
    runner.forwards(frames);
    runner.forwards(after);
    runner.settle(count > 0 ? &after[after.size() - channels] : &frames[frames.size() - channels]);
    runner.backwards(after);
    runner.backwards(frames);
}

void remark_if_short(const std::string &name, std::size_t n, const Sections &sections, int ends) {
    const std::ptrdiff_t usual = usual_extension(sections, ends);
    if (usual > 0 && usual >= signed_size(n))
        remark("{}: {} too few to extend the ends by {}: extended by {}", name,
               n == 1 ? "1 sample is" : fmt::format("{} samples are", n), usual, n - 1);
}

}  // namespace cli
