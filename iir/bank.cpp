// Running a bank: one sample of every channel a call.
//
// Where AVX2 is present, two like channels run side by side.  Each keeps its own order of operations, so its bits are
// those of IIRFilter.  Coefficients and registers lie section after section, so the products with what is already known
// are formed four sections at a time; then, section by section, one lane belongs to each channel for the chain of sums.

#include "../internal/target.h"
#include "direct_form.h"

#if MENSURA_AVX2
#include <immintrin.h>
#endif

using namespace mensura::iir;

namespace {

#if MENSURA_AVX2

#define AVX2_INLINE TARGET_AVX2 [[gnu::always_inline]] inline

constexpr std::size_t kBlock = 4;  // sections whose products are formed at once
using Sections = __m256d;          // of one channel, in ascending order
using Channels = __m128d;          // one value of each of the two channels

// One section after the other, for two channels: {a0 b0}, {a1 b1}, {a2 b2}, {a3 b3}.
struct Paired {
    Channels section[kBlock];
};

AVX2_INLINE Paired paired(Sections a, Sections b) {
    const Sections even = _mm256_unpacklo_pd(a, b), odd = _mm256_unpackhi_pd(a, b);
    return {{_mm256_castpd256_pd128(even), _mm256_castpd256_pd128(odd), _mm256_extractf128_pd(even, 1),
             _mm256_extractf128_pd(odd, 1)}};
}

// What a channel brings to sections k .. k + 3 before its input is known.
struct Known {
    Sections b0, b1x1, b2x2, a1y1, a2y2;
};

// The first used sections of the second argument, the others of the first.
template <int used>
AVX2_INLINE Sections with_first(Sections others, Sections values) {
    return _mm256_blend_pd(others, values, (1 << used) - 1);
}

// Forms the products, and shifts the registers of the used sections.
template <int used>
AVX2_INLINE Known known_products(TIIRFilter &f, std::size_t k) {
    const IIRCoeffs &c = f.Coeffs;
    const Sections x1 = _mm256_loadu_pd(f.RegX1 + k), x2 = _mm256_loadu_pd(f.RegX2 + k);
    const Sections y1 = _mm256_loadu_pd(f.RegY1 + k), y2 = _mm256_loadu_pd(f.RegY2 + k);
    _mm256_storeu_pd(f.RegX2 + k, with_first<used>(x2, x1));
    _mm256_storeu_pd(f.RegY2 + k, with_first<used>(y2, y1));
    return {_mm256_loadu_pd(c.b0 + k), _mm256_loadu_pd(c.b1 + k) * x1, _mm256_loadu_pd(c.b2 + k) * x2,
            _mm256_loadu_pd(c.a1 + k) * y1, _mm256_loadu_pd(c.a2 + k) * y2};
}

template <int used>
AVX2_INLINE void write_back(double *registers, Channels lower, Channels upper) {
    const Sections values = _mm256_insertf128_pd(_mm256_castpd128_pd256(lower), upper, 1);
    _mm256_storeu_pd(registers, with_first<used>(_mm256_loadu_pd(registers), values));
}

// The first used of the values v, two channels' four sections, into the registers of each.
template <int used>
AVX2_INLINE void write_back(double *f, double *g, const Paired &v) {
    const Channels second = used > 1 ? v.section[1] : v.section[0], third = used > 2 ? v.section[2] : v.section[0],
                   fourth = used > 3 ? v.section[3] : third;
    write_back<used>(f, _mm_unpacklo_pd(v.section[0], second), used > 3 ? _mm_unpacklo_pd(third, fourth) : third);
    write_back<used>(g, _mm_unpackhi_pd(v.section[0], second), _mm_unpackhi_pd(third, fourth));
}

// Sections k .. k + used - 1 of two channels with the inputs u; returns their outputs.
template <int used>
AVX2_INLINE Channels run_block(TIIRFilter &f, TIIRFilter &g, std::size_t k, Channels u) {
    const Known p = known_products<used>(f, k), q = known_products<used>(g, k);
    const Paired b0 = paired(p.b0, q.b0), b1x1 = paired(p.b1x1, q.b1x1), b2x2 = paired(p.b2x2, q.b2x2),
                 a1y1 = paired(p.a1y1, q.a1y1), a2y2 = paired(p.a2y2, q.a2y2);
    Paired x, y;
    for (int i = 0; i < used; ++i) {
        x.section[i] = u;
        u = b0.section[i] * u + b1x1.section[i] + b2x2.section[i] - a1y1.section[i] - a2y2.section[i];
        y.section[i] = u;
    }
    write_back<used>(f.RegX1 + k, g.RegX1 + k, x);
    write_back<used>(f.RegY1 + k, g.RegY1 + k, y);
    return u;
}

// Whether sections k .. k + used - 1 need no scale.  Those with one wait for run_section.
template <int used>
[[gnu::always_inline]] inline bool unscaled(const TIIRFilter &f, std::size_t k) {
    bool ones = true;
    for (std::size_t i = k; i < k + used; ++i) ones = ones && is_one(f.Coeffs.a0[i]);
    return ones;
}

template <int used>
[[gnu::always_inline]] inline bool ready(const TIIRFilter &f) {
    return f.Primed != 0 && f.Coeffs.NumSections == used && unscaled<used>(f, 0);
}

// Runs the leading pairs of channels that are primed and have `used` sections, at most four; returns how many channels.
template <int used>
TARGET_AVX2 int run_short(TIIRFilter *filters, int count, const double *in, double *out) {
    int i = 0;
    for (; i + 1 < count && ready<used>(filters[i]) && ready<used>(filters[i + 1]); i += 2)
        _mm_storeu_pd(out + i, run_block<used>(filters[i], filters[i + 1], 0, _mm_loadu_pd(in + i)));
    return i;
}

// The same for channels with more sections: blocks of four as long as they go, then one section after the other.
TARGET_AVX2 int run_long(TIIRFilter *filters, int count, const double *in, double *out) {
    int i = 0;
    for (; i + 1 < count && filters[i].Primed != 0 && filters[i + 1].Primed != 0; i += 2) {
        TIIRFilter &f = filters[i], &g = filters[i + 1];
        const std::size_t nf = sections_to_run(f.Coeffs), ng = sections_to_run(g.Coeffs);
        Channels u = _mm_loadu_pd(in + i);
        std::size_t k = 0;
        for (; k + kBlock <= std::min(nf, ng) && unscaled<4>(f, k) && unscaled<4>(g, k); k += kBlock)
            u = run_block<4>(f, g, k, u);
        out[i] = run_sections(f.Coeffs, f, k, nf, u[0]);
        out[i + 1] = run_sections(g.Coeffs, g, k, ng, u[1]);
    }
    return i;
}

// Whether [p, p + p_size) and [q, q + q_size) have no byte in common.
bool apart(const void *p, std::size_t p_size, const void *q, std::size_t q_size) {
    const auto p0 = reinterpret_cast<std::uintptr_t>(p), q0 = reinterpret_cast<std::uintptr_t>(q);
    return p0 + p_size <= q0 || q0 + q_size <= p0;
}

// Runs as many leading channels as can go in pairs, and returns their number.
int run_pairs(TIIRFilterBank &bank, const double *in, double *out) {
    const int count = bank.Count;
    const auto bytes = static_cast<std::size_t>(count) * sizeof(double);
    // Where an output feeds a later input or filter, or a filter a later input, the channels go one after the other.
    const bool independent = apart(in, bytes, &bank, sizeof bank) && apart(out, bytes, &bank, sizeof bank) &&
                             (in == out || apart(in, bytes, out, bytes));
    if (!independent) return 0;
    switch (bank.Filters[0].Coeffs.NumSections) {
        case 1: return run_short<1>(bank.Filters, count, in, out);
        case 2: return run_short<2>(bank.Filters, count, in, out);
        case 3: return run_short<3>(bank.Filters, count, in, out);
        case 4: return run_short<4>(bank.Filters, count, in, out);
        default: return run_long(bank.Filters, count, in, out);
    }
}

#else

int run_pairs(TIIRFilterBank &, const double *, double *) { return 0; }

#endif

}  // namespace

int IIRFilters(TIIRFilterBank *bank, const double *x, double *out) {
    if (bank->Count < 1) return bank->Count;
    int i = mensura::has_avx2() ? run_pairs(*bank, x, out) : 0;
    for (; i < bank->Count; ++i) out[i] = IIRFilter(&bank->Filters[i], x[i]);
    return bank->Count;
}
