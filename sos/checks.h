// What the exported functions refuse before they write anything.
#pragma once

#include <mensura/sos.h>

#include <cmath>
#include <cstddef>

namespace mensura::sos {

inline constexpr std::ptrdiff_t kSectionLength = 6;  // b0 b1 b2 1 a1 a2

inline int check_sections(const double *sos, int sections) {
    if (!sos) return MENSURA_SOS_NULL;
    if (sections < 1) return MENSURA_SOS_COUNT;
    for (std::ptrdiff_t k = 0; k < sections; ++k)
        if (sos[k * kSectionLength + 3] != 1) return MENSURA_SOS_SECTION;
    return 0;
}

inline int check_rate(double rate) { return rate > 0 && std::isfinite(rate) ? 0 : MENSURA_SOS_RATE; }

}  // namespace mensura::sos
