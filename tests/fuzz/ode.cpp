// Both integrators with any times, rates and tolerances, and a right-hand side that returns whatever the input says.
#include <mensura/ode.h>

#include "input.h"

using namespace fuzz;

struct Equation {
    Doubles derivatives;
    std::size_t n = 0, calls = 0;
};

constexpr std::size_t kMostCalls = 6000;  // then the state overflows: only 4e8 attempts end a call for certain

static int evaluate(double t, const double *y, void *param, double *dydt) {
    Equation &equation = *static_cast<Equation *>(param);
    const std::size_t call = equation.calls++;
    for (std::size_t i = 0; i < equation.n; ++i) {
        const double d = equation.derivatives[(call + i) % equation.derivatives.size()];
        dydt[i] = call >= kMostCalls ? HUGE_VAL : call % 2 == 0 ? d : d * y[i] + t;
    }
    return 0;
}

void fuzz::test(Input &input) {
    const bool adaptive = input.ConsumeBool();
    const int n = code(input, -1, 22), components = n >= 1 && n <= 20 ? n : 0;
    const double t0 = number(input), t1 = input.ConsumeBool() ? t0 : number(input), rate = number(input);
    const double tolerance = number(input), h = (t1 - t0) / rate, steps = rate * (t1 - t0);
    if (!adaptive && steps > 5000 && steps < 1e11) return;         // as many as the caller asks for
    if (adaptive && !(std::abs(h) > 0) && components > 3) return;  // 20000 attempts that get nowhere
    Doubles y0 = numbers(input, components), y(y0.size(), 77.0);
    Equation equation{numbers(input, 30), y0.size()};
    const int result = adaptive ? rkf45(t0, t1, rate, tolerance, evaluate, y0.data(), n, &equation, y.data())
                                : rkf452(t0, t1, rate, evaluate, y0.data(), n, &equation, y.data());
    check(result <= 0 && result >= (adaptive ? -3 : -2) && (n <= 20 || result == -1));
    if (result == -1) check(same_bits(y, Doubles(y.size(), 77.0)));
    if (adaptive && t0 == t1 && n <= 20) check(result == 0 && same_bits(y, y0));
}
