// The pass types and their names.
#pragma once

#include <mensura/iir.h>

#include <array>
#include <cstddef>

namespace mensura::iir {

struct PassType {
    int code;          // IIRPassType
    const char *name;  // in tables and sentences
    const char *word;  // on a command line and in JSON
};

inline constexpr std::array<PassType, 5> kPassTypes = {{
    {ptLowPass, "low-pass", "lowpass"},
    {ptHighPass, "high-pass", "highpass"},
    {ptBandPass, "band-pass", "bandpass"},
    {ptNotch, "notch", "notch"},
    {ptAllPass, "all-pass", "allpass"},
}};
static_assert([] {
    for (std::size_t i = 0; i < kPassTypes.size(); ++i)
        if (kPassTypes[i].code != static_cast<int>(i)) return false;
    return true;
}());  // a code is the index of its row

// Around a centre, with a bandwidth: a prototype of n poles becomes a filter of 2 n.
constexpr bool is_band_type(int pass_type) { return pass_type == ptBandPass || pass_type == ptNotch; }

}  // namespace mensura::iir
