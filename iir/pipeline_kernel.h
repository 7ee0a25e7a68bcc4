// A cascade over many samples.
#pragma once

#include <mensura/iir.h>

#include <cstddef>

#include "../internal/target.h"

namespace mensura::iir {

// The registers of a cascade, in whichever record they are.
struct RegisterArrays {
    double *RegX1, *RegX2, *RegY1, *RegY2;
};

template <typename Registers>
RegisterArrays arrays_of(Registers &r) {
    return {r.RegX1, r.RegX2, r.RegY1, r.RegY2};
}

// Samples of a block: a record is run block by block, so that every group of sections finds its input in the cache.
inline constexpr std::size_t kBlockSize = 512;

// Runs n samples in[0], in[stride], in[2 stride], ... through a cascade of 1 .. 50 sections; out[0], out[stride], ...
// receive its outputs.  out is in or does not overlap it.  Outputs and registers have the bits that run_sections gives,
// sample by sample.  Returns the largest magnitude of all feed-forward sums and outputs, leaving NaN out; 0 if all are
// NaN.
using RunSamples = double(const IIRCoeffs &c, std::size_t sections, const RegisterArrays &r, const double *in,
                          double *out, std::size_t n, std::ptrdiff_t stride);
MENSURA_KERNEL(RunSamples, run_samples);

}  // namespace mensura::iir
