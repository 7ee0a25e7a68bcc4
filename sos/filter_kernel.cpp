#include "filter_kernel.h"

#include "../iir/direct_form.h"
#include "../iir/pipeline_kernel.h"
#include "../internal/lanes.h"
#include "../internal/target.h"
#include "arguments.h"

namespace mensura::sos::MENSURA_TARGET {
namespace {

using iir::fed_back, iir::fed_forward;

// ---- One signal ----------------------------------------------------------------------------------------------------

iir::Cascade cascade_at(const double *sos, std::size_t count, double *state) {
    return {count,    nullptr, sos + 4,   sos + 5,   sos,       sos + 1,   sos + 2,
            kNumbers, state,   state + 1, state + 2, state + 3, kRegisters};
}

// One section over all samples.
LANES_INLINE void run_section(const double *section, double *registers, const Signal &s) {
    const double b0 = section[0], b1 = section[1], b2 = section[2], a1 = section[4], a2 = section[5];
    double x1 = registers[0], x2 = registers[1], y1 = registers[2], y2 = registers[3];
    for (std::ptrdiff_t i = 0; i < s.n; ++i) {
        const double u = s.x[i * s.x_stride];
        const double b0_u = b0 * u, b1_x1 = b1 * x1, b2_x2 = b2 * x2, a1_y1 = a1 * y1, a2_y2 = a2 * y2;
        const double y = fed_back(fed_forward(b0_u, b1_x1, b2_x2), a1_y1, a2_y2);
        x2 = x1;
        x1 = u;
        y2 = y1;
        y1 = y;
        s.y[i * s.y_stride] = y;
    }
    registers[0] = x1;
    registers[1] = x2;
    registers[2] = y1;
    registers[3] = y2;
}

}  // namespace

void run_sections(const double *sos, std::size_t sections, double *state, const Signal &signal) {
    constexpr std::ptrdiff_t kFew = 16;  // samples that are through before a group of sections would be filled
    Signal s = signal;
    if (s.n > kFew) {
        iir::MENSURA_TARGET::run_samples(cascade_at(sos, sections, state), s.x, s.x_stride, s.y, s.y_stride,
                                         static_cast<std::size_t>(s.n));
        return;
    }
    for (std::size_t k = 0; k < sections; ++k) {
        run_section(sos + kNumbers * k, state + kRegisters * k, s);
        s.x = s.y;
        s.x_stride = s.y_stride;
    }
}

// ---- Four channels side by side ------------------------------------------------------------------------------------

namespace {

// Rows that run through all sections before the next ones do: where a row is four neighbouring doubles, and where rows
// are gathered on the stack first.
constexpr std::ptrdiff_t kLongBlock = 256, kShortBlock = 64;

constexpr auto kWidth = static_cast<std::ptrdiff_t>(kLanes);

// Whether transposing four samples of four channels is faster than copying them one by one.  g++ 12 does it in memory
// where lanes are longer than a register.
#ifdef __AVX__
constexpr bool kTurningPays = true;
#else
constexpr bool kTurningPays = false;
#endif

// A row holds a sample of each of the four channels.
struct Rows {
    const double *in;
    std::ptrdiff_t in_stride;
    double *out;
    std::ptrdiff_t out_stride;
    std::ptrdiff_t n;
};

// The states of up to four channels, `distance` doubles apart.
struct States {
    double *first;
    std::ptrdiff_t distance, channels;

    // The registers x1, x2, y1, y2 of a section.
    LANES_INLINE void load(std::size_t section, Lanes (&registers)[kRegisters]) const {
        const double *p = first + kRegisters * section;
        for (std::ptrdiff_t i = 0; i < kWidth; ++i, p += distance)
            registers[i] = i < channels ? mensura::load(p) : Lanes{};
        transpose(registers);
    }
    LANES_INLINE void store(std::size_t section, Lanes (&registers)[kRegisters]) const {
        double *p = first + kRegisters * section;
        transpose(registers);
        for (std::ptrdiff_t i = 0; i < channels; ++i, p += distance) mensura::store(p, registers[i]);
    }
};

LANES_INLINE bool same_bits(Lanes a, Lanes b) {
    const LaneBits differing = reinterpret_cast<LaneBits>(a) ^ reinterpret_cast<LaneBits>(b);
    return (differing[0] | differing[1] | differing[2] | differing[3]) == 0;
}

// Neighbouring sections.  What one puts out is what the next one takes in, so each signal's past is kept once: signal k
// is the input of section k, signal k + 1 its output.
template <std::size_t count>
struct Neighbours {
    Lanes b0[count], b1[count], b2[count], a1[count], a2[count];
    Lanes last[count + 1], before[count + 1];  // one and two samples ago
    bool agree = true;                         // whether the states say the same of each signal's past

