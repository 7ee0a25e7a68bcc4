// A cascade over many samples.
#pragma once

#include <mensura/iir.h>

#include <cstddef>

#include "../internal/target.h"
#include "direct_form.h"

namespace mensura::iir {

// Where the numbers of a cascade's first section are; those of each next one lie a distance further, in doubles.  Where
// a0 is null, it is 1.
struct Cascade {
    std::size_t count;
    const double *a0, *a1, *a2, *b0, *b1, *b2;
    std::ptrdiff_t coefficient_distance;
    double *x1, *x2, *y1, *y2;
    std::ptrdiff_t register_distance;
};

// The sections of a designed record that run, with the registers of the filter that runs them.
template <typename Registers>
Cascade cascade_of(const IIRCoeffs &c, Registers &r) {
    return {sections_to_run(c), c.a0, c.a1, c.a2, c.b0, c.b1, c.b2, 1, r.RegX1, r.RegX2, r.RegY1, r.RegY2, 1};
}

// Samples of a block: a long record is run block by block, so that every group of sections finds its input in the cache.
inline constexpr std::size_t kBlockSize = 512;

// Runs n samples in[0], in[in_stride], in[2 in_stride], ... through a cascade; out[0], out[out_stride], ... receive its
// outputs.  out is in, with the same stride, or does not overlap it.  Outputs and registers have the bits that
// run_sections gives, sample by sample.
using RunSamples = void(const Cascade &cascade, const double *in, std::ptrdiff_t in_stride, double *out,
                        std::ptrdiff_t out_stride, std::size_t n);
MENSURA_KERNEL(RunSamples, run_samples);

// The same for neighbouring samples.  Returns the largest magnitude of all feed-forward sums and outputs, leaving NaN
// out; 0 if all are NaN.
using RunAndKeepPeak = double(const Cascade &cascade, const double *in, double *out, std::size_t n);
MENSURA_KERNEL(RunAndKeepPeak, run_and_keep_peak);

}  // namespace mensura::iir
