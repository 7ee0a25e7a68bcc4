// A cascade over many samples, of one signal or of several side by side.
#pragma once

#include <cstddef>

#include "../internal/target.h"

namespace mensura::sos {

// Samples x[0], x[x_stride], ... and room for as many outputs.  y is x, with the same stride, or does not overlap it.
struct Signal {
    const double *x;
    std::ptrdiff_t x_stride;
    double *y;
    std::ptrdiff_t y_stride;
    std::ptrdiff_t n;
};

// Runs a signal through sections of six doubles, b0 b1 b2 1 a1 a2, with four doubles of state each, x1 x2 y1 y2.
using RunSections = void(const double *sos, std::size_t sections, double *state, const Signal &signal);
MENSURA_KERNEL(RunSections, run_sections);

// Several signals: the first one, and the distances in doubles from each to the next.
struct Channels {
    Signal first;
    std::ptrdiff_t x_distance, y_distance;
    std::ptrdiff_t count;
};

// Runs each channel as run_sections does.  The states of a channel's sections are neighbours, and the channels' states
// follow each other.
using RunChannels = void(const double *sos, std::size_t sections, double *state, const Channels &channels);
MENSURA_KERNEL(RunChannels, run_channels);

}  // namespace mensura::sos
