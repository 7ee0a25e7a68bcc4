// The integrators in plain loops over vectors.
#pragma once

#include <climits>
#include <cmath>
#include <cstddef>
#include <functional>
#include <valarray>
#include <vector>

namespace reference {

using State = std::valarray<double>;
using Derivative = std::function<State(double t, const State &y)>;

// Fehlberg's stages as rkf45 has them: rows of times and factors of k1, k2, ...; then the next state and its error.
inline constexpr double kFehlberg[8][7] = {
    {0},
    {0.25, 0.25},
    {0.375, 0.09375, 0.28125},
    {0.923076923076923, 0.87938097405553, -3.277196176604461, 3.320892125625854},
    {1, 2.032407407407407, -8.0, 7.173489278752436, -0.205896686159844},
    {0.5, -0.296296296296296, 2.0, -1.381676413255361, 0.452972709551657, -0.275},
    {0, 0.115740740740741, 0, 0.548927875243665, 0.535331384015595, -0.2},
    {0, 0.002777777777778, 0, -0.029941520467836, -0.029199893673578, 0.02, 0.036363636363636}};

// The largest magnitude; NaN does not count.
inline double largest(const State &y) {
    double size = 0;
    for (const double value : y) size = std::fmax(size, std::fabs(value));
    return size;
}

// rkf45: moves y and returns the result code.
inline int rkf45(double t0, double t1, double divisions, double tolerance, const Derivative &f, State &y) {
    constexpr std::size_t kStages = 6, kNext = 6, kError = 7;
    double h = (t1 - t0) / divisions, scale = 1e15, t = t0;
    const double h_min = h * 0.015625, h_max = h * 64.0, t_end = t1 - std::fabs(t1) * 1e-05;
    std::vector<State> k(kStages, y), sum(8, y);
    for (int steps = 0, rejections = 0; t < t1;) {
        if (t_end < t + h) h = t1 - t;
        for (std::size_t j = 0; j < 8; ++j) {
            sum[j] = y;
            if (j == kError) sum[j] = 0.0;
            for (std::size_t m = 0; m < kStages; ++m)
                if (kFehlberg[j][m + 1] != 0) sum[j] += kFehlberg[j][m + 1] * k[m];
            if (j > 0 && j < kStages && largest(sum[j]) > 1e15) return -2;
            if (j < kStages) k[j] = h * f(j == 0 ? t : t + kFehlberg[j][0] * h, sum[j]);
        }
        const double error = largest(sum[kError]);
        const bool accepted = error < tolerance || h < 2 * h_min;
        if (accepted) {
            y = sum[kNext];
            t = t_end < t + h ? t1 : t + h;
            ++steps;
        }
        rejections = accepted ? 0 : rejections + 1;
        for (const double r : sum[kError])
            if (!(std::fabs(r) < 1e-08)) scale = std::fmin(scale, 0.84 * std::pow(tolerance * h / std::fabs(r), 0.25));
        if (error < 1e-08) scale = 0;
        if (scale < 0.75 && !(h <= 2 * h_min)) h = h / 2;
        if (scale > 1.5 && !(2 * h >= h_max)) h = 2 * h;
        if (steps == 20000 || rejections == 20000) return -3;
    }
    return t1 < t0 ? -1 : 0;
}

// One step of the classical formula of fourth order.
inline State runge_kutta_step(const Derivative &f, double t, const State &y, double h) {
    const State k1 = f(t, y), k2 = f(t + h / 2, y + h / 2 * k1), k3 = f(t + h / 2, y + h / 2 * k2);
    return y + h / 6.0 * (k1 + 2 * k2 + 2 * k3 + f(t + h, y + h * k3));
}

// rkf452: moves y and returns the result code.
inline int rkf452(double t0, double t1, double rate, const Derivative &f, State &y) {
    const double h = 1 / rate, steps = std::floor((t1 - t0) / h);
    if (t1 < t0 || !std::isfinite(steps) || steps > INT_MAX) return -1;
    const double used = steps < 1 ? (t1 - t0) * 0.5 : h;
    double t = t0;
    for (int left = steps < 1 ? 2 : static_cast<int>(steps); left > 0; --left, t += used) {
        y = runge_kutta_step(f, t, y, used);
        if (largest(y) > 1e30) return -2;
    }
    return 0;
}

}  // namespace reference
