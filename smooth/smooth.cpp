// The nine smoothers: the inside of the record from a kernel, its edges here.

#include <mensura/smooth.h>

#include <algorithm>

#include "../internal/target.h"
#include "smooth_kernel.h"
#include "weights.h"

using namespace mensura::smooth;

namespace {

using Size = std::size_t;

// The first h points, from a window that stays; the mirror image with step -1.
struct Edge {
    const double *x;
    double *y;
    std::ptrdiff_t step;
};

// The sum of whole multiples over a whole number.
template <Size kWindow>
double as_stated(const Row<kWindow> &row, const Edge &edge) {
    double sum = row.weight[0] * edge.x[0];
    for (Size k = 1; k < kWindow; ++k) sum += row.weight[k] * edge.x[static_cast<std::ptrdiff_t>(k) * edge.step];
    return sum / row.divisor;
}

// The sum of fractions.
template <Size kWindow>
double as_fractions(const Row<kWindow> &row, const Edge &edge) {
    const auto fraction = [&](Size k) { return static_cast<double>(row.weight[k]) / row.divisor; };
    double sum = fraction(0) * edge.x[0];
    for (Size k = 1; k < kWindow; ++k) sum += fraction(k) * edge.x[static_cast<std::ptrdiff_t>(k) * edge.step];
    return sum;
}

template <Size kWindow>
using Value = double(const Row<kWindow> &row, const Edge &edge);

template <Size kWindow>
void smooth(const Table<kWindow> &table, Inside &inside, const double *x, double *y, int n,
            Value<kWindow> &value = as_stated<kWindow>) {
    if (n < static_cast<int>(kWindow)) {
        if (n > 0) std::copy_n(x, n, y);
        return;
    }
    const auto size = static_cast<Size>(n);
    for (const Edge &edge : {Edge{x, y, 1}, Edge{x + size - 1, y + size - 1, -1}})
        for (Size i = 0; i < kWindow / 2; ++i)
            edge.y[static_cast<std::ptrdiff_t>(i) * edge.step] = value(table[i], edge);
    inside(x, y, size);
}

}  // namespace

void linearSmooth3(const double *x, double *y, int n) { smooth(kLinear3, MENSURA_DISPATCH(mean3), x, y, n); }
void linearSmooth5(const double *x, double *y, int n) { smooth(kLinear5, MENSURA_DISPATCH(mean5), x, y, n); }
void linearSmooth7(const double *x, double *y, int n) { smooth(kLinear7, MENSURA_DISPATCH(mean7), x, y, n); }
void linearSmooth9(const double *x, double *y, int n) { smooth(kLinear9, MENSURA_DISPATCH(mean9), x, y, n); }
void linearSmooth11(const double *x, double *y, int n) {
    smooth(kLinear11, MENSURA_DISPATCH(mean11), x, y, n, as_fractions<11>);
}
void quadraticSmooth5(const double *x, double *y, int n) { smooth(kQuadratic5, MENSURA_DISPATCH(cubic5), x, y, n); }
void quadraticSmooth7(const double *x, double *y, int n) { smooth(kQuadratic7, MENSURA_DISPATCH(cubic7), x, y, n); }
void cubicSmooth5(const double *x, double *y, int n) { smooth(kCubic5, MENSURA_DISPATCH(cubic5), x, y, n); }
void cubicSmooth7(const double *x, double *y, int n) { smooth(kCubic7, MENSURA_DISPATCH(cubic7), x, y, n); }