    LANES_INLINE Neighbours(const double *sos, const States &states, std::size_t first) {
        for (std::size_t k = 0; k < count; ++k) {
            const double *section = sos + kNumbers * (first + k);
            b0[k] = all(section[0]);
            b1[k] = all(section[1]);
            b2[k] = all(section[2]);
            a1[k] = all(section[4]);
            a2[k] = all(section[5]);
            Lanes registers[kRegisters];
            states.load(first + k, registers);
            if (k > 0) agree = agree && same_bits(last[k], registers[0]) && same_bits(before[k], registers[1]);
            last[k] = registers[0];
            before[k] = registers[1];
            last[k + 1] = registers[2];
            before[k + 1] = registers[3];
        }
    }

    LANES_INLINE void store(const States &states, std::size_t first) const {
        for (std::size_t k = 0; k < count; ++k) {
            Lanes registers[kRegisters] = {last[k], before[k], last[k + 1], before[k + 1]};
            states.store(first + k, registers);
        }
    }

    LANES_INLINE Lanes run(Lanes u) {
        for (std::size_t k = 0; k < count; ++k) {
            const Lanes b0_u = b0[k] * u, b1_x1 = b1[k] * last[k], b2_x2 = b2[k] * before[k];
            const Lanes a1_y1 = a1[k] * last[k + 1], a2_y2 = a2[k] * before[k + 1];
            before[k] = last[k];
            last[k] = u;
            u = fed_back(fed_forward(b0_u, b1_x1, b2_x2), a1_y1, a2_y2);
        }
        before[count] = last[count];
        last[count] = u;
        return u;
    }
};

// Runs sections first .. first + count - 1; if their states disagree, returns false and has done nothing.  It takes no
// lanes; inlined, all of these would share a frame of many KB.
template <std::size_t count>
[[gnu::noinline]] bool run_neighbours(const double *sos, const States &states, std::size_t first, const Rows &rows) {
    Neighbours<count> sections(sos, states, first);
    if (!sections.agree) return false;
    const double *in = rows.in;
    double *out = rows.out;
    const auto run_row = [&]() LANES_LAMBDA {
        store(out, sections.run(load(in)));
        in += rows.in_stride;
        out += rows.out_stride;
    };
    constexpr std::ptrdiff_t kAtOnce = 6;  // an even number, so that `last` and `before` change places without a copy
    std::ptrdiff_t left = rows.n;
    for (; left >= kAtOnce; left -= kAtOnce)
        for (std::ptrdiff_t j = 0; j < kAtOnce; ++j) run_row();
    for (; left > 0; --left) run_row();
    sections.store(states, first);
    return true;
}

// Sections run in groups of up to four, as even as can be.  After two samples all states agree.
LANES_INLINE void run_rows(const double *sos, std::size_t sections, const States &states, Rows rows) {
    for (std::size_t first = 0; first < sections;) {
        const std::size_t left = sections - first, groups = (left + 3) / 4;
        std::size_t count = (left + groups - 1) / groups;
        bool done = false;
        switch (count) {
            case 4: done = run_neighbours<4>(sos, states, first, rows); break;
            case 3: done = run_neighbours<3>(sos, states, first, rows); break;
            case 2: done = run_neighbours<2>(sos, states, first, rows); break;
            default: break;
        }
        if (!done) {
            run_neighbours<1>(sos, states, first, rows);
            count = 1;
        }
        first += count;
        rows.in = rows.out;
        rows.in_stride = rows.out_stride;
    }
}

// Channels first .. first + count - 1, samples start .. start + n - 1.
LANES_INLINE Channels part(const Channels &c, std::ptrdiff_t first, std::ptrdiff_t count, std::ptrdiff_t start,
                           std::ptrdiff_t n) {
    Channels p = c;
    p.count = count < c.count - first ? count : c.count - first;
    p.first.n = n < c.first.n - start ? n : c.first.n - start;
    p.first.x += first * c.x_distance + start * c.first.x_stride;
    p.first.y += first * c.y_distance + start * c.first.y_stride;
    return p;
}

// Rows are four neighbouring doubles in x and y.
LANES_INLINE bool has_rows(const Channels &c) { return c.count == kWidth && c.x_distance == 1 && c.y_distance == 1; }

// Rows on the stack, of channels whose samples lie elsewhere; lanes without a channel hold zeros.
struct Gathered {
    double rows[kShortBlock * kWidth];

