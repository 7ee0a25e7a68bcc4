// Shared by both integrators.
#pragma once

#include <mensura/ode.h>

#include <cstddef>

namespace mensura::ode {

inline constexpr std::size_t kCapacity = 20;

using State = double[kCapacity];

// dy = f(t, y) of n components.
struct System {
    OdeFunction function;
    void *param;
    std::size_t n;

    void operator()(double t, const double *y, double *dy) const { function(t, y, param, dy); }
};

// The larger one; b if a is NaN.
inline double larger(double a, double b) { return a > b ? a : b; }

enum Result : int { kDone = 0, kTimeError = -1, kOverflow = -2, kStepLimit = -3 };

// Prints the message of a failure; returns the result.
int report(Result result);

}  // namespace mensura::ode
