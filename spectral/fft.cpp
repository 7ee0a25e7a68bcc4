// The fast transform.
//
// Its butterflies are those of Transform, with the same operands and so the same bits; what differs is their order and
// where their results lie.  Four neighbouring bins make a block.
//
//   1. gather: stages 1 and 2, from the caller's arrays into bit-reversed blocks, in tiles that suit the caches
//   2. two stages at a time in registers; a large transform finishes one quarter after the other, so that each stays in
//      the cache while it is worked on
//   3. the last two stages, scaled, into the caller's arrays
//
// The inverse is the forward transform with re and im exchanged: swapped, the butterflies of one are those of the
// other.

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

using Size = std::size_t;

constexpr Size kNearBlocks = 64;  // up to 256 points the blocks lie on the stack: malloc serves the rest faster

// Factors of n / 16 + n / 64 + ... blocks, down to a pass of one or two.
constexpr Size factor_count(Size n) { return n / 12 + 1; }

// The first quarter of the circle, as the last pass wants it.  In scalar stores: to change one lane of a vector would
// mean to read the others back while they are still on their way to memory.
void fill_circle(const Plan &plan) {
    auto *const table = reinterpret_cast<double *>(plan.factors_of(plan.count() / 4));
    constexpr Size kStride = sizeof(Factors) / sizeof(double), kTwice = offsetof(Factors, twice) / sizeof(double);
    const auto put = [table](Size k, double re, double im) {
        double *const four = table + k / kLanes * kStride + kTwice;
        four[k % kLanes] = re;
        four[k % kLanes + kLanes] = im;
    };
    for_first_eighth(plan.n, [&](Size i, double cos, double sin) {
        put(plan.n / 4 - i, sin, -cos);
        put(i, cos, -sin);
    });
    put(0, 1.0, plan.zero);
}

// Eight points do not fill the blocks.
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

void transform_blocks(double *re, double *im, Size n, int dir, double scale) {
    Bins near[kNearBlocks];
    const Size count = n / kLanes, far = count > kNearBlocks ? count : 0;
    const Size bytes = far * sizeof(Bins) + factor_count(n) * sizeof(Factors);
    Size room = bytes + alignof(Bins);
    const auto memory = mensura::scratch<std::byte>(room);
    if (!memory) return;
    void *start = memory.get();
    auto *const aligned = static_cast<Bins *>(std::align(alignof(Bins), bytes, start, room));
    const Plan plan{n, far > 0 ? aligned : near, reinterpret_cast<Factors *>(aligned + far), dir == 0 ? 0.0 : -0.0};
    fill_circle(plan);
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
        transform_blocks(re, im, static_cast<Size>(n), dir, scale);
}
