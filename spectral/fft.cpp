// The fast transform: radix 2, decimation in time.
//
// Its butterflies are those of Transform, with the same operands and so the same bits.  What differs is their order, and
// where their results lie: in vectors of four neighbouring bins.
//
//   1. gather: stages 1 and 2, from the caller's arrays into vectors in bit-reversed order, tile by tile for the caches
//   2. passes of two stages, in registers; a large transform finishes one quarter after the other, which stays in the
//      cache meanwhile
//   3. the last two stages, scaled, into the caller's arrays
//
// The inverse is the forward transform with re and im exchanged, so that both run the same butterflies.

#include "fft_kernel.h"

#include <mensura/spectral.h>

#include <cstddef>
#include <memory>
#include <utility>

#include "../internal/scratch.h"
#include "twiddles.h"

using namespace mensura::spectral;
using mensura::kLanes;

namespace {

// Up to 256 points the vectors lie on the stack, which leaves malloc small requests that it serves fast.
constexpr std::size_t kStackVectors = 64;

// Entries of the tables of twiddle factors: at most n / 16 + n / 64 + ... = n / 12, and one for a pass of q = 2.
constexpr std::size_t twiddle_count(std::size_t n) { return n / 12 + 1; }

// The first quarter of the circle, as w4 of the last pass.  It is written double by double: changing one lane of a
// vector would read the vector back before the stores to its other lanes have reached the cache.
void fill_last_pass(const Plan &plan) {
    auto *const table = reinterpret_cast<double *>(plan.twiddles_of(plan.vectors() / 4));
    constexpr std::size_t kStride = sizeof(Twiddles) / sizeof(double), kW4 = offsetof(Twiddles, w4) / sizeof(double);
    const auto put = [table](std::size_t k, double re, double im) {
        double *const four = table + k / kLanes * kStride + kW4;
        four[k % kLanes] = re;
        four[k % kLanes + kLanes] = im;
    };
    for_first_eighth(plan.n, [&](std::size_t i, double cos, double sin) {
        put(plan.n / 4 - i, sin, -cos);
        put(i, cos, -sin);
    });
    put(0, 1.0, plan.zero);
}

// Eight points are too few for vectors: the plain steps.
void transform_eight(double *re, double *im, int dir, double scale) {
    constexpr int kPoints = 8;
    const auto memory = mensura::scratch<double>(3 * kPoints);
    if (!memory) return;
    double *const scratch_re = memory.get(), *const scratch_im = scratch_re + kPoints;
    double *const twiddle_re = scratch_im + kPoints, *const twiddle_im = twiddle_re + kPoints / 2;
    int index[kPoints];
    ReArrangeInput(re, im, scratch_re, scratch_im, index, kPoints);
    FillTwiddleArray(twiddle_re, twiddle_im, kPoints, dir);
    Transform(re, im, scratch_re, scratch_im, twiddle_re, twiddle_im, kPoints);
    for (int i = 0; i < kPoints; ++i) {
        re[i] *= scale;
        im[i] *= scale;
    }
}

void transform_vectors(double *re, double *im, std::size_t n, int dir, double scale) {
    Bins on_stack[kStackVectors];
    const std::size_t vectors = n / kLanes, on_heap = vectors > kStackVectors ? vectors : 0;
    const std::size_t bytes = on_heap * sizeof(Bins) + twiddle_count(n) * sizeof(Twiddles);
    std::size_t room = bytes + alignof(Bins);
    const auto memory = mensura::scratch<std::byte>(room);
    if (!memory) return;
    void *start = memory.get();
    auto *const aligned = static_cast<Bins *>(std::align(alignof(Bins), bytes, start, room));
    const Plan plan{n, on_heap > 0 ? aligned : on_stack, reinterpret_cast<Twiddles *>(aligned + on_heap),
                    dir == 0 ? 0.0 : -0.0};
    fill_last_pass(plan);
    if (dir == 1) std::swap(re, im);
    transform(plan, re, im, scale);
}

}  // namespace

void FFT(double *re, double *im, int n, int dir) {
    if (IsValidFFTSize(n) == 0 || dir < 0 || dir > 1) return;
    const double scale = dir == 0 ? 1.0 / n : 1.0;
    if (n == 8)
        transform_eight(re, im, dir, scale);
    else
        transform_vectors(re, im, static_cast<std::size_t>(n), dir, scale);
}