    // Four samples of four channels, wherever both lie in a row.
    LANES_INLINE static void turn(const double *from, std::ptrdiff_t from_stride, double *to,
                                  std::ptrdiff_t to_stride) {
        Lanes square[kLanes];
        for (std::ptrdiff_t i = 0; i < kWidth; ++i) square[i] = load(from + i * from_stride);
        transpose(square);
        for (std::ptrdiff_t i = 0; i < kWidth; ++i) store(to + i * to_stride, square[i]);
    }

    LANES_INLINE void gather(const Channels &c) {
        const Signal &s = c.first;
        std::ptrdiff_t i = 0;
        if (kTurningPays && c.count == kWidth && s.x_stride == 1)
            for (; i + kWidth <= s.n; i += kWidth) turn(s.x + i, c.x_distance, rows + i * kWidth, kWidth);
        for (; i < s.n; ++i)
            for (std::ptrdiff_t channel = 0; channel < kWidth; ++channel)
                rows[i * kWidth + channel] = channel < c.count ? s.x[i * s.x_stride + channel * c.x_distance] : 0;
    }

    LANES_INLINE void scatter(const Channels &c) const {
        const Signal &s = c.first;
        std::ptrdiff_t i = 0;
        if (kTurningPays && c.count == kWidth && s.y_stride == 1)
            for (; i + kWidth <= s.n; i += kWidth) turn(rows + i * kWidth, kWidth, s.y + i, c.y_distance);
        for (; i < s.n; ++i)
            for (std::ptrdiff_t channel = 0; channel < c.count; ++channel)
                s.y[i * s.y_stride + channel * c.y_distance] = rows[i * kWidth + channel];
    }
};

}  // namespace

void run_channels(const double *sos, std::size_t sections, double *state, const Channels &channels) {
    constexpr std::ptrdiff_t kFew = 2;  // channels that are not slower one by one
    const auto one_state = static_cast<std::ptrdiff_t>(kRegisters * sections);
    const std::ptrdiff_t n = channels.first.n;
    std::ptrdiff_t side_by_side = channels.count;
    if (side_by_side % kWidth <= kFew) side_by_side -= side_by_side % kWidth;

    for (std::ptrdiff_t start = 0; start < n; start += kLongBlock)
        for (std::ptrdiff_t first = 0; first < side_by_side; first += kWidth) {
            const Channels c = part(channels, first, kWidth, start, kLongBlock);
            const States states{state + first * one_state, one_state, c.count};
            const Signal &s = c.first;
            if (has_rows(c)) {
                run_rows(sos, sections, states, {s.x, s.x_stride, s.y, s.y_stride, s.n});
                continue;
            }
            for (std::ptrdiff_t i = 0; i < s.n; i += kShortBlock) {
                Gathered gathered;
                const Channels few = part(c, 0, kWidth, i, kShortBlock);
                gathered.gather(few);
                run_rows(sos, sections, states, {gathered.rows, kWidth, gathered.rows, kWidth, few.first.n});
                gathered.scatter(few);
            }
        }
    for (std::ptrdiff_t one = side_by_side; one < channels.count; ++one)
        run_sections(sos, sections, state + one * one_state, part(channels, one, 1, 0, n).first);
}

}  // namespace mensura::sos::MENSURA_TARGET
