// Runge-Kutta-Fehlberg 4(5) with a step that mostly shrinks.

#include <algorithm>
#include <cmath>
#include <utility>

#include "fehlberg.h"
#include "state.h"

using namespace mensura::ode;

namespace {

constexpr double kTooBig = 1e15;  // of a component of a stage: an overflow

// From one state over a step h.
struct Attempt {
    State k[kStages];  // h f of each stage
    State argument;    // y of the stage that comes next
    State error;
    double largest_error;
};

// Evaluates stage s, and prepares the argument of the next one.  False if that overflows.
template <std::size_t s>
bool stage(Attempt &a, const System &f, double t, double h, const State &y) {
    if constexpr (s == 0)
        f(t, y, a.k[s]);
    else
        f(t + kTime[s] * h, a.argument, a.k[s]);
    double size = 0.0;
    for (std::size_t i = 0; i < f.n; ++i) {
        a.k[s][i] *= h;
        double next = y[i];
        for (std::size_t j = 0; j <= s; ++j) next += kStage[s + 1][j] * a.k[j][i];
        a.argument[i] = next;
        size = larger(std::fabs(next), size);
    }
    return !(size > kTooBig);
}

// From y to y4, the solution of order 4.  False on overflow.
bool attempt(Attempt &a, const System &f, double t, double h, const State &y, State &y4) {
    if (!stage<0>(a, f, t, h, y) || !stage<1>(a, f, t, h, y) || !stage<2>(a, f, t, h, y) || !stage<3>(a, f, t, h, y) ||
        !stage<4>(a, f, t, h, y))
        return false;
    f(t + kTime[5] * h, a.argument, a.k[5]);
    const auto &[k1, k2, k3, k4, k5, k6] = a.k;
    constexpr const PerStage &b = kSolution, &e = kError;  // 0 for k2
    a.largest_error = 0.0;
    for (std::size_t i = 0; i < f.n; ++i) {
        y4[i] = y[i] + b[0] * k1[i] + b[2] * k3[i] + b[3] * k4[i] + b[4] * k5[i];
        a.error[i] = e[0] * k1[i] + e[2] * k3[i] + e[3] * k4[i] + e[4] * k5[i] + e[5] * (h * k6[i]);
        a.largest_error = larger(std::fabs(a.error[i]), a.largest_error);
    }
    return true;
}

// The running minimum of 0.84 (tol h / |error|)^(1/4) over the components and steps of a call.  |error| / h grows with
// h^4, so that a step longer by the fourth root would have an error of tol per unit of time; 0.84 is a safety factor.
class StepFactor {
  public:
    [[nodiscard]] double value() const { return s_; }

    void take(const Attempt &a, std::size_t n, double tol, double h) {
        if (a.largest_error < kTinyError) return lower(0.0);
        for (std::size_t i = 0; i < n; ++i) {
            const double error = std::fabs(a.error[i]);
            const double ratio = tol * h / error;
            if (error < kTinyError || ratio > enough_) continue;
            const double s = kSafety * std::pow(ratio, 0.25);
            if (s < s_) lower(s);
        }
    }

  private:
    static constexpr double kSafety = 0.84;
    static constexpr double kTinyError = 1e-8;  // an error below this counts as none
    static constexpr double kNoFactor = 1e15;   // before the first error
    static constexpr double kMargin = 1e-9;     // far above the relative error of pow

    void lower(double s) {
        s_ = s;
        const double root = s / kSafety;
        enough_ = root * root * (root * root) * (1 + kMargin);
    }

    double s_ = kNoFactor;
    double enough_ = HUGE_VAL;  // a ratio above this cannot lower s, so that pow need not be called
};

constexpr double kHalveBelow = 0.75, kDoubleAbove = 1.5;  // factors
constexpr double kShortest = 0.015625, kLongest = 64.0;   // of the first step: all but the last step stay within
constexpr double kEndTolerance = 1e-05;                   // of |t1|: a step that ends this near to t1 ends at it
constexpr int kMostSteps = 20000;                         // accepted
constexpr int kMostRejections = 20000;                    // in a row: the attempt would be rejected for ever

struct Span {
    double t0, t1;
};

// `state` is the last accepted one, at first the initial one; an accepted `next` is exchanged with it.
Result integrate(const System &f, Span span, double h, double tol, State *&state, State *&next) {
    const double t1 = span.t1, t_end = t1 - std::fabs(t1) * kEndTolerance;
    const double h_min = h * kShortest, h_max = h * kLongest;
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
        if (factor.value() < kHalveBelow && !(h <= 2 * h_min)) h = h / 2;
        if (factor.value() > kDoubleAbove && !(2 * h >= h_max)) h = 2 * h;
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
    const System f{function, param, static_cast<std::size_t>(n)};
    const Result result = integrate(f, {t0, t1}, (t1 - t0) / divisions, tol, state, next);
    std::copy_n(*state, n, y);
    return report(result);
}
