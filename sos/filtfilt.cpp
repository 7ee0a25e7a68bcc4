// Filtering forwards and backwards.

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "../internal/scratch.h"
#include "arguments.h"
#include "quadratic.h"

using namespace mensura::sos;

namespace {

struct Filter {
    const double *sos;
    int sections;
    double *state;

    void settle(double x) const { mensura_sos_steady_state(sos, sections, x, state); }
    void run(const double *x, ptrdiff_t x_stride, double *y, ptrdiff_t y_stride, ptrdiff_t n) const {
        mensura_sos_filter(sos, sections, state, x, x_stride, y, y_stride, n);
    }
};

// A record and what its ends are continued with.
struct Record {
    const double *x;
    ptrdiff_t stride, n;

    double at(ptrdiff_t i) const { return x[i * stride]; }
};

// The sample that is `distance` away from an end, beyond it; `last` is the sample at that end, `mirrored` the one as far
// away on the other side.
double beyond(int ends, double last, double mirrored) {
    switch (ends) {
        case MENSURA_SOS_ENDS_ODD: return 2 * last - mirrored;
        case MENSURA_SOS_ENDS_EVEN: return mirrored;
        default: return last;
    }
}

// 3 (2 sections + 1 - min(...)), in numbers that it fits.
ptrdiff_t default_extension(const double *sos, int sections) {
    ptrdiff_t without_b2 = 0, without_a2 = 0;
    for (ptrdiff_t k = 0; k < sections; ++k, sos += kNumbers) {
        without_b2 += sos[2] == 0 ? 1 : 0;
        without_a2 += sos[5] == 0 ? 1 : 0;
    }
    return 3 * (2 * static_cast<ptrdiff_t>(sections) + 1 - std::min(without_b2, without_a2));
}

// All that is refused, before anything is written.
int check(const double *sos, int sections, int ends, ptrdiff_t extension, const double *x, const double *y,
          ptrdiff_t n) {
    if (const int code = check_sections(sos, sections)) return code;
    if (const int code = check_values(x, n)) return code;
    if (const int code = check_values(y, n)) return code;
    if (ends < MENSURA_SOS_ENDS_NONE || ends > MENSURA_SOS_ENDS_CONSTANT) return MENSURA_SOS_ENDS;
    if (extension < -1) return MENSURA_SOS_COUNT;
    if (has_pole_at_one(sos, sections)) return MENSURA_SOS_STEADY_STATE;
    return 0;
}

}  // namespace

int mensura_sos_extension(const double *sos, int sections) {
    if (const int code = check_sections(sos, sections)) return code;
    const ptrdiff_t extension = default_extension(sos, sections);
    return extension > INT32_MAX ? MENSURA_SOS_COUNT : static_cast<int>(extension);
}

int mensura_sos_filtfilt(const double *sos, int sections, int ends, ptrdiff_t extension, const double *x,
                         ptrdiff_t x_stride, double *y, ptrdiff_t y_stride, ptrdiff_t n, double *work) {
    if (const int code = check(sos, sections, ends, extension, x, y, n)) return code;
    if (ends == MENSURA_SOS_ENDS_NONE) extension = 0;
    if (extension < 0) extension = default_extension(sos, sections);
    if (ends != MENSURA_SOS_ENDS_NONE && extension >= n) return MENSURA_SOS_ENDS;
    if (n == 0) return 0;

    const std::size_t state = kRegisters * static_cast<std::size_t>(sections);
    const auto beyond_an_end = static_cast<std::size_t>(extension);
    mensura::Scratch<double> own;
    if (work == nullptr) {
        if (beyond_an_end > (SIZE_MAX / sizeof(double) - state) / 2) return MENSURA_SOS_MEMORY;
        own = mensura::scratch<double>(state + 2 * beyond_an_end);
        if (!own) return MENSURA_SOS_MEMORY;
        work = own.get();
    }
    double *const before = work + state, *const after = before + extension;
    const Record record{x, x_stride, n};
    for (ptrdiff_t i = 0; i < extension; ++i) {
        before[i] = beyond(ends, record.at(0), record.at(extension - i));
        after[i] = beyond(ends, record.at(n - 1), record.at(n - 2 - i));
    }

    const Filter filter{sos, sections, work};
    filter.settle(extension > 0 ? before[0] : record.at(0));
    filter.run(before, 1, before, 1, extension);
    filter.run(x, x_stride, y, y_stride, n);
    filter.run(after, 1, after, 1, extension);

    double *const last = y + (n - 1) * y_stride;
    filter.settle(extension > 0 ? after[extension - 1] : *last);
    filter.run(after + extension - 1, -1, after + extension - 1, -1, extension);
    filter.run(last, -y_stride, last, -y_stride, n);
    return 0;
}
