// A cascade over many samples at once.
#pragma once

#include <mensura/iir.h>

#include <cstddef>

#include "../internal/target.h"

namespace mensura::iir {

// The registers of a cascade, wherever they are kept.
struct RegisterArrays {
    double *RegX1, *RegX2, *RegY1, *RegY2;
};

template <typename Registers>
RegisterArrays arrays_of(Registers &r) {
    return {r.RegX1, r.RegX2, r.RegY1, r.RegY2};
}

// Samples to run at once: every group of sections then finds its input in the cache.
inline constexpr std::size_t kPiece = 512;

// Runs n samples in[0], in[step], in[2 step], ... through a cascade of 1 .. 50 sections; out[0], out[step], ... receive
// its outputs, and may be the input, but not part of it.  Outputs and registers have the bits that run_sections gives,
// sample by sample.  Returns the largest magnitude of all feed-forward sums and outputs, NaN left out; 0 if there are
// none.
using RunSamples = double(const IIRCoeffs &c, std::size_t sections, const RegisterArrays &r, const double *in,
                          double *out, std::size_t n, std::ptrdiff_t step);
MENSURA_KERNEL(RunSamples, run_samples);

}  // namespace mensura::iir
