// Prints docs/ode.md: what the integrators cost and how exact they are, measured.

#include <mensura/ode.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace {

std::FILE *page;  // not stdout, where the integrators print their failures

// ---- Problems ----

struct Problem {
    const char *name;
    void (*f)(double t, const double *y, double *dydt);
    int n;
    double start[2], end[2];  // at t = 0 and t = 10
};

void oscillate(double, const double *y, double *dydt) {
    dydt[0] = y[1];
    dydt[1] = -y[0];
}

void van_der_pol(double, const double *y, double *dydt) {
    dydt[0] = y[1];
    dydt[1] = 5 * (1 - y[0] * y[0]) * y[1] - y[0];
}

// y = (2500 cos t + 50 sin t - 2500 exp(-50 t)) / 2501
void follow_cosine(double t, const double *y, double *dydt) { dydt[0] = -50 * (y[0] - std::cos(t)); }

void clock(double, const double *, double *dydt) { dydt[0] = 1; }

const Problem kOscillator{"oscillator", oscillate, 2, {1, 0}, {std::cos(10.0), -std::sin(10.0)}};
const Problem kDecay{
    "decay", follow_cosine, 1, {0, 0}, {(2500 * std::cos(10.0) + 50 * std::sin(10.0) - 2500 * std::exp(-500)) / 2501}};
const Problem kClock{"clock", clock, 1, {0, 0}, {10}};

// ---- Runs ----

struct Run {
    const Problem *problem;
    double y[2] = {problem->start[0], problem->start[1]};
    int result = 0;
    long calls = 0, rejected = 0;
    double begin = std::numeric_limits<double>::quiet_NaN();  // of the last attempt of rkf45

    [[nodiscard]] double error() const {
        return std::max(std::fabs(y[0] - problem->end[0]), std::fabs(y[1] - problem->end[1]));
    }
};

int counted(double t, const double *y, void *param, double *dydt) {
    auto &run = *static_cast<Run *>(param);
    if (run.calls++ % 6 == 0) {
        run.rejected += t == run.begin;  // an attempt that begins where the last one did
        run.begin = t;
    }
    run.problem->f(t, y, dydt);
    return 0;
}

Run adaptive(const Problem &problem, int pieces, double divisions, double tol, double t0 = 0, double t1 = 10) {
    Run run{&problem};
    const double dt = (t1 - t0) / pieces;
    for (int i = 0; i < pieces && run.result == 0; ++i)
        run.result = rkf45(t0 + i * dt, t0 + (i + 1) * dt, divisions, tol, counted, run.y, problem.n, &run, run.y);
    return run;
}

Run fixed(const Problem &problem, double rate, double t1 = 10) {
    Run run{&problem};
    run.result = rkf452(0, t1, rate, counted, run.y, problem.n, &run, run.y);
    return run;
}

// ---- The page ----

void print_attempts(const Problem &problem) {
    constexpr struct { int pieces, divisions; } kRows[] = {{1, 10}, {1, 100}, {1, 600}, {50, 1}, {200, 1}, {1000, 1}};
    for (const auto &[pieces, divisions] : kRows) {
        std::fprintf(page, "| %s | %d | %d |", problem.name, pieces, divisions);
        for (const double tol : {1e-3, 1e-6, 1e-8, 1e-10, 1e-12}) {
            const Run run = adaptive(problem, pieces, divisions, tol);
            if (run.result == 0) std::fprintf(page, " %ld (%ld) %.0e |", run.calls / 6, run.rejected, run.error());
            if (run.result != 0) std::fprintf(page, " %d |", run.result);
        }
        std::fputs("\n", page);
    }
}

void print_end(const char *what, const Problem &problem, double t0, double t1, double divisions, double tol) {
    const Run run = adaptive(problem, 1, divisions, tol, t0, t1);
    std::fprintf(page, "| %s | %s | %g .. %g | %g | %g | %d | %ld | %.6g |\n", what, problem.name, t0, t1, divisions,
                 tol, run.result, (run.calls + 5) / 6, run.begin);
}

void print_orders(const Problem (&problems)[3]) {
    for (int rate = 20; rate <= 320; rate *= 2) {
        std::fprintf(page, "| %d | %ld |", rate, fixed(kClock, rate).calls);
        for (const Problem &problem : problems) {
            const double error = fixed(problem, rate).error();
            std::fprintf(page, " %.0e | %.1f |", error, error / fixed(problem, 2 * rate).error());
        }
        std::fputs("\n", page);
    }
}

void print_clock(double t1, double rate) {
    const Run run = fixed(kClock, rate, t1);
    std::fprintf(page, "| %g | %g | %ld | %.4g |\n", t1, rate, run.calls / 4, run.y[0]);
}

const char *const kIntroduction = R"(# Integrators: what they cost, and how exact they are

`docs/ode_table.cpp` prints this page and measures its numbers.

## Which one

- **`rkf452`** when you know a step that is short enough everywhere: order 4, four calls of f a step.
- **`rkf45` in pieces** when the step has to follow the solution, or when you want to be told that it is too long. Each
  call begins anew with the step you give it, so that no earlier shrinking stays:

