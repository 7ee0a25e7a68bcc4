// Derivatives by central differences.

#include <mensura/online.h>

#include "channels.h"
#include "difference_kernel.h"

using namespace mensura::online;

void central_difference(const double *x, double *dx, int n, double h) {
    if (n < 2) return;
    const auto size = static_cast<std::size_t>(n), last = size - 1;
    const double span = 2 * h;
    // The record is continued by a straight line at either end: x[-1] = x[0] + x[0] - x[1].
    dx[0] = (x[1] - (x[0] + x[0] - x[1])) / span;
    difference_inside(x, dx, size, span);
    dx[last] = (x[last] + x[last] - x[last - 1] - x[last - 1]) / span;
}

void init_central_difference_online(CentralDiffOnline *s, double h) { *s = {h, 0.0, 0.0, 0}; }

double central_difference_online(CentralDiffOnline *s, double x) {
    const double old = s->Prev2;
    s->Prev2 = s->Prev1;
    s->Prev1 = x;
    if (s->Count < 2) {
        ++s->Count;
        return 0.0;
    }
    return (x - old) / (2 * s->Step);
}

void init_central_difference_onlines(CentralDiffOnline *s, int count, double h) {
    each(s, count, [&](CentralDiffOnline &channel) { init_central_difference_online(&channel, h); });
}

void central_difference_onlines(CentralDiffOnline *s, const double *x, double *out, int count) {
    run(central_difference_online, s, x, out, count);
}
