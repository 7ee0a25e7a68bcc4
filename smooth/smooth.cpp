// The nine smoothers: the inside of a record by a kernel, its two edges here.

#include <mensura/smooth.h>

#include <algorithm>
#include <cstddef>

#include "smooth_kernel.h"
#include "weights.h"

using namespace mensura::smooth;

namespace {

// One edge of a record, from its outermost sample inwards: samples x[0], x[step], ..., with step 1 or -1.
struct Edge {
    const double *x;
    double *y;
    std::ptrdiff_t step;

    [[nodiscard]] std::ptrdiff_t at(std::size_t k) const { return static_cast<std::ptrdiff_t>(k) * step; }
};

// (w[0] x[0] + w[1] x[1] + ...) / divisor
template <std::size_t kWindow>
double sum_over_divisor(const Row<kWindow> &row, const Edge &edge) {
    double sum = row.weight[0] * edge.x[0];
    for (std::size_t k = 1; k < kWindow; ++k) sum += row.weight[k] * edge.x[edge.at(k)];
    return sum / row.divisor;
}

// (w[0] / divisor) x[0] + (w[1] / divisor) x[1] + ..., each fraction rounded
template <std::size_t kWindow>
double sum_of_fractions(const Row<kWindow> &row, const Edge &edge) {
    const auto fraction = [&](std::size_t k) { return static_cast<double>(row.weight[k]) / row.divisor; };
    double sum = fraction(0) * edge.x[0];
    for (std::size_t k = 1; k < kWindow; ++k) sum += fraction(k) * edge.x[edge.at(k)];
    return sum;
}

template <std::size_t kWindow>
using EdgeValue = double(const Row<kWindow> &row, const Edge &edge);

// A record shorter than the window is copied.
template <std::size_t kWindow>
void smooth(const Table<kWindow> &table, const mensura::Kernel<Inside> &inside, const double *x, double *y, int n,
            EdgeValue<kWindow> &value = sum_over_divisor<kWindow>) {
    if (n < static_cast<int>(kWindow)) {
        if (n > 0) std::copy_n(x, n, y);
        return;
    }
    const auto size = static_cast<std::size_t>(n);
    for (const Edge &edge : {Edge{x, y, 1}, Edge{x + size - 1, y + size - 1, -1}})
        for (std::size_t i = 0; i < kWindow / 2; ++i) edge.y[edge.at(i)] = value(table[i], edge);
    inside(x, y, size);
}

}  // namespace

// Inside a record, least squares of degree 2 and 3 over one window are the same: cubic5 and cubic7 serve both.
void linearSmooth3(const double *x, double *y, int n) { smooth(kLinear3, mean3, x, y, n); }
void linearSmooth5(const double *x, double *y, int n) { smooth(kLinear5, mean5, x, y, n); }
void linearSmooth7(const double *x, double *y, int n) { smooth(kLinear7, mean7, x, y, n); }
void linearSmooth9(const double *x, double *y, int n) { smooth(kLinear9, mean9, x, y, n); }
void linearSmooth11(const double *x, double *y, int n) { smooth(kLinear11, mean11, x, y, n, sum_of_fractions<11>); }
void quadraticSmooth5(const double *x, double *y, int n) { smooth(kQuadratic5, cubic5, x, y, n); }
void quadraticSmooth7(const double *x, double *y, int n) { smooth(kQuadratic7, cubic7, x, y, n); }
void cubicSmooth5(const double *x, double *y, int n) { smooth(kCubic5, cubic5, x, y, n); }
void cubicSmooth7(const double *x, double *y, int n) { smooth(kCubic7, cubic7, x, y, n); }
