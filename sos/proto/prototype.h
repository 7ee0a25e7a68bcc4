// Analog low-pass prototypes: poles and zeros in extended precision, with the edge at 1 rad/s.
#pragma once

#include <mensura/sos.h>

#include <array>
#include <cstddef>

#include "../complex.h"

namespace mensura::sos {

inline constexpr std::size_t kMostPairs = 10;  // of a prototype; with an odd order one of them is a real pole alone

// H(s) = prod (1 + (s / zero)^2) / prod (pole pairs, each 1 at s = 0): unit gain at DC.
struct Prototype {
    std::array<Complex, kMostPairs> poles;  // of a pair the one with im > 0; a real pole (im = 0) stands alone
    std::size_t pole_count = 0;             // entries of poles
    std::array<Real, kMostPairs> zeros;     // frequencies of the zeros, at +j and -j times this
    std::size_t zero_count = 0;
    Real peak = 1;  // the largest gain of the pass band
};

// The prototype of a request that has been checked.  At 1 rad/s its gain is `level` (a ratio below 1, of one pass) times
// the peak; of several such frequencies of the pass band, 1 rad/s is the outermost.  Ripple and stop band of the request
// count for all passes together; those of the prototype are their share.
// Returns false when there is no such frequency, or the transition is too narrow for extended precision.
bool make_prototype(const mensura_sos_request &request, Real level, Prototype &prototype);

}  // namespace mensura::sos
