// Runge-Kutta-Fehlberg 4(5) with a step that mostly shrinks.

#include <algorithm>
#include <cmath>
#include <utility>

#include "state.h"

using namespace mensura::ode;

namespace {

constexpr double kTooBig = 1e15;
constexpr double kTinyError = 1e-8;
constexpr double kNoFactor = 1e15;
constexpr int kMostSteps = 20000;       // accepted
constexpr int kMostRejections = 20000;  // in a row: such an attempt repeats itself

// One attempt over h.
struct Attempt {
    State k[6];  // h f of the stages
    State at;    // where the next one is taken
    State error;
    double largest_error;
};

// Fehlberg's table to 15 digits: when each stage is taken, and what the state of the next adds of the k so far.
constexpr double kTime[6] = {0.0, 0.25, 0.375, 0.923076923076923, 1.0, 0.5};
constexpr double kNext[5][5] = {{0.25},
                                {0.09375, 0.28125},
                                {0.87938097405553, -3.277196176604461, 3.320892125625854},
                                {2.032407407407407, -8.0, 7.173489278752436, -0.205896686159844},
                                {-0.296296296296296, 2.0, -1.381676413255361, 0.452972709551657, -0.275}};

// Takes stage s at y or, behind the first, at a.at, and puts the state of the next there.  False if that overflows.
template <Size s>
bool stage(Attempt &a, const System &f, double t, double h, const State &y) {
    if constexpr (s == 0)
        f(t, y, a.k[s]);
    else
        f(t + kTime[s] * h, a.at, a.k[s]);
    double size = 0.0;
    for (Size i = 0; i < f.n; ++i) {
        a.k[s][i] *= h;
        double next = y[i];
        for (Size j = 0; j <= s; ++j) next += kNext[s][j] * a.k[j][i];
        a.at[i] = next;
        size = larger(std::fabs(next), size);
    }
    return !(size > kTooBig);
}

// From y to y4.  False on overflow.
bool attempt(Attempt &a, const System &f, double t, double h, const State &y, State &y4) {
    if (!stage<0>(a, f, t, h, y) || !stage<1>(a, f, t, h, y) || !stage<2>(a, f, t, h, y) || !stage<3>(a, f, t, h, y) ||
        !stage<4>(a, f, t, h, y))
        return false;
    f(t + kTime[5] * h, a.at, a.k[5]);
    const auto &[k1, k2, k3, k4, k5, k6] = a.k;
    a.largest_error = 0.0;
    for (Size i = 0; i < f.n; ++i) {
        y4[i] = y[i] + 0.115740740740741 * k1[i] + 0.548927875243665 * k3[i] + 0.535331384015595 * k4[i] - 0.2 * k5[i];
        a.error[i] = 0.002777777777778 * k1[i] - 0.029941520467836 * k3[i] - 0.029199893673578 * k4[i] + 0.02 * k5[i] +
                     0.036363636363636 * (h * k6[i]);
        a.largest_error = larger(std::fabs(a.error[i]), a.largest_error);
    }
    return true;
}

// The running minimum of 0.84 (tol h / |error|)^(1/4) over the components and steps of a call.
class StepFactor {
  public:
    [[nodiscard]] double value() const { return s_; }

    void take(const Attempt &a, Size n, double tol, double h) {
        if (a.largest_error < kTinyError) return lower(0.0);
        for (Size i = 0; i < n; ++i) {
            const double error = std::fabs(a.error[i]);
            const double ratio = tol * h / error;
            if (error < kTinyError || ratio > enough_) continue;
            const double s = 0.84 * std::pow(ratio, 0.25);
            if (s < s_) lower(s);
        }
    }

  private:
    void lower(double s) {
        s_ = s;
        const double root = s / 0.84;
        enough_ = root * root * (root * root) * (1 + 1e-9);
    }

    double s_ = kNoFactor;
    double enough_ = HUGE_VAL;  // a ratio above this cannot lower s, whatever the rounding of pow
};

struct Span {
    double t0, t1;
};

// From state, where the last accepted state stays; `next` is exchanged with it.
Result integrate(const System &f, Span span, double h, double tol, State *&state, State *&next) {
    const double t1 = span.t1, t_end = t1 - std::fabs(t1) * 1e-05;
    const double h_min = h * 0.015625, h_max = h * 64.0;
    Attempt a;
    StepFactor factor;
    int steps = 0, rejections = 0;
    for (double t = span.t0; t < t1;) {
        if (t_end < t + h) h = t1 - t;
        if (!attempt(a, f, t, h, *state, *next)) return kOverflow;
        if (a.largest_error < tol || h < 2 * h_min) {
            std::swap(state, next);
            t = t_end < t + h ? t1 : t + h;
            ++steps;
            rejections = 0;
        } else {
            ++rejections;
        }
        factor.take(a, f.n, tol, h);
        if (factor.value() < 0.75 && !(h <= 2 * h_min)) h = h / 2;
        if (factor.value() > 1.5 && !(2 * h >= h_max)) h = 2 * h;
        if (steps == kMostSteps || rejections == kMostRejections) return kStepLimit;
    }
    return kDone;
}

}  // namespace

int rkf45(double t0, double t1, double divisions, double tol, OdeFunction function, const double *y0, int n,
          void *param, double *y) {
    if (t1 < t0) return report(kTimeError);
    if (n > static_cast<int>(kCapacity)) return kTimeError;
    if (n < 1) return kDone;
    State states[2], *state = &states[0], *next = &states[1];
    std::copy_n(y0, n, *state);
    const System f{function, param, static_cast<Size>(n)};
    const Result result = integrate(f, {t0, t1}, (t1 - t0) / divisions, tol, state, next);
    std::copy_n(*state, n, y);
    return report(result);
}
