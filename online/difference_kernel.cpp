// Four neighbouring points side by side.

#include "difference_kernel.h"

#include "../internal/lanes.h"
#include "../internal/target.h"

namespace mensura::online::MENSURA_TARGET {

void difference_inside(const double *x, double *dx, std::size_t n, double span) {
    std::size_t i = 1;
    for (; i + kLanes < n; i += kLanes) store(dx + i, (load(x + i + 1) - load(x + i - 1)) / all(span));
    for (; i + 1 < n; ++i) dx[i] = (x[i + 1] - x[i - 1]) / span;
}

}  // namespace mensura::online::MENSURA_TARGET
