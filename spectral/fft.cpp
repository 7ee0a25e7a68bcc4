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
// The inverse is the forward transform with re and im exchanged: swapped, the butterflies of one are those of the other.

#include "fft_kernel.h"

#include <mensura/spectral.h>

#include <cstddef>
#include <cstdint>
#include <utility>

#include "../internal/scratch.h"
#include "../internal/target.h"
#include "twiddles.h"

using namespace mensura::spectral;
using mensura::kLanes;

namespace {

using Size = std::size_t;

constexpr Size kLine = alignof(Bins);
constexpr int kNear = 256;  // points up to which the stack has room

// For the blocks, and the factors of n / 16 + n / 64 + ... blocks, down to a pass of one or two.
constexpr Size bytes_for(Size n) { return n / kLanes * sizeof(Bins) + (n / 12 + 1) * sizeof(Factors); }

// The first quarter of the circle, as the last pass wants it.  In scalar stores: to change one lane of a vector would mean to
// read the others back while they are still on their way to memory.
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

void transform_in(std::byte *memory, Size n, double *re, double *im, int dir, double scale) {
    auto *const blocks = reinterpret_cast<Bins *>(memory);
    const Plan plan{n, blocks, reinterpret_cast<Factors *>(blocks + n / kLanes), dir == 0 ? 0.0 : -0.0};
    fill_circle(plan);
    if (dir == 1) std::swap(re, im);
    MENSURA_DISPATCH(transform)(plan, re, im, scale);
}

// Eight points do not fill the blocks.
void transform_eight(double *re, double *im, int dir, double scale) {
    constexpr int kPoints = 8;
    double scratch_re[kPoints], scratch_im[kPoints], twiddle_re[kPoints / 2], twiddle_im[kPoints / 2];
    int index[kPoints];
    ReArrangeInput(re, im, scratch_re, scratch_im, index, kPoints);
    FillTwiddleArray(twiddle_re, twiddle_im, kPoints, dir);
    Transform(re, im, scratch_re, scratch_im, twiddle_re, twiddle_im, kPoints);
    for (int i = 0; i < kPoints; ++i) {
        re[i] *= scale;
        im[i] *= scale;
    }
}

}  // namespace

void FFT(double *re, double *im, int n, int dir) {
    if (IsValidFFTSize(n) == 0 || dir < 0 || dir > 1) return;
    const double scale = dir == 0 ? 1.0 / n : 1.0;
    if (n == 8) return transform_eight(re, im, dir, scale);

    const auto points = static_cast<Size>(n);
    if (n <= kNear) {
        alignas(kLine) std::byte memory[bytes_for(kNear)];
        return transform_in(memory, points, re, im, dir, scale);
    }
    const auto memory = mensura::scratch<std::byte>(bytes_for(points) + kLine);
    if (!memory) return;
    const auto last_of_line = reinterpret_cast<std::uintptr_t>(memory.get()) | (kLine - 1);
    transform_in(reinterpret_cast<std::byte *>(last_of_line + 1), points, re, im, dir, scale);
}
