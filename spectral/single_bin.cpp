// The magnitude of a signal at one frequency.

#include <mensura/spectral.h>

#include <cmath>

#include "../internal/constants.h"
#include "../internal/sincos.h"

namespace {

constexpr double kFloor = 1e-12;  // Goertzel's answer where its power is not positive

}  // namespace

double SingleFreqDFT(const double *x, int n, double f) {
    const auto [sin, cos] = mensura::sincos_of(mensura::kPi * f);
    double c = 1.0, s = 0.0;  // the phasor
    double re = 0.0, im = 0.0;
    for (int t = 0; t < n; ++t) {
        re += x[t] * c;
        im += x[t] * s;
        const double turned = c * cos + s * sin;
        s = s * cos - c * sin;
        c = turned;
    }
    return std::sqrt(re * re + im * im);
}

double Goertzel(const double *x, int n, double f) {
    if (n < 1) return kFloor;
    const double twice = 2.0 * std::cos(mensura::kPi * f);
    double s1 = 0.0, s2 = 0.0;  // one and two samples ago
    for (int t = 0; t < n; ++t) {
        const double s = x[t] + twice * s1 - s2;
        s2 = s1;
        s1 = s;
    }
    const double power = s1 * s1 + s2 * s2 - twice * s1 * s2;
    return power <= 0.0 ? kFloor : std::sqrt(power);
}
