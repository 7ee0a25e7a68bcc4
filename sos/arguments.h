// What the functions of the interface check of their arguments.
#pragma once

#include <mensura/sos.h>

#include <cmath>
#include <cstddef>

namespace mensura::sos {

// Numbers of a section, and of its state.
inline constexpr std::size_t kNumbers = 6, kRegisters = 4;

inline const double *end_of(const double *sos, int sections) {
    return sos + static_cast<std::size_t>(sections) * kNumbers;
}

// 0, or the code that refuses these sections.
inline int check_sections(const double *sos, int sections) {
    if (sos == nullptr) return MENSURA_SOS_NULL;
    if (sections < 1) return MENSURA_SOS_COUNT;
    for (std::size_t k = 0; k < static_cast<std::size_t>(sections); ++k)
        if (sos[k * kNumbers + 3] != 1) return MENSURA_SOS_SECTION;
    return 0;
}

// 0, or the code that refuses an array of n values.
inline int check_values(const void *values, std::ptrdiff_t n) {
    if (n < 0) return MENSURA_SOS_COUNT;
    return values == nullptr && n > 0 ? MENSURA_SOS_NULL : 0;
}

inline int check_rate(double rate) { return rate > 0 && std::isfinite(rate) ? 0 : MENSURA_SOS_RATE; }

}  // namespace mensura::sos
