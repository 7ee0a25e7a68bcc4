// rkf45 against the same steps by GSL, per attempt.

#include <gsl/gsl_odeiv2.h>
#include <mensura/ode.h>

#include <memory>
#include <valarray>
#include <vector>

#include "compare.h"

namespace {

using State = std::valarray<double>;

const State kStart = {1.0, 1.0, 3.0};
constexpr int kSize = 3, kCallsPerAttempt = 6;

int swing(double, const double *y, void *, double *dydt) {
    dydt[0] = y[1] * y[2];
    dydt[1] = y[2] - y[0];
    dydt[2] = -0.51 * y[0] * y[1];
    return 0;
}

int swing_for_gsl(double t, const double *y, double *dydt, void *param) { return swing(t, y, param, dydt); }

struct Task {
    double end, divisions, tolerance;

    State solve(OdeFunction f, void *param) const {
        State y(kSize);
        rkf45(0.0, end, divisions, tolerance, f, &kStart[0], kSize, param, &y[0]);
        return y;
    }
};

struct Attempt {
    double t, h;
};

// From the times of the calls: the first of an attempt is at t, the fifth at t + h.
std::vector<Attempt> attempts_of(const Task &task) {
    std::vector<double> times;
    task.solve(
        [](double t, const double *y, void *param, double *dydt) {
            static_cast<std::vector<double> *>(param)->push_back(t);
            return swing(t, y, nullptr, dydt);
        },
        &times);
    std::vector<Attempt> attempts;
    for (std::size_t i = 0; i < times.size(); i += kCallsPerAttempt)
        attempts.push_back({times[i], times[i + 4] - times[i]});
    return attempts;
}

void compare_with_gsl(benchmark::State &state, const Task &task) {
    const std::vector<Attempt> attempts = attempts_of(task);
    const std::unique_ptr<gsl_odeiv2_step, decltype(&gsl_odeiv2_step_free)> step(
        gsl_odeiv2_step_alloc(gsl_odeiv2_step_rkf45, kSize), gsl_odeiv2_step_free);
    const gsl_odeiv2_system system{swing_for_gsl, nullptr, kSize, nullptr};
    State ours, peer, errors(kSize);
    const auto run_gsl = [&](bool fourth_order) {
        peer = kStart;
        for (const auto &[t, h] : attempts) {
            gsl_odeiv2_step_apply(step.get(), t, h, &peer[0], &errors[0], nullptr, nullptr, &system);
            if (fourth_order) peer -= errors;
        }
    };
    bench::compare(
        state, static_cast<double>(attempts.size()), [&] { ours = task.solve(swing, nullptr); },
        [&] { run_gsl(false); });
    run_gsl(true);  // without this GSL continues with the solution of order 5
    state.counters["attempts"] = static_cast<double>(attempts.size());
    state.counters["difference"] = std::abs(ours - peer).max();
}

// Errors below 1e-8: the step shrinks to the smallest one.
void rkf45_quiet_against_gsl(benchmark::State &state) { compare_with_gsl(state, {0.001, 100.0, 1e-6}); }
MENSURA_COMPARE(rkf45_quiet_against_gsl, 1000);

// Errors above 1e-8, and a tolerance that keeps the step.
void rkf45_step_control_at_work_against_gsl(benchmark::State &state) { compare_with_gsl(state, {300.0, 3000.0, 1e-5}); }
MENSURA_COMPARE(rkf45_step_control_at_work_against_gsl, 1000);

}  // namespace

BENCHMARK_MAIN();
