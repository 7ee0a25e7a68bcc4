// The response of a cascade.
#pragma once

#include <mensura/iir.h>

#include <cstddef>

#include "../internal/target.h"

namespace mensura::iir {

// Puts H(z) in place of z^-1, of `points` complex numbers.
using Respond = void(const IIRCoeffs &c, std::size_t sections, double *re, double *im, std::size_t points);
MENSURA_KERNEL(Respond, respond);

}  // namespace mensura::iir
