#include "cli/app/time_response.h"

#include <mensura/sos.h>

#include <algorithm>
#include <cmath>

namespace cli {

namespace {

constexpr double kSettled = 0.02;                    // of the gain
constexpr double kGone = 1e-6;                       // of the gain of one pass: what is left then does not show
constexpr std::ptrdiff_t kMostSamples = 10'000'000;  // to find out when a response has settled
constexpr std::ptrdiff_t kMostReach = 1'000'000;     // of a response both ways, which is stored

// Samples after which a step has no more effect.
std::optional<std::size_t> reach_of(const Sections &sections, double gain) {
    std::ptrdiff_t samples = 0;
    const int code = mensura_sos_step_figures(data_of(sections), count_of(sections), kGone * std::sqrt(gain),
                                              kMostSamples, nullptr, &samples);
    if (code < 0 || samples > kMostReach) return {};
    return static_cast<std::size_t>(samples);
}

// The record is longer at both ends by the reach of the filter.
std::optional<TimeResponse> both_ways(const Sections &sections, double gain, Input input, std::size_t n) {
    const std::optional<std::size_t> reach = reach_of(sections, gain);
    if (!reach) return {};
    const std::size_t before = n / 2;
    std::vector<double> y(n + 2 * *reach + 2);
    const auto start = y.begin() + static_cast<std::ptrdiff_t>(*reach + before);
    std::fill(start, input == Input::Step ? y.end() : start + 1, 1.0);
    if (mensura_sos_filtfilt(data_of(sections), count_of(sections), MENSURA_SOS_ENDS_NONE, 0, y.data(), 1, y.data(), 1,
                             static_cast<std::ptrdiff_t>(y.size()), nullptr) < 0)
        return {};
    const auto from = y.begin() + static_cast<std::ptrdiff_t>(*reach);
    return TimeResponse{-static_cast<std::ptrdiff_t>(before), {from, from + static_cast<std::ptrdiff_t>(n)}};
}

std::optional<StepFigures> figures_one_way(const Sections &sections, double gain) {
    double overshoot = 0;
    std::ptrdiff_t settling = 0;
    if (mensura_sos_step_figures(data_of(sections), count_of(sections), kSettled * gain, kMostSamples, &overshoot,
                                 &settling) < 0)
        return {};
    return StepFigures{overshoot / gain, static_cast<double>(settling)};
}

std::optional<StepFigures> figures_both_ways(const Sections &sections, double gain) {
    const std::optional<std::size_t> reach = reach_of(sections, gain);
    const auto response =
        reach ? both_ways(sections, gain, Input::Step, 4 * *reach + 4) : std::optional<TimeResponse>();
    if (!response) return {};
    const std::vector<double> &y = response->y;
    const auto middle = static_cast<std::size_t>(-response->first);
    const double last = y.back();
    const auto [lowest, highest] = std::ranges::minmax(y);
    const bool rests_at_zero = std::abs(last) < 1e-3 * gain;
    const double overshoot = rests_at_zero ? std::min(highest, -lowest) : highest - last;
    std::size_t settled = y.size();
    while (settled > middle && std::abs(y[settled - 1] - last) <= kSettled * gain) --settled;
    return StepFigures{std::max(overshoot, 0.0) / gain, static_cast<double>(settled - middle)};
}

}  // namespace

std::optional<TimeResponse> time_response(const Sections &sections, int passes, double gain, Input input,
                                          std::size_t n) {
    if (passes == 2) return both_ways(sections, gain, input, n);
    const auto respond = input == Input::Step ? mensura_sos_step_response : mensura_sos_impulse_response;
    TimeResponse response{0, std::vector<double>(n)};
    if (respond(data_of(sections), count_of(sections), response.y.data(), static_cast<std::ptrdiff_t>(n)) < 0)
        return {};
    return response;
}

std::optional<StepFigures> step_figures(const Sections &sections, int passes, double gain) {
    return passes == 2 ? figures_both_ways(sections, gain) : figures_one_way(sections, gain);
}

}  // namespace cli
