// Sine and cosine of one angle.
#pragma once

#include <cmath>

namespace mensura {

struct SinCos {
    double sin, cos;
};

// Compilers turn the two calls into one; libm gives the same bits either way.
inline SinCos sincos_of(double x) { return {std::sin(x), std::cos(x)}; }

}  // namespace mensura
