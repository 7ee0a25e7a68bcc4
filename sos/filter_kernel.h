// A cascade over many samples.
#pragma once

#include <cstddef>

#include "../internal/target.h"

namespace mensura::sos {

// Samples stride doubles apart.
struct Signal {
    const double *x;
    std::ptrdiff_t x_stride;
    double *y;
    std::ptrdiff_t y_stride;
    std::size_t n;
};

// Runs n samples x[0], x[x_stride], ... through the sections of six doubles, with four doubles of state each;
// y[0], y[y_stride], ... receive the outputs.  y is x, with the same stride, or does not overlap it.
using RunSections = void(const double *sos, std::size_t sections, double *state, const Signal &signal);
MENSURA_KERNEL(RunSections, run_sections);

}  // namespace mensura::sos
