// The general root finder: starts on a circle, two iterations from each start, deflation, closed forms for the rest.

#include <mensura/roots.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "roots_internal.h"

namespace mensura::roots {

IterationMemory &this_threads_memory() {
    thread_local IterationMemory memory;
    return memory;
}

namespace {

constexpr int kMaxDegree = 100;
constexpr int kNumModes = 4;          // kinds of K polynomial that a sweep over all angles can start with
constexpr int kClosedFormDegree = 4;  // closed forms solve what is left from here on

using Coefficients = std::array<real, kMaxDegree + 2>;  // a division leaves one extra remainder term
using RootParts = std::array<real, kMaxDegree>;

// The polynomial that is still to be solved, of degree `degree`, and the slots of the roots found so far: a root is
// written at slot N - degree before the degree falls.
struct Search {
    int degree, N;
    real *re, *im;
    Coefficients P;

    Search(const real *coefficients, int n, real *real_parts, real *imaginary_parts)
        : degree(n), N(n), re(real_parts), im(imaginary_parts) {
        std::copy_n(coefficients, n + 1, P.begin());
    }

    int slot() const { return N - degree; }

    void take_zero_roots() {
        while (degree > 0 && has_root_at_zero(P.data(), degree)) {
            re[slot()] = im[slot()] = 0;
            --degree;
        }
    }
};

enum class Found { kNothing, kQuadraticFactor, kRealRoot };

// The data of both stages: the trial quadratic TUV, the quotients QP = P / TUV and QPR = P / (x - s), the K polynomials
// KQ of the quadratic stage and KR of the real one, and the quotients QK = KQ / TUV or KR / (x - s).
struct Work {
    Coefficients QP, QPR, KQ, KR, QK;
    real TUV[3];
};

// All passes of both stages from one start.
Found try_start(IterationMemory &memory, Search &search, Work &w, real radius, int angle_index, int mode) {
    real *const P = search.P.data();
    const int d = search.degree;
    int flag = kRunning;
    SetTUVandK(P, d, w.TUV, w.KR.data(), w.KQ.data(), angle_index, radius, mode, w.QP.data(), &flag);
    for (int pass = 0; pass < d && flag != kAbandon; ++pass) {
        if (quadratic_stage(memory, pass, P, w.QP.data(), w.KQ.data(), w.QK.data(), d, w.TUV, KeepK::kOfLastStep,
                            &flag) == 2)
            return Found::kQuadraticFactor;
        const real k = w.KQ[static_cast<std::size_t>(d - 2)];
        real s = magnitude(k) <= magnitude(P[d]) * kNegligible ? 0 : -P[d] / k;
        const bool pass_follows = flag != kAbandon;
        if (real_stage(memory, pass, P, w.QPR.data(), w.KR.data(), w.QK.data(), d, pass_follows, &s) == 1) {
            search.re[search.slot()] = s;
            search.im[search.slot()] = 0;
            return Found::kRealRoot;
        }
    }
    return Found::kNothing;
}

Found try_all_starts(IterationMemory &memory, Search &search, Work &w) {
    const real degree = search.degree;
    const real radius = 0.5L * std::pow(magnitude(search.P[static_cast<std::size_t>(search.degree)]), 1 / degree);
    for (int mode = 0; mode < kNumModes; ++mode)
        for (int angle_index = 0; angle_index < kNumAngles; ++angle_index)
            if (const Found found = try_start(memory, search, w, radius, angle_index, mode); found != Found::kNothing)
                return found;
    return Found::kNothing;
}

// Finds and divides out factors until a closed form can take over, or no start leads anywhere.
void reduce(Search &search) {
    IterationMemory &memory = this_threads_memory();
    Work w;  // each entry is written before it is read
    while (search.degree > kClosedFormDegree) {
        const Found found = try_all_starts(memory, search, w);
        if (found == Found::kNothing) return;
        const bool quadratic = found == Found::kQuadraticFactor;
        if (quadratic) QuadRoots(w.TUV, search.re + search.slot(), search.im + search.slot());
        search.degree -= quadratic ? 2 : 1;
        std::copy_n((quadratic ? w.QP : w.QPR).begin(), search.degree + 1, search.P.begin());
        search.take_zero_roots();
    }
}

}  // namespace

}  // namespace mensura::roots

using namespace mensura::roots;

int PFiftyOne(long double *Coeff, int N, long double *RealRoot, long double *ImagRoot) {
    if (N < 1 || N > kMaxDegree) return 0;
    std::fill_n(RealRoot, N, 0.0L);
    std::fill_n(ImagRoot, N, 0.0L);
    const auto is_finite = [](real c) { return std::isfinite(c); };
    if (N > kClosedFormDegree && !std::all_of(Coeff, Coeff + N + 1, is_finite)) return 0;
    Search search(Coeff, N, RealRoot, ImagRoot);
    search.take_zero_roots();
    search.degree = drop_leading_zeros(search.P.data(), search.degree);
    make_monic(search.P.data(), search.degree);
    if (search.degree > kClosedFormDegree) reduce(search);
    if (search.degree < 1 || search.degree > kClosedFormDegree) return 0;
    solve_closed_form(search.P.data(), search.degree, RealRoot + search.slot(), ImagRoot + search.slot());
    return N;
}

int FindRoots(int N, double *Coeff, CplxD *Roots) {
    if (N < 1 || N > kMaxDegree) return 0;
    Coefficients p;
    std::copy_n(Coeff, N + 1, p.begin());
    RootParts re, im;
    const int count = PFiftyOne(p.data(), N, re.data(), im.data());
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i)
        Roots[i] = getCplxD(static_cast<double>(re[i]), static_cast<double>(im[i]));
    return count;
}
