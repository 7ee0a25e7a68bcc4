// The response of a cascade.
#pragma once

#include <mensura/iir.h>

#include <cstddef>

#include "../internal/target.h"

namespace mensura::iir {

// Replaces each of `points` values of z^-1 by H(z), the product of the sections' responses.
using Respond = void(const IIRCoeffs &c, std::size_t sections, double *re, double *im, std::size_t points);
MENSURA_KERNEL(Respond, respond);

}  // namespace mensura::iir
