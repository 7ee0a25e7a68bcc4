// The fast transform: radix 2, decimation in time.
//
// Its butterflies are those of Transform, with the same operands and so the same bits.  What differs is their order, and
// where their results lie: in vectors of four neighbouring bins.
//
//   1. gather: stages 1 and 2, from the caller's arrays into vectors in bit-reversed order, tile by tile for the caches
//   2. passes of two stages, in registers; a large transform finishes one quarter after the other, which stays in the
//      cache meanwhile.  Twiddle factors are data (fft_factors.cpp) up to 4096 points, above they come from the first
//      eighth of a circle: the table up to 16384 points, computed in the call for more
//   3. the last two stages, scaled, into the caller's arrays
//
// The inverse is the forward transform with re and im exchanged, so that both run the same butterflies.

#include "fft_kernel.h"

#include <mensura/spectral.h>

#include <cstddef>
#include <memory>

#include "../internal/scratch.h"
#include "twiddles.h"

using namespace mensura::spectral;
using mensura::kLanes;

namespace {

// Up to 1024 points the vectors lie on the stack.
constexpr std::size_t kStackVectors = 256;

void transform_on_stack(double *re, double *im, std::size_t n, double zero, double scale) {
    Bins bins[kStackVectors];
    transform({n, bins, {}, zero}, re, im, scale);
}

// Entries of the first eighth of a circle, both ends included.
constexpr std::size_t eighth_of(std::size_t points) { return points / 8 + 1; }

// The passes of more than kCirclePoints points have n, n / 4, n / 16 ... of them.
template <typename F>
void for_fine_circles(std::size_t n, F f) {
    for (std::size_t points = n; points > kCirclePoints; points /= 4) f(points);
}

void fill_eighths(Plan &plan, CosSin *memory) {
    std::size_t circle = 0;
    for_fine_circles(plan.n, [&](std::size_t points) {
        memory[0] = {1, 0};
        if (circle == 0)
            for_first_eighth(points, [memory](std::size_t i, double cos, double sin) { memory[i] = {cos, sin}; });
        else  // a circle four times as coarse as the one before
            for (std::size_t i = 1; i < eighth_of(points); ++i) memory[i] = plan.eighths[circle - 1][4 * i];
        plan.eighths[circle++] = memory;
        memory += eighth_of(points);
    });
}

void transform_on_heap(double *re, double *im, std::size_t n, double zero, double scale) {
    std::size_t entries = 0;
    for_fine_circles(n, [&entries](std::size_t points) { entries += eighth_of(points); });
    const std::size_t vectors = n / kLanes, bytes = vectors * sizeof(Bins) + entries * sizeof(CosSin);
    std::size_t room = bytes + alignof(Bins);
    const auto memory = mensura::scratch<std::byte>(room);
    if (!memory) return;
    void *start = memory.get();
    Plan plan{n, static_cast<Bins *>(std::align(alignof(Bins), bytes, start, room)), {}, zero};
    fill_eighths(plan, reinterpret_cast<CosSin *>(plan.bins + vectors));
    transform(plan, re, im, scale);
}

}  // namespace

void FFT(double *re, double *im, int n, int dir) {
    if (IsValidFFTSize(n) == 0 || dir < 0 || dir > 1) return;
    const auto points = static_cast<std::size_t>(n);
    const auto run = points / kLanes <= kStackVectors ? transform_on_stack : transform_on_heap;
    if (dir == 0)
        run(re, im, points, 0.0, 1.0 / n);
    else
        run(im, re, points, -0.0, 1.0);
}
