// The plain steps of the radix-2 transform, and its sizes.

#include <mensura/spectral.h>

#include <bit>
#include <cstddef>
#include <utility>

#include "twiddles.h"

namespace {

constexpr int kSmallest = 8, kLargest = 1048576;

bool is_power_of_two(int n) { return n > 0 && (n & (n - 1)) == 0; }

// A complex array: its real and its imaginary parts.
struct Split {
    double *re, *im;
};

// Joins 2 `groups` neighbouring transforms of `span` bins, in pairs, to transforms of 2 span bins.
void run_stage(Split from, Split to, const double *twRe, const double *twIm, std::size_t span, std::size_t groups) {
    for (std::size_t base = 0; base < 2 * span * groups; base += 2 * span)
        for (std::size_t k = 0; k < span; ++k) {
            const std::size_t a = base + k, c = a + span, w = k * groups;
            const double re = from.re[c] * twRe[w] - from.im[c] * twIm[w];
            const double im = from.re[c] * twIm[w] + from.im[c] * twRe[w];
            to.re[a] = from.re[a] + re;
            to.im[a] = from.im[a] + im;
            to.re[c] = from.re[a] - re;
            to.im[c] = from.im[a] - im;
        }
}

}  // namespace

int RequiredFFTSize(int n) {
    int size = kSmallest;
    while (size < n && size < kLargest) size *= 2;
    return size;
}

int IsValidFFTSize(int n) {
    const bool valid = n >= kSmallest && n <= kLargest && is_power_of_two(n);
    return valid ? std::countr_zero(static_cast<unsigned>(n)) : 0;
}

void ReArrangeInput(const double *inRe, const double *inIm, double *outRe, double *outIm, int *index, int n) {
    if (!is_power_of_two(n)) return;
    index[0] = 0;
    for (int m = 1, step = n / 2; step > 0; m *= 2, step /= 2)
        for (int i = 0; i < m; ++i) index[m + i] = index[i] + step;
    for (int i = 0; i < n; ++i) {
        outRe[i] = inRe[index[i]];
        outIm[i] = inIm[index[i]];
    }
}

void FillTwiddleArray(double *twRe, double *twIm, int n, int dir) {
    if (n < kSmallest || !is_power_of_two(n)) return;
    const double sign = dir == 0 ? -1.0 : 1.0;
    const auto half = static_cast<std::size_t>(n) / 2, quarter = half / 2;
    const auto put = [&](std::size_t i, double cos, double sin) {
        twRe[i] = cos;
        twIm[i] = sign * sin;
    };
    mensura::spectral::for_first_eighth(static_cast<std::size_t>(n), [&](std::size_t i, double cos, double sin) {
        put(half - i, -cos, sin);
        put(quarter + i, -sin, cos);
        put(quarter - i, sin, cos);
        put(i, cos, sin);
    });
    twRe[0] = 1.0;
    twIm[0] = 0.0;
    put(quarter, 0.0, 1.0);
}

void Transform(double *bufRe, double *bufIm, double *tmpRe, double *tmpIm, const double *twRe, const double *twIm,
               int n) {
    if (!is_power_of_two(n)) return;
    Split from{tmpRe, tmpIm}, to{bufRe, bufIm};
    std::size_t span = 1;
    for (std::size_t groups = static_cast<std::size_t>(n) / 2; groups > 0; groups /= 2) {
        run_stage(from, to, twRe, twIm, span, groups);
        std::swap(from, to);
        span *= 2;
    }
}
