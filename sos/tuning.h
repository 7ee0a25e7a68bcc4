// Levels at the edges, brought back to what was requested where the rounding of low or narrow filters has shifted them.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "sections.h"
#include "transform.h"

namespace mensura::sos {

// What sections have to achieve.
struct Target {
    Edges edges;
    Real level;  // |H| at the edges
    HalfAngle reference;
    Real gain;  // |H| there
};

// Brings rounded sections to their target.  The frequencies of low poles are on a coarse grid, because 1 + a1 + a2 is a
// multiple of 2^-53; but 1 - a2, their damping, is on a fine one.  Where the level at an edge is off, the damping of the
// sections that resonate next to it takes up the error, unless the pass band would lose more than the edge gains.  False
// if the level is off by more than 0.01 dB to begin with.
bool settle_edges(const IdealCascade &ideal, const Target &target, std::span<Section> sections);

}  // namespace mensura::sos
