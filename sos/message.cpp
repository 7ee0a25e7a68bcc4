// What the codes mean, in the order of their numbers.
#include <mensura/sos.h>

#include <cstddef>
#include <iterator>

#include "limits.h"

namespace {

constexpr const char *kMessages[] = {
    "no error",
    "a pointer is null",
    "the size of a record is not one that this library knows (its sizeof), or its reserved field is not 0",
    "the pass type is not an IIRPassType code, or not one that fits here",
    "the family is not a ProtoFamily code",
    ("the number of poles is below 1 or above the largest order of the family: 12 for Gaussian and Bessel, 15 for "
     "inverse Chebyshev and elliptic, 20 for the others"),
    "passes is neither 1 nor 2",
    "the rate is not above 0, or not finite",
    "a frequency is out of range: an edge lies above 0 and below half the rate, other frequencies from 0 to half of it",
    "the edges are equal or in the wrong order (the lower one comes first), or band is not a mensura_sos_band code",
    ("a level is out of range: it lies below 0 and above -200 dB, with a stop band not below minus its attenuation; a "
     "loss is above 0 and below the attenuation, which is at most 200 dB; a level to find is finite; a tolerance is "
     "above 0"),
    "the ripple lies outside 0.0001 .. 10 dB",
    "the attenuation of the stop band lies outside 10 .. 200 dB, or not above the ripple",
    "gamma lies outside -1 .. 1",
    "the gain lies outside -200 .. 200 dB",
    "the array is too small for the result",
    "a count is negative or too large, or there is no section or no channel",
    "the fourth number of a section is not 1",
    "no order of the family meets the requirement",
    "sections of doubles cannot hold this filter: its edges are too near 0, half the rate or each other",
    "a constant input leads to no steady state: a pole lies at z = 1",
    "the kind of ends is not a mensura_sos_ends code, or the extension is not shorter than the record",
    "there is no memory for the work array",
    "the filter is unstable: a pole lies on or outside the unit circle",
    "the step response has not settled within the samples allowed",
};
static_assert(mensura::iir::kFamilies[pfGaussian].max_poles == 12 &&
              mensura::iir::kFamilies[pfBessel].max_poles == 12 &&
              mensura::iir::kFamilies[pfInverseChebyshev].max_poles == 15 &&
              mensura::iir::kFamilies[pfElliptic].max_poles == 15);
static_assert(std::size(kMessages) == 1 - MENSURA_SOS_UNSETTLED);

}  // namespace

const char *mensura_sos_message(int code) {
    if (code >= 0) return kMessages[0];
    if (code < MENSURA_SOS_UNSETTLED) return "an unknown code";
    return kMessages[static_cast<std::size_t>(-code)];
}
