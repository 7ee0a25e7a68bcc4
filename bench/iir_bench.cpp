// Running and designing IIR filters.

#include <mensura/iir.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "compare.h"
#include "direct_form_peer.h"
#ifdef MENSURA_HAVE_LIQUID
#include <liquid/liquid.h>
#endif

namespace {

constexpr std::size_t kSamples = 10000;

TIIRFilter default_filter() {
    TIIRFilter f;
    initTIIRFilter(&f, ptLowPass, 40.0, 360.0);
    return f;
}

// Ours against a loop with the same coefficients, one call a sample.
template <typename Peer, typename Run>
void compare_with_loop(benchmark::State &state, Peer &loop, Run run) {
    TIIRFilter f = default_filter();
    const std::vector<double> in = bench::noise(kSamples);
    std::vector<double> ours(kSamples), peer(kSamples);
    const int sections = f.Coeffs.NumSections;
    bench::compare(
        state, kSamples,
        [&] {
            for (std::size_t i = 0; i < kSamples; ++i) ours[i] = IIRFilter(&f, in[i]);
        },
        [&] {
            for (std::size_t i = 0; i < kSamples; ++i) peer[i] = run(&loop, sections, in[i]);
        });
    double error = 0;
    for (std::size_t i = 0; i < kSamples; ++i) error = std::max(error, std::abs(ours[i] - peer[i]));
    state.counters["difference"] = error;
}

void IIRFilter_against_loop_over_records(benchmark::State &state) {
    const IIRCoeffs c = default_filter().Coeffs;
    peer::Section loop[peer::kSections];
    for (std::size_t k = 0; k < peer::kSections; ++k)
        loop[k] = {c.b0[k], c.b1[k], c.b2[k], c.a1[k], c.a2[k], 0, 0, 0, 0};
    compare_with_loop(state, loop[0], peer::run_sections);
}
MENSURA_COMPARE(IIRFilter_against_loop_over_records, 400);

void IIRFilter_against_loop_over_arrays(benchmark::State &state) {
    const IIRCoeffs c = default_filter().Coeffs;
    peer::Arrays loop{};
    for (std::size_t k = 0; k < peer::kSections; ++k) {
        loop.b0[k] = c.b0[k];
        loop.b1[k] = c.b1[k];
        loop.b2[k] = c.b2[k];
        loop.a1[k] = c.a1[k];
        loop.a2[k] = c.a2[k];
    }
    compare_with_loop(state, loop, peer::run_arrays);
}
MENSURA_COMPARE(IIRFilter_against_loop_over_arrays, 400);

// Per channel and sample: a bank against one filter alone.
void compare_bank(benchmark::State &state, std::size_t channels) {
    constexpr std::size_t kInstants = 2000;
    TIIRFilter one = default_filter();
    TIIRFilterBank bank;
    initTIIRFilters(&bank, ptLowPass, static_cast<int>(channels), 40.0, 360.0);
    const std::vector<double> in = bench::noise(channels * kInstants);
    std::vector<double> out(in.size());
    bench::compare(
        state, static_cast<double>(in.size()),
        [&] {
            for (std::size_t i = 0; i < in.size(); i += channels) IIRFilters(&bank, &in[i], &out[i]);
        },
        [&] {
            for (std::size_t i = 0; i < in.size(); ++i) out[i] = IIRFilter(&one, in[i]);
        });
}

void IIRFilters_two_channels_against_IIRFilter(benchmark::State &state) { compare_bank(state, 2); }
MENSURA_COMPARE(IIRFilters_two_channels_against_IIRFilter, 400);

void IIRFilters_three_channels_against_IIRFilter(benchmark::State &state) { compare_bank(state, 3); }
MENSURA_COMPARE(IIRFilters_three_channels_against_IIRFilter, 400);

void IIRFilters_ten_channels_against_IIRFilter(benchmark::State &state) { compare_bank(state, 10); }
MENSURA_COMPARE(IIRFilters_ten_channels_against_IIRFilter, 400);

// ---- design ----

constexpr int kDesigns = 20;

IIRDesignSpec request(int pass_type, int family, int poles) {
    return {pass_type, 0.2, 0.1, 0.0, {family, poles, 0.1, 60.0, 0.0}};
}

auto design_many(const IIRDesignSpec &spec) {
    return [spec] {
        IIRCoeffs coeffs;
        for (int i = 0; i < kDesigns; ++i) {
            coeffs = CalcIIRFilterCoeff(spec);
            benchmark::DoNotOptimize(coeffs.b0);
            benchmark::ClobberMemory();
        }
    };
}

void compare_with_Butterworth_8(benchmark::State &state, int family, int poles) {
    bench::compare(state, kDesigns, design_many(request(ptLowPass, family, poles)),
                   design_many(request(ptLowPass, pfButterworth, 8)));
}

void Chebyshev_8_design_against_Butterworth_8(benchmark::State &state) {
    compare_with_Butterworth_8(state, pfChebyshev, 8);
}
MENSURA_COMPARE(Chebyshev_8_design_against_Butterworth_8, 400);

void Bessel_8_design_against_Butterworth_8(benchmark::State &state) { compare_with_Butterworth_8(state, pfBessel, 8); }
MENSURA_COMPARE(Bessel_8_design_against_Butterworth_8, 400);

void Papoulis_20_design_against_Butterworth_8(benchmark::State &state) {
    compare_with_Butterworth_8(state, pfPapoulis, 20);
}
MENSURA_COMPARE(Papoulis_20_design_against_Butterworth_8, 40);

// Per filter.
void initTIIRFilters_ten_against_initTIIRFilter(benchmark::State &state) {
    TIIRFilterBank bank{};
    bench::compare(
        state, 10,
        [&] {
            initTIIRFilters(&bank, ptLowPass, 10, 40.0, 360.0);
            benchmark::ClobberMemory();
        },
        [&] {
            for (TIIRFilter &f : bank.Filters) initTIIRFilter(&f, ptLowPass, 40.0, 360.0);
            benchmark::ClobberMemory();
        });
}
MENSURA_COMPARE(initTIIRFilters_ten_against_initTIIRFilter, 400);

#ifdef MENSURA_HAVE_LIQUID

auto liquid_many(liquid_iirdes_filtertype family, liquid_iirdes_bandtype band, unsigned order) {
    return [=] {
        std::array<float, 60> b{}, a{};
        for (int i = 0; i < kDesigns; ++i) {
            liquid_iirdes(family, band, LIQUID_IIRDES_SOS, order, 0.1f, 0.15f, 0.1f, 60.0f, b.data(), a.data());
            benchmark::DoNotOptimize(b[0]);
            benchmark::DoNotOptimize(a[0]);
            benchmark::ClobberMemory();
        }
    };
}

void Default_design_against_liquid(benchmark::State &state) {
    bench::compare(
        state, kDesigns,
        [] {
            TIIRFilter f;
            for (int i = 0; i < kDesigns; ++i) {
                initTIIRFilter(&f, ptLowPass, 40.0, 360.0);
                benchmark::DoNotOptimize(f.Coeffs.b0);
                benchmark::ClobberMemory();
            }
        },
        liquid_many(LIQUID_IIRDES_BUTTER, LIQUID_IIRDES_LOWPASS, 6));
}
MENSURA_COMPARE(Default_design_against_liquid, 400);

void Elliptic_band_pass_6_design_against_liquid(benchmark::State &state) {
    bench::compare(state, kDesigns, design_many(request(ptBandPass, pfElliptic, 6)),
                   liquid_many(LIQUID_IIRDES_ELLIP, LIQUID_IIRDES_BANDPASS, 6));
}
MENSURA_COMPARE(Elliptic_band_pass_6_design_against_liquid, 400);

#endif

}  // namespace

BENCHMARK_MAIN();
