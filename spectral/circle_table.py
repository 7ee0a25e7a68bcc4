#!/usr/bin/env python3
"""Makes circle_table.h: sines and cosines of the first eighth of the circle, as the C library has them.

    spectral/circle_table.py > spectral/circle_table.h       with glibc 2.36 on x86-64 with FMA

Another library, or a processor without FMA, may give another last bit here and there, and FFT has to keep its bits.
"""

import math

POINTS = 16384
STEP = 6.283185307179586 / POINTS

print(f"""\
// The first eighth of a circle of {POINTS} points, made by circle_table.py: cosine and sine of the double nearest to i
// times the double nearest to 2 pi / {POINTS}, as computed by glibc 2.36 on x86-64 with FMA.  They are within an ulp of the
// correctly rounded values at 2 pi i / {POINTS}.
#pragma once

#include <cstddef>

namespace mensura::spectral {{

struct CosSin {{
    double cos, sin;
}};

inline constexpr std::size_t kCirclePoints = {POINTS};

// clang-format off
inline constexpr CosSin kCircle[kCirclePoints / 8 + 1] = {{""")
entries = [f"{{{math.cos(i * STEP).hex()}, {math.sin(i * STEP).hex()}}}" for i in range(1, POINTS // 8)]
entries = ["{1, 0}", *entries, "{0x1.6a09e667f3bcdp-1, 0x1.6a09e667f3bcdp-1}"]  # the square root of 1/2 at the eighth
for i in range(0, len(entries), 2):
    print(f"    {', '.join(entries[i:i + 2])},")
print("""\
};
// clang-format on

}  // namespace mensura::spectral""")
