// The frequency response of a cascade.

#include "response_kernel.h"

#include <algorithm>
#include <cstddef>

#include "../internal/constants.h"
#include "../internal/sincos.h"

using namespace mensura::iir;

namespace {

// z^-1 = exp(-i w) on the grid.
void fill_delays(double *re, double *im, std::size_t points) {
    for (std::size_t i = 0; i < points; ++i) {
        const double w = static_cast<double>(i) * mensura::kPi / static_cast<double>(points);
        const auto [sin, cos] = mensura::sincos_of(w);
        re[i] = cos;
        im[i] = -sin;
    }
}

}  // namespace

void IIRFreqResponse(IIRCoeffs coeffs, int numSections, double *re, double *im, int numPoints) {
    const auto sections = static_cast<std::size_t>(std::clamp(numSections, 0, static_cast<int>(MAX_IIR_SECTIONS)));
    const auto points = static_cast<std::size_t>(std::max(numPoints, 0));
    fill_delays(re, im, points);
    respond(coeffs, sections, re, im, points);
}
