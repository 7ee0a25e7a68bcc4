// What a filter makes of a step and of an impulse.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "cli/app/sections.h"

namespace cli {

enum class Input { Step, Impulse };

struct TimeResponse {
    std::ptrdiff_t first = 0;  // index of the first sample; the step, or the impulse, comes at 0
    std::vector<double> y = {};
};

// The response to an input that is 0 before index 0: one way n samples from there on, both ways (zero phase) n samples
// around it.  The gain is that of all passes, as a factor.  None where both ways do not come to rest within a million
// samples.
std::optional<TimeResponse> time_response(const Sections &sections, int passes, double gain, Input input,
                                          std::size_t n);

struct StepFigures {
    double overshoot;  // in units of the gain
    double settling;   // samples until the response stays within 2 % of the gain
};

// The overshoot is the most that the response goes beyond its final value; where that is 0 (high-pass, band-pass), the
// most that it swings to the side opposite to its largest value.  None for a filter that does not come to rest.
std::optional<StepFigures> step_figures(const Sections &sections, int passes, double gain);

}  // namespace cli
