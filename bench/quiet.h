// Whether this core is ours alone: a short piece of work of a known time, done before and after what is measured.
//
// Two virtual cores may be one real core.  When the other is busy, work that keeps the adders or the front end full
// takes up to twice as long, and work that waits for its own results hardly longer: ratios of the two would be wrong.
#pragma once

#include <time.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
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
        for (Lanes *sum : {&a, &b, &c, &d, &e, &f, &g, &h}) *sum += step;
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

// The full load in units of the chain, some 10 us of each, and what that usually is.  A neighbour slows the load, and not
// the chain; the clock, which steps by up to 16 % after work on wide vectors, changes both.
class Probe {
  public:
    static constexpr double kTolerance = 0.08;  // a busy neighbour costs the full load 30 % and more

    Probe() {
        for (int i = 0; i < 1000; ++i) now();
    }
    double now() {
        full_load(8000);  // until the clock has settled, which wide vectors of the work before have lowered
        const double load = seconds([] { full_load(10000); });
        recent_[count_] = load / seconds([] { chain(6000); });
        const double ratio = recent_[count_++];
        if (count_ == recent_.size()) settle();
        return ratio;
    }
    bool quiet(double ratio) const { return std::abs(ratio / usual_ - 1) <= kTolerance; }

  private:
    // The least of the medians of a hundred: one probe alone may find the chain disturbed.
    void settle() {
        std::ranges::nth_element(recent_, recent_.begin() + 50);
        usual_ = std::min(usual_, recent_[50]);
        count_ = 0;
    }

    std::array<double, 100> recent_{};
    std::size_t count_ = 0;
    double usual_ = std::numeric_limits<double>::infinity();
};

inline Probe &probe() {
    static Probe shared;
    return shared;
}

}  // namespace bench
