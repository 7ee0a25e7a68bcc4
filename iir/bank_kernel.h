// A bank's channels in pairs.
#pragma once

#include <mensura/iir.h>

#include "../internal/target.h"

namespace mensura::iir {

// Runs one sample in[i] of each channel i, from channel 0 on, two channels at a time, and stops at the first pair whose
// channels have to run one after the other.  Returns the number of channels that have run.  Outputs and registers have
// the bits that IIRFilter gives.  Neither array overlaps the filters, and out is in or does not overlap it.
using RunPairs = int(TIIRFilter *filters, int count, const double *in, double *out);
MENSURA_KERNEL(RunPairs, run_pairs);

}  // namespace mensura::iir
