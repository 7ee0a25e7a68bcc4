// What may be asked for.
#pragma once

#include <mensura/sos.h>

#include "../iir/pass_types.h"
#include "limits.h"

namespace mensura::sos {

// Whether a frequency lies above 0 and below half the rate; false for NaN.
constexpr bool is_between_zero_and_nyquist(double frequency, double rate) {
    return frequency > 0 && frequency < 0.5 * rate;
}

// Both edges are given; otherwise the centre and the width, or a single edge.
constexpr bool has_two_edges(const mensura_sos_request &r) {
    return iir::is_band_type(r.pass_type) && r.band == MENSURA_SOS_TWO_EDGES;
}

// 0, or the code of the first field that is refused, in the order of the record.
int checked(const mensura_sos_request *request);

}  // namespace mensura::sos
