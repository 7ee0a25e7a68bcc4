// Filters as requested: running and designing them.

#include <mensura/iir.h>
#include <mensura/sos.h>

#include <algorithm>
#include <array>
#include <vector>

#include "compare.h"
#include "direct_form_peer.h"
#ifdef MENSURA_HAVE_LIQUID
#include <liquid/liquid.h>
#endif

namespace {

constexpr std::size_t kSamples = 10000;
constexpr int kSections = 3;

// The sections that FilterWithIIR runs of the default low-pass, and their state.
struct LowPass {
    IIRCoeffs record;
    std::array<double, 6 * kSections> sos;
    std::array<double, 4 * kSections> state{};

    LowPass() {
        TIIRFilter f;
        initTIIRFilter(&f, ptLowPass, 40.0, 360.0);
        record = f.Coeffs;
        for (std::size_t k = 0; k < kSections; ++k) {
            const double numbers[] = {record.b0[k], record.b1[k], record.b2[k], 1, record.a1[k], record.a2[k]};
            std::ranges::copy(numbers, &sos[6 * k]);
        }
    }
    void run(const double *x, double *y, std::size_t n, ptrdiff_t stride = 1) {
        mensura_sos_filter(sos.data(), kSections, state.data(), x, stride, y, stride, static_cast<ptrdiff_t>(n));
    }
};

// A long block, per sample, against a peer that is made from the low-pass and run over the same samples.
template <typename Run>
void compare_block(benchmark::State &state, Run peer) {
    LowPass low_pass;
    const std::vector<double> in = bench::noise(kSamples);
    std::vector<double> out(kSamples);
    bench::compare(
        state, kSamples, [&] { low_pass.run(in.data(), out.data(), kSamples); }, [&] { peer(in.data(), out.data()); });
}

void sos_filter_against_FilterWithIIR(benchmark::State &state) {
    const LowPass low_pass;
    compare_block(state, [&](const double *x, double *y) { FilterWithIIR(x, y, kSamples, low_pass.record); });
}
MENSURA_COMPARE(sos_filter_against_FilterWithIIR, 400);

void sos_filter_against_contracted_transposed_form(benchmark::State &state) {
    const LowPass low_pass;
    peer::Transposed sections[kSections];
    for (std::size_t k = 0; k < kSections; ++k) {
        const double *s = &low_pass.sos[6 * k];
        sections[k] = {s[0], s[1], s[2], s[4], s[5], 0, 0};
    }
    compare_block(state, [&](const double *x, double *y) { peer::run_transposed(sections, x, y, kSamples); });
}
MENSURA_COMPARE(sos_filter_against_contracted_transposed_form, 400);

#ifdef MENSURA_HAVE_LIQUID
void sos_filter_against_liquid(benchmark::State &state) {
    const LowPass low_pass;
    std::array<float, 3 * kSections> b, a;
    for (std::size_t k = 0; k < kSections; ++k)
        for (std::size_t i = 0; i < 3; ++i) {
            b[3 * k + i] = static_cast<float>(low_pass.sos[6 * k + i]);
            a[3 * k + i] = static_cast<float>(low_pass.sos[6 * k + 3 + i]);
        }
    auto *const filter = iirfilt_rrrf_create_sos(b.data(), a.data(), kSections);
    const std::vector<double> noise = bench::noise(kSamples);
    std::vector<float> in(noise.begin(), noise.end()), out(kSamples);
    compare_block(
        state, [&](const double *, double *) { iirfilt_rrrf_execute_block(filter, in.data(), kSamples, out.data()); });
    iirfilt_rrrf_destroy(filter);
}
MENSURA_COMPARE(sos_filter_against_liquid, 400);
#endif

// Per sample: calls of 8 samples against one of all.
void sos_filter_8_samples_a_call_against_long_block(benchmark::State &state) {
    LowPass pieces;
    LowPass whole;
    const std::vector<double> in = bench::noise(kSamples);
    std::vector<double> out(kSamples);
    bench::compare(
        state, kSamples,
        [&] {
            for (std::size_t i = 0; i < kSamples; i += 8) pieces.run(&in[i], &out[i], 8);
        },
        [&] { whole.run(in.data(), out.data(), kSamples); });
}
MENSURA_COMPARE(sos_filter_8_samples_a_call_against_long_block, 400);

// Per channel and sample, in an array of interleaved channels (a stride of 8) or one after the other.
void compare_channels(benchmark::State &state, std::size_t stride, std::size_t distance) {
    constexpr std::size_t kChannels = 8;
    const LowPass low_pass;
    std::vector<double> states(kChannels * low_pass.state.size());
    std::array<LowPass, kChannels> filters;
    const std::vector<double> in = bench::noise(kChannels * kSamples);
    std::vector<double> out(in.size());
    const auto x_stride = static_cast<ptrdiff_t>(stride), x_distance = static_cast<ptrdiff_t>(distance);
    bench::compare(
        state, static_cast<double>(in.size()),
        [&] {
            mensura_sos_filter_channels(low_pass.sos.data(), kSections, states.data(), kChannels, in.data(), x_stride,
                                        x_distance, out.data(), x_stride, x_distance, kSamples);
        },
        [&] {
            for (std::size_t c = 0; c < kChannels; ++c)
                filters[c].run(&in[c * distance], &out[c * distance], kSamples, x_stride);
        });
}

void sos_filter_channels_8_interleaved_against_one_by_one(benchmark::State &state) { compare_channels(state, 8, 1); }
MENSURA_COMPARE(sos_filter_channels_8_interleaved_against_one_by_one, 100);

void sos_filter_channels_8_planar_against_one_by_one(benchmark::State &state) { compare_channels(state, 1, kSamples); }
MENSURA_COMPARE(sos_filter_channels_8_planar_against_one_by_one, 100);

// ---- design ----

constexpr int kDesigns = 20;

auto design_many(int family) {
    return [family] {
        mensura_sos_request request;
        mensura_sos_default_request(&request, sizeof request);
        request.family = family;
        request.rate = 360;
        request.edge[0] = 40;
        std::array<double, 6 * MENSURA_SOS_MAX_SECTIONS> sos;
        for (int i = 0; i < kDesigns; ++i) {
            mensura_sos_design(&request, sos.data(), MENSURA_SOS_MAX_SECTIONS);
            benchmark::DoNotOptimize(sos);
            benchmark::ClobberMemory();
        }
    };
}

// The record of the exported design with the same poles and edge.
auto record_many(int family) {
    return [family] {
        IIRCoeffs coeffs;
        for (int i = 0; i < kDesigns; ++i) {
            coeffs = CalcIIRFilterCoeff({ptLowPass, 40.0 / 180.0, 0.1, 0.0, {family, 6, 0.1, 60.0, 0.0}});
            benchmark::DoNotOptimize(coeffs.b0);
            benchmark::ClobberMemory();
        }
    };
}

void sos_design_Butterworth_6_against_CalcIIRFilterCoeff(benchmark::State &state) {
    bench::compare(state, kDesigns, design_many(pfButterworth), record_many(pfButterworth));
}
MENSURA_COMPARE(sos_design_Butterworth_6_against_CalcIIRFilterCoeff, 400);

void sos_design_elliptic_6_against_CalcIIRFilterCoeff(benchmark::State &state) {
    bench::compare(state, kDesigns, design_many(pfElliptic), record_many(pfElliptic));
}
MENSURA_COMPARE(sos_design_elliptic_6_against_CalcIIRFilterCoeff, 400);

}  // namespace

BENCHMARK_MAIN();
