// The transform of any length, for callers that must know whether it ran.
#pragma once

namespace mensura::spectral {

// DFT; false, with the data as they were, for an invalid direction or without memory.
[[nodiscard]] bool dft(double *re, double *im, int n, int dir);

}  // namespace mensura::spectral
