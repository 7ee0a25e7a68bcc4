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

// One smoothed value, with whole weights or with fractions that are rounded first:
//     (w[0] x[0] + w[1] x[1] + ...) / divisor        (w[0] / divisor) x[0] + (w[1] / divisor) x[1] + ...
enum class Weights { kWhole, kFractions };

template <Weights kWeights, std::size_t kWindow>
double edge_value(const Row<kWindow> &row, const Edge &edge) {
    const auto term = [&](std::size_t k) {
        const double weight =
            kWeights == Weights::kWhole ? row.weight[k] : static_cast<double>(row.weight[k]) / row.divisor;
        return weight * edge.x[edge.at(k)];
    };
    double sum = term(0);
    for (std::size_t k = 1; k < kWindow; ++k) sum += term(k);
    return kWeights == Weights::kWhole ? sum / row.divisor : sum;
}

// A record shorter than the window is copied.
template <const auto &kTable, Weights kWeights = Weights::kWhole>
void smooth(const mensura::Kernel<Inside> &inside, const double *x, double *y, int n) {
    constexpr std::size_t kWindow = kTable.back().weight.size();
    if (n < static_cast<int>(kWindow)) {
        if (n > 0) std::copy_n(x, n, y);
        return;
    }
    const auto size = static_cast<std::size_t>(n);
    for (const Edge &edge : {Edge{x, y, 1}, Edge{x + size - 1, y + size - 1, -1}})
        for (std::size_t i = 0; i < kWindow / 2; ++i) edge.y[edge.at(i)] = edge_value<kWeights>(kTable[i], edge);
    inside(x, y, size);
}

}  // namespace

// Inside a record, least squares of degree 2 and 3 over one window are the same: cubic5 and cubic7 serve both.
void linearSmooth3(const double *x, double *y, int n) { smooth<kLinear3>(mean3, x, y, n); }
void linearSmooth5(const double *x, double *y, int n) { smooth<kLinear5>(mean5, x, y, n); }
void linearSmooth7(const double *x, double *y, int n) { smooth<kLinear7>(mean7, x, y, n); }
void linearSmooth9(const double *x, double *y, int n) { smooth<kLinear9>(mean9, x, y, n); }
void linearSmooth11(const double *x, double *y, int n) { smooth<kLinear11, Weights::kFractions>(mean11, x, y, n); }
void quadraticSmooth5(const double *x, double *y, int n) { smooth<kQuadratic5>(cubic5, x, y, n); }
void quadraticSmooth7(const double *x, double *y, int n) { smooth<kQuadratic7>(cubic7, x, y, n); }
void cubicSmooth5(const double *x, double *y, int n) { smooth<kCubic5>(cubic5, x, y, n); }
void cubicSmooth7(const double *x, double *y, int n) { smooth<kCubic7>(cubic7, x, y, n); }
