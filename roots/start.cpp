// Start values of the root finder: a quadratic with its roots on a circle, and the K polynomials of both stages.

#include <mensura/roots.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "../internal/constants.h"
#include "roots_internal.h"

using namespace mensura::roots;

namespace {

// Degrees, in the order tried: 45 and 135 first, then the multiples of 15, then the rest in runs 45 apart, so that
// early starts lie far from each other.  The first five rows come again one and two degrees further on.
// clang-format off
constexpr std::array<double, kNumAngles> kStartAngles = {
    45,  135, 0,   90,  15,  30,  60,  75,  105, 120, 150, 165,
    6,   51,  96,  141, 12,  57,  102, 147, 21,  66,  111, 156,
    27,  72,  117, 162, 36,  81,  126, 171, 42,  87,  132, 177,
    3,   48,  93,  138, 9,   54,  99,  144, 18,  63,  108, 153,
    24,  69,  114, 159, 33,  78,  123, 168, 39,  84,  129, 174,
    46,  136, 91,  1,   16,  31,  61,  76,  106, 121, 151, 166,
    7,   52,  97,  142, 13,  58,  103, 148, 22,  67,  112, 157,
    28,  73,  118, 163, 37,  82,  127, 172, 43,  88,  133, 178,
    4,   49,  94,  139, 10,  55,  100, 145, 19,  64,  109, 154,
    25,  70,  115, 160, 34,  79,  124, 169, 40,  85,  130, 175,
    47,  137, 92,  2,   17,  32,  62,  77,  107, 122, 152, 167,
    8,   53,  98,  143, 14,  59,  104, 149, 23,  68,  113, 158,
    29,  74,  119, 164, 38,  83,  128, 173, 44,  89,  134, 179,
    5,   50,  95,  140, 11,  56,  101, 146, 20,  65,  110, 155,
    26,  71,  116, 161, 35,  80,  125, 170, 41,  86,  131, 176,
};
// clang-format on
static_assert([] {
    std::array<bool, kNumAngles> seen{};
    for (const double angle : kStartAngles) seen[static_cast<std::size_t>(angle)] = true;
    return std::ranges::all_of(seen, [](bool s) { return s; });
}());  // a permutation of 0 .. 179

constexpr int kRealPairIndex = 2;  // the 0 degrees entry starts at +radius and -radius instead of a double root

void start_quadratic(int angle_index, real radius, real *TUV) {
    TUV[0] = 1;
    if (angle_index == kRealPairIndex) {
        TUV[1] = 0;
        TUV[2] = -(radius * radius);
    } else {
        const real theta = static_cast<real>(kStartAngles[static_cast<std::size_t>(angle_index)]) / 180 * mensura::kPi;
        TUV[1] = -2 * radius * std::cos(theta);
        TUV[2] = radius * radius;
    }
}

}  // namespace

void SetTUVandK(long double *P, int N, long double *TUV, long double *KR, long double *KQ, int AngleIndex,
                long double Radius, int Mode, long double * /*QP*/, int * /*Flag*/) {
    if (N < 1 || AngleIndex < 0 || AngleIndex >= kNumAngles) return;
    start_quadratic(AngleIndex, Radius, TUV);
    DerivOfP(P, N, KR);
    switch (Mode) {
        case 0: DerivOfP(KR, N - 1, KQ); break;
        case 1: divide_by_quadratic(P, N, TUV, KQ); break;
        case 2: std::copy(KR + 1, KR + N, KQ); break;
        default: KQ[0] = 1; std::fill(KQ + 1, KQ + N, 0.0L);
    }
    KQ[N - 1] = KQ[N] = 0;

    if (KQ[0] != 0)
        for (int j = N - 2; j >= 1; --j) KQ[j] /= KQ[0];
    KQ[0] = 1;
}
