// Whether this core is ours alone: a short piece of work of a known time, done before and after what is measured.
//
// Two virtual cores may be one real core.  When the other is busy, work that keeps the adders or the front end full
// takes up to twice as long, and work that waits for its own results hardly longer: ratios of the two would be wrong.
#pragma once

#include <time.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace bench {

// Of this thread on its core: what others had of the core in turn does not count.
inline double seconds_so_far() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

template <typename F>
double seconds(F &&f) {
    const double start = seconds_so_far();
    f();
    return seconds_so_far() - start;
}

// A turn takes four cycles: eight vector sums that do not wait for each other fill two adders, and with eight empty
// instructions 4.5 instructions start in a cycle, where a busy neighbour leaves 3 of 6.
inline void full_load(int turns) {
    using Lanes __attribute__((vector_size(16))) = double;
    Lanes a{0}, b{1}, c{2}, d{3}, e{4}, f{5}, g{6}, h{7};
    const Lanes step{0.5, 0.5};
    for (int turn = 0; turn < turns; ++turn) {
        a += step, b += step, c += step, d += step;
        e += step, f += step, g += step, h += step;
        asm volatile("nop\n nop\n nop\n nop\n nop\n nop\n nop\n nop");
    }
    [[maybe_unused]] volatile double kept = (a + b + c + d + e + f + g + h)[0];
}

// Each step waits for the one before.
inline void chain(int steps) {
    double x = 1;
    for (int step = 0; step < steps; ++step) x = x * 0.999 + 0.5;
    [[maybe_unused]] volatile double kept = x;
}

// Both, some 10 us each, and the pair that took least in this program.  Their ratio tells a neighbour from the clock,
// which steps by up to 16 % after work on wide vectors.
class Probe {
  public:
    struct Times {
        double full, chain;
    };
    static constexpr double kTolerance = 0.08;  // a busy neighbour costs the full load 30 % and more

    Probe() {
        for (int i = 0; i < 500; ++i) now();
    }
    Times now() {
        full_load(8000);  // until the clock has settled, which wide vectors of the work before have lowered
        const Times t{seconds([] { full_load(10000); }), seconds([] { bench::chain(6000); })};
        if (t.full + t.chain < best_.full + best_.chain) best_ = t;
        return t;
    }
    bool quiet(const Times &t) const { return std::abs(t.full / t.chain * best_.chain / best_.full - 1) <= kTolerance; }

  private:
    Times best_{std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
};

inline Probe &probe() {
    static Probe shared;
    return shared;
}

}  // namespace bench
