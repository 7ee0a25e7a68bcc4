// The design request that initTIIRFilter makes.
#pragma once

#include <mensura/iir.h>

namespace mensura::iir {

inline constexpr double kDefaultBandwidth = 0.1;  // of the Nyquist frequency
inline constexpr ProtoSpec kDefaultPrototype = {
    .Family = pfButterworth, .NumPoles = 6, .Ripple = 0.1, .StopBandDb = 60.0, .Gamma = 0.0};

constexpr IIRDesignSpec default_request(int pass_type, double norm_cutoff) {
    return {.PassType = pass_type,
            .NormCutoff = norm_cutoff,
            .NormBandwidth = kDefaultBandwidth,
            .GainDb = 0.0,
            .Proto = kDefaultPrototype};
}

}  // namespace mensura::iir
