// Sections side by side.  A section waits for its own last output, so sections that run one after the other leave the
// processor idle.  Here a group of sections, in one vector or two, runs in one step, each section on an earlier sample
// than the section that feeds it:
//
//     section 0: sample t,  section 1: sample t - kLag,  section 2: sample t - 2 kLag,  ...
//
// Each still meets its own samples in order.  At the start of a record they begin one after the other, and at its end
// they finish one after the other; what a lane does before and after that is thrown away.

#include "pipeline_kernel.h"

#include <cstdint>

#include "../internal/lanes.h"
#include "../internal/target.h"
#include "direct_form.h"

namespace mensura::iir::MENSURA_TARGET {
namespace {

struct Kind {
    bool scaled;      // some a0 is not 1
    bool keeps_peak;  // of all feed-forward sums and outputs
};

// Samples between neighbouring sections: an output has the time of three steps to become the next section's input.
inline constexpr std::size_t kLag = 3;

// Steps from a sample's input to its output in a group.
constexpr std::size_t lead_of(std::size_t sections) { return kLag * (sections - 1); }

// As long a vector as the processor has: g++ 12 keeps longer ones in memory, from step to step.  moved_up moves it by a
// lane; the last lane of the vector below comes in.
#ifdef __AVX__
using Vector = Lanes;
template <typename Value>
LANES_INLINE Vector each_lane(Value value) {
    return Vector{value(0), value(1), value(2), value(3)};
}
LANES_INLINE Vector moved_up(Vector below, Vector v) { return __builtin_shufflevector(below, v, 3, 4, 5, 6); }
#else
using Vector = Pair;
template <typename Value>
LANES_INLINE Vector each_lane(Value value) {
    return Vector{value(0), value(1)};
}
LANES_INLINE Vector moved_up(Vector below, Vector v) { return __builtin_shufflevector(below, v, 1, 2); }
#endif
inline constexpr std::size_t kWidth = sizeof(Vector) / sizeof(double);

// Sections of a group.  A second vector fits into the time that the first one waits for its last outputs.
inline constexpr std::size_t kMostSections = 2 * kWidth;

LANES_INLINE Vector same_in_all(double x) {
    return each_lane([x](std::size_t) LANES_LAMBDA { return x; });
}

// Lane by lane, `a` where the condition holds, else `b`.
using Condition = decltype(Vector{} == Vector{});
LANES_INLINE Vector chosen(Condition condition, Vector a, Vector b) {
    return reinterpret_cast<Vector>((condition & reinterpret_cast<Condition>(a)) |
                                    (~condition & reinterpret_cast<Condition>(b)));
}

// Neighbouring sections, a lane each.
template <Kind kind>
struct SideBySide {
    Vector a0, a1, a2, b0, b1, b2;
    Vector x1{}, x2{}, y1{}, y2{}, y3{};  // inputs and outputs one, two and three steps ago
    Vector peak{};

    // Sections first .. end - 1, as far as there are lanes.
    LANES_INLINE void read(const Cascade &c, std::size_t first, std::size_t end) {
        const auto gathered = [&c, first, end](const double *numbers) LANES_LAMBDA {
            return each_lane([&](std::size_t i) LANES_LAMBDA {
                const std::size_t k = first + i;
                return k < end ? numbers[static_cast<std::ptrdiff_t>(k) * c.coefficient_distance] : 0.0;
            });
        };
        if constexpr (kind.scaled) a0 = gathered(c.a0);
        a1 = gathered(c.a1);
        a2 = gathered(c.a2);
        b0 = gathered(c.b0);
        b1 = gathered(c.b1);
        b2 = gathered(c.b2);
    }

    // Section k enters lane i, if there is one: what the lane has done before does not count.
    LANES_INLINE void start(const Cascade &c, std::size_t k, std::ptrdiff_t i) {
        const Vector numbers = each_lane([](std::size_t lane) LANES_LAMBDA { return static_cast<double>(lane); });
        const Condition is_lane = numbers == same_in_all(static_cast<double>(i));
        const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(k) * c.register_distance;
        const auto put = [is_lane](double x, Vector &v) LANES_LAMBDA { v = chosen(is_lane, same_in_all(x), v); };
        put(c.x1[at], x1);
        put(c.x2[at], x2);
        put(c.y1[at], y1);
        put(c.y2[at], y2);
        put(0.0, peak);
    }

    LANES_INLINE void step(Vector u) {
        const Vector b0_u = b0 * u, b1_x1 = b1 * x1, b2_x2 = b2 * x2;
        const Vector s = fed_forward(b0_u, b1_x1, b2_x2);
        Vector a0_s = s;
        if constexpr (kind.scaled) a0_s *= a0;
        const Vector a1_y1 = a1 * y1, a2_y2 = a2 * y2;
        const Vector y = fed_back(a0_s, a1_y1, a2_y2);
        x2 = x1;
        x1 = u;
        y3 = y2;
        y2 = y1;
        y1 = y;
        // Where s is NaN, y is NaN, too.
        if constexpr (kind.keeps_peak) peak = larger(larger(magnitude(y), magnitude(s)), peak);
    }
};

// Up to kWidth neighbouring sections in one vector, or more in two.
template <std::size_t vectors, Kind kind>
struct Group {
    const Cascade &c;
    std::size_t first, count;
    SideBySide<kind> head, tail;

    LANES_INLINE Group(const Cascade &cascade, std::size_t from, std::size_t n) : c(cascade), first(from), count(n) {
        head.read(c, first, first + count);
        if constexpr (vectors == 2) tail.read(c, first + kWidth, first + count);
    }

