// Filters run block by block, with their state.

#include "arguments.h"
#include "filter_kernel.h"

using namespace mensura::sos;

namespace {

int check(const double *sos, int sections, const double *state, const double *x, const double *y, ptrdiff_t n) {
    if (const int code = check_sections(sos, sections)) return code;
    if (state == nullptr) return MENSURA_SOS_NULL;
    if (const int code = check_values(x, n)) return code;
    return check_values(y, n);
}

}  // namespace

int mensura_sos_filter(const double *sos, int sections, double *state, const double *x, ptrdiff_t x_stride, double *y,
                       ptrdiff_t y_stride, ptrdiff_t n) {
    if (const int code = check(sos, sections, state, x, y, n)) return code;
    run_sections(sos, static_cast<std::size_t>(sections), state, {x, x_stride, y, y_stride, n});
    return 0;
}

int mensura_sos_filter_channels(const double *sos, int sections, double *state, int channels, const double *x,
                                ptrdiff_t x_stride, ptrdiff_t x_distance, double *y, ptrdiff_t y_stride,
                                ptrdiff_t y_distance, ptrdiff_t n) {
    if (const int code = check(sos, sections, state, x, y, n)) return code;
    if (channels < 1) return MENSURA_SOS_COUNT;
    if (n == 0) return 0;  // the arrays may be null
    run_channels(sos, static_cast<std::size_t>(sections), state,
                 {{x, x_stride, y, y_stride, n}, x_distance, y_distance, channels});
    return 0;
}