```c
/* From 0 to 10: 200 pieces with a step of 0.05, down to 0.05 / 32 where the error asks for it. */
for (int i = 0; i < 200; ++i)
    if (rkf45(i * 0.05, (i + 1) * 0.05, 1, 1e-6, f, y, n, param, y) < 0) break;
```

- **`rkf45` in one call** over a long time, if 32 steps a division are not too many: that is where it mostly ends.

## rkf45: divisions and tol

- With h = (t1 - t0) / divisions, all steps are h only if every error estimate is above 1e-8 and below 1.6 tol h. One
  outside halves the step after every attempt, down to h / 32: count on **32 divisions attempts**, six calls of f each.
- If the first estimates lie between 1e-8 and 0.1 tol h, the step doubles until one does not: cheap, but coarse.
- **divisions** decides the accuracy: choose h / 32 (in pieces: the piece) as the step a method of order 4 needs.
- **tol** decides which of the first, longer steps are taken again. Below 1e-8 that gains two or three digits at most,
  and none where h / 32 sets the error. Where h / 32 does not reach tol, -3 comes. In pieces tol tells in every step.

From t = 0 to 10: attempts (rejected among them) and the error at the end, or what a failing call returned. Oscillator:
y'' = -y from (1, 0). Van der Pol: y'' = 5 (1 - y^2) y' - y from (2, 0), against `rkf452` at a rate of 20000. Decay:
y' = -50 (y - cos t) from 0. The others are against closed forms.

| problem | calls | divisions | tol 1e-3 | 1e-6 | 1e-8 | 1e-10 | 1e-12 |
|---|---:|---:|---:|---:|---:|---:|---:|
)";

const char *const kFailures = R"(
When a call fails, with the attempts it made and the time at which the last one began:

| | problem | t | divisions | tol | returns | attempts | last at t |
|---|---|---|---:|---:|---:|---:|---:|
)";

const char *const kFixed = R"(
- **20000 steps** are too many for a call, and 625 divisions may shrink to that: keep below 620.
- **Too few divisions** for tol: the attempt at h / 32 repeats itself. Take more divisions or a larger tol.
- **Steps above 0.6** units of t may be rejected without being halved: their factor 0.84 (tol h / |error|)^(1/4) stays
  above 0.75. Take a smaller unit of t, or more divisions.
- **Large t:** the last 1e-5 |t1| are always one step. Count t from the start of a run, not from midnight.
- **-2** mostly means a first step so long that the stages run away, not a solution that grows.

## rkf452: rate

The error at t = 10, and by what a doubled rate divides it: 16 once the step is short enough.

| rate | calls of f | oscillator | factor | van der Pol | factor | decay | factor |
|---:|---:|---:|---:|---:|---:|---:|---:|
)";

const char *const kClocks = R"(
Decay at a rate of 10 fails with -2: rate times 2.78 must exceed 50, the rate of the decay.

Where it ends, by y' = 1:

| t1 | rate | steps | ends at |
|---:|---:|---:|---:|
)";

const char *const kRemedy = R"(
With a step that does not fit it ends up to one step early; below one step it takes two halves. Even a rate that fits
may lose a step to rounding, as the last two do. For k steps that end on t1, ask for half a step more:
`rkf452(t0, t1 + 0.5 * (t1 - t0) / k, k / (t1 - t0), f, y0, n, param, y)`. For t1 = 10 and k = 1 .. 1000 the plain call
ends early %d times, this one %d times.
)";

void print_page() {
    Problem stiff{"van der Pol", van_der_pol, 2, {2, 0}, {}};
    std::copy_n(fixed(stiff, 20000).y, 2, stiff.end);
    std::fputs(kIntroduction, page);
    for (const Problem &problem : {kOscillator, stiff, kDecay}) print_attempts(problem);
    std::fputs(kFailures, page);
    print_end("more than 20000 steps", kOscillator, 0, 10, 640, 1e-6);
    print_end("too few divisions", kDecay, 0, 10, 10, 1e-6);
    print_end("a step of 1", kOscillator, 0, 10, 10, 1e-3);
    print_end("near t = 0", kOscillator, 0, 1, 10, 1e-6);
    print_end("the same later", kOscillator, 86400, 86401, 10, 1e-6);
    print_end("a step of 10", stiff, 0, 10, 1, 1e-6);
    std::fputs(kFixed, page);
    print_orders({kOscillator, stiff, kDecay});
    std::fputs(kClocks, page);
    for (const double rate : {2.5, 0.35, 0.09, 91.0}) print_clock(10, rate);
    print_clock(0.3, 10);
    int plain = 0, longer = 0;
    for (int k = 1; k <= 1000; ++k) {
        plain += fixed(kClock, k / 10.0).calls != 4 * k;
        longer += fixed(kClock, k / 10.0, 10 + 5.0 / k).calls != 4 * k;
    }
    std::fprintf(page, kRemedy, plain, longer);
}

}  // namespace

int main() {
    page = fdopen(dup(STDOUT_FILENO), "w");
    if (page == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr) return 1;
    print_page();
    return std::fclose(page);
}
