// The classical Runge-Kutta method of order 4 with fixed steps.

#include <algorithm>
#include <climits>
#include <cmath>

#include "state.h"

using namespace mensura::ode;

namespace {

constexpr double kTooBig = 1e30;

// y + c k
const double *advanced(const double *y, double c, const State &k, State &out, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) out[i] = y[i] + c * k[i];
    return out;
}

// One step; returns max |y| after it.
double step(const System &f, double t, double h, double *y) {
    State k1, k2, k3, k4, at;
    f(t, y, k1);
    f(t + h / 2, advanced(y, h / 2, k1, at, f.n), k2);
    f(t + h / 2, advanced(y, h / 2, k2, at, f.n), k3);
    f(t + h, advanced(y, h, k3, at, f.n), k4);
    double size = 0.0;
    for (std::size_t i = 0; i < f.n; ++i) {
        y[i] = y[i] + h / 6.0 * (k1[i] + 2 * k2[i] + 2 * k3[i] + k4[i]);
        size = larger(std::fabs(y[i]), size);
    }
    return size;
}

}  // namespace

int rkf452(double t0, double t1, double rate, OdeFunction function, const double *y0, int n, void *param, double *y) {
    double h = 1 / rate;
    double steps = std::floor((t1 - t0) / h);
    if (t1 < t0 || !std::isfinite(steps) || steps > INT_MAX) return report(kTimeError);
    if (n > static_cast<int>(kCapacity)) return kTimeError;
    if (n < 1) return kDone;
    if (steps < 1) {
        h = (t1 - t0) * 0.5;
        steps = 2;
    }
    const System f{function, param, static_cast<std::size_t>(n)};
    std::copy_n(y0, n, y);
    double t = t0;
    for (int i = 0; i < static_cast<int>(steps); ++i) {
        if (step(f, t, h, y) > kTooBig) return report(kOverflow);
        t += h;
    }
    return kDone;
}