    // Section i of the group enters its lane.
    LANES_INLINE void start(std::size_t i) {
        head.start(c, first + i, static_cast<std::ptrdiff_t>(i));
        if constexpr (vectors == 2)
            tail.start(c, first + i, static_cast<std::ptrdiff_t>(i) - static_cast<std::ptrdiff_t>(kWidth));
    }

    // Section i leaves its lane; returns its peak.
    LANES_INLINE double finish(std::size_t i) const {
        const auto lane = [i](Vector in_head, Vector in_tail) LANES_LAMBDA {
            double values[vectors * kWidth];
            store(values, in_head);
            if constexpr (vectors == 2) store(values + kWidth, in_tail);
            return values[i];
        };
        const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(first + i) * c.register_distance;
        c.x1[at] = lane(head.x1, tail.x1);
        c.x2[at] = lane(head.x2, tail.x2);
        c.y1[at] = lane(head.y1, tail.y1);
        c.y2[at] = lane(head.y2, tail.y2);
        return lane(head.peak, tail.peak);
    }

    // One step with the input of the first section; returns the output of the last.  The tail goes first, while the
    // head has its earlier outputs.
    LANES_INLINE double step(double input) {
        if constexpr (vectors == 2) tail.step(moved_up(head.y3, tail.y3));
        head.step(moved_up(same_in_all(input), head.y3));
        const Vector y = vectors == 2 ? tail.y1 : head.y1;
        return y[(count - 1) % kWidth];
    }
};

// Samples a stride apart, one after the other.
template <typename Double>
struct Samples {
    Double *next;
    std::ptrdiff_t stride;

    LANES_INLINE Double &take() {
        Double &sample = *next;
        next += stride;
        return sample;
    }
};

// Sections first .. first + count - 1 over n samples, n >= lead_of(count); returns their peak.  It takes no lanes;
// inlined, the groups would share a frame of many KB.
template <std::size_t vectors, Kind kind>
[[gnu::noinline]] double run_group(const Cascade &c, std::size_t first, std::size_t count, Samples<const double> in,
                                   Samples<double> out, std::size_t n) {
    Group<vectors, kind> group(c, first, count);
    std::size_t t = 0;
    for (std::size_t i = 0; i < count; ++i) {
        for (; t < i * kLag; ++t) group.step(in.take());  // too early for an output
        group.start(i);
    }
    for (; t < n; ++t) {
        const double x = in.take();
        out.take() = group.step(x);
    }
    double peak = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
        for (; t < n + i * kLag; ++t) out.take() = group.step(0.0);
        const double of_section = group.finish(i);
        if (of_section > peak) peak = of_section;
    }
    return peak;
}

// All sections over n samples, as many at a time as the samples can fill; returns the peak.
template <Kind kind>
double run_groups(const Cascade &c, Samples<const double> in, Samples<double> out, std::size_t n) {
    const std::size_t most = n >= lead_of(kMostSections) ? kMostSections : n >= lead_of(kWidth) ? kWidth : 1;
    double peak = 0.0;
    for (std::size_t first = 0; first < c.count; first += most) {
        const std::size_t left = c.count - first, count = left < most ? left : most;
        const double of_group = count > kWidth ? run_group<2, kind>(c, first, count, in, out, n)
                                               : run_group<1, kind>(c, first, count, in, out, n);
        if (of_group > peak) peak = of_group;
        in = {out.next, out.stride};
    }
    return peak;
}

// The same block by block where there are several groups.
template <Kind kind>
double run_blocks(const Cascade &c, Samples<const double> in, Samples<double> out, std::size_t n) {
    std::size_t block = c.count <= kMostSections ? n : kBlockSize;
    double peak = 0.0;
    for (; n > 0; n -= block) {
        if (n < block) block = n;
        const double of_block = run_groups<kind>(c, in, out, block);
        if (of_block > peak) peak = of_block;
        in.next += static_cast<std::ptrdiff_t>(block) * in.stride;
        out.next += static_cast<std::ptrdiff_t>(block) * out.stride;
    }
    return peak;
}

// A factor of exactly 1 changes no sum.
bool is_unscaled(const Cascade &c) {
    if (c.a0 == nullptr) return true;
    for (std::size_t k = 0; k < c.count; ++k)
        if (!is_one(c.a0[static_cast<std::ptrdiff_t>(k) * c.coefficient_distance])) return false;
    return true;
}

}  // namespace

void run_samples(const Cascade &cascade, const double *in, std::ptrdiff_t in_stride, double *out,
                 std::ptrdiff_t out_stride, std::size_t n) {
    if (is_unscaled(cascade))
        run_blocks<Kind{.scaled = false, .keeps_peak = false}>(cascade, {in, in_stride}, {out, out_stride}, n);
    else  // which is rare: the code of run_and_keep_peak serves, too
        run_blocks<Kind{.scaled = true, .keeps_peak = true}>(cascade, {in, in_stride}, {out, out_stride}, n);
}

double run_and_keep_peak(const Cascade &cascade, const double *in, double *out, std::size_t n) {
    if (is_unscaled(cascade))
        return run_blocks<Kind{.scaled = false, .keeps_peak = true}>(cascade, {in, 1}, {out, 1}, n);
    return run_blocks<Kind{.scaled = true, .keeps_peak = true}>(cascade, {in, 1}, {out, 1}, n);
}

}  // namespace mensura::iir::MENSURA_TARGET
