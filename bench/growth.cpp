// How time and memory of each module grow: calls at several sizes, as JSON for bench/performance.py.
//
// A time is the median of quiet rounds (quiet.h), memory the most that a call has on the heap at once.

#include <malloc.h>
#include <mensura/mensura.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <numeric>
#include <vector>

#include "noise.h"
#include "quiet.h"

// ---- the heap: this program's malloc takes the place of glibc's, for the library too ----

namespace {
std::size_t in_use = 0, most_in_use = 0;

void *taken(void *p) {
    if (p) in_use += malloc_usable_size(p);
    most_in_use = std::max(most_in_use, in_use);
    return p;
}
}  // namespace

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void *p);
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

void *malloc(std::size_t size) { return taken(__libc_malloc(size)); }
void *calloc(std::size_t count, std::size_t size) { return taken(__libc_calloc(count, size)); }
void *aligned_alloc(std::size_t alignment, std::size_t size) { return taken(__libc_memalign(alignment, size)); }
void free(void *p) {
    if (p) in_use -= malloc_usable_size(p);
    __libc_free(p);
}
}

namespace {

using Samples = std::vector<double>;
using Call = std::function<void()>;

struct Growth {
    const char *what, *by, *expected;
    std::vector<int> sizes;
    Call (*at)(int n);  // has its data at that size
};

Samples noise(int n) { return bench::noise(static_cast<std::size_t>(n)); }

// ---- complex numbers and roots ----

template <CplxD (*function)(CplxD)>
Call thousand_times(int magnitude) {
    return [z = CplxD{0.6 * magnitude, 0.8 * magnitude}] {
        [[maybe_unused]] volatile double kept = 0;
        for (int i = 0; i < 1000; ++i) kept = function(z).re;
    };
}

CplxD square(CplxD z) { return CplxDMult(z, z); }
CplxD cube_root(CplxD z) { return CplxDPow(z, 1.0 / 3); }

Call roots(int degree) {
    return [degree, p = noise(8 * (degree + 1))] {
        for (std::size_t i = 0; i < p.size(); i += static_cast<std::size_t>(degree) + 1) {
            std::array<double, 101> coefficients{};
            std::array<CplxD, 101> found{};
            std::copy_n(&p[i], degree + 1, coefficients.begin());
            FindRoots(degree, coefficients.data(), found.data());
        }
    };
}

// ---- filters ----

// The three sections of the default low-pass, again and again.
IIRCoeffs cascade(int sections) {
    TIIRFilter filter;
    initTIIRFilter(&filter, ptLowPass, 40, 360);
    IIRCoeffs &c = filter.Coeffs;
    for (std::size_t k = 3; k < static_cast<std::size_t>(sections); ++k)
        for (double *values : {c.a0, c.a1, c.a2, c.b0, c.b1, c.b2}) values[k] = values[k % 3];
    c.NumSections = sections;
    return c;
}

Samples packed(int sections) {
    const IIRCoeffs c = cascade(sections);
    Samples sos;
    for (std::size_t k = 0; k < static_cast<std::size_t>(sections); ++k)
        for (const double x : {c.b0[k], c.b1[k], c.b2[k], 1.0, c.a1[k], c.a2[k]}) sos.push_back(x);
    return sos;
}

Call filter_samples(int sections) {
    TIIRFilter filter{};
    filter.Coeffs = cascade(sections);
    return [filter, x = noise(1000), y = Samples(1000)]() mutable {
        for (std::size_t i = 0; i < x.size(); ++i) y[i] = IIRFilter(&filter, x[i]);
    };
}

Call filter_channels(int count) {
    const auto bank = std::make_shared<TIIRFilterBank>();
    initTIIRFilters(bank.get(), ptLowPass, count, 40, 360);
    return [bank, count, x = noise(1000 * count), y = Samples(10)]() mutable {
        for (std::size_t i = 0; i < x.size(); i += static_cast<std::size_t>(count))
            IIRFilters(bank.get(), &x[i], y.data());
    };
}

Call filter_block(int sections, int n) {
    return
        [c = cascade(sections), n, x = noise(n), y = noise(n)]() mutable { FilterWithIIR(x.data(), y.data(), n, c); };
}

Call zero_phase(int n) {
    TIIRFilter filter{};
    filter.Coeffs = cascade(3);
    return [filter, n, x = noise(n), y = noise(n)]() mutable { IIRFilterZeroPhase(&filter, x.data(), y.data(), n); };
}

Call response(int n) {
    return [c = cascade(3), n, re = noise(n), im = noise(n)]() mutable {
        IIRFreqResponse(c, c.NumSections, re.data(), im.data(), n);
    };
}

template <int family>
Call design(int poles) {
    return [poles] {
        [[maybe_unused]] volatile double kept =
            CalcIIRFilterCoeff({ptLowPass, 0.2, 0.1, 0, {family, poles, 0.1, 60, 0.2}}).b0[0];
    };
}

Call sos_block(int sections, int n) {
    return [s = packed(sections), sections, n, state = Samples(80), x = noise(n), y = noise(n)]() mutable {
        mensura_sos_filter(s.data(), sections, state.data(), x.data(), 1, y.data(), 1, n);
    };
}

Call sos_channels(int channels) {
    return [s = packed(3), channels, state = Samples(12UL * static_cast<std::size_t>(channels)),
            x = noise(1000 * channels), y = noise(1000 * channels)]() mutable {
        mensura_sos_filter_channels(s.data(), 3, state.data(), channels, x.data(), channels, 1, y.data(), channels, 1,
                                    1000);
    };
}

Call sos_both_ways(int n) {
    return [s = packed(3), n, x = noise(n), y = noise(n)]() mutable {
        mensura_sos_filtfilt(s.data(), 3, MENSURA_SOS_ENDS_ODD, -1, x.data(), 1, y.data(), 1, n, nullptr);
    };
}

template <int family>
Call sos_design(int poles) {
    mensura_sos_request request;
    mensura_sos_default_request(&request, sizeof request);
    request.family = family;
    request.poles = poles;
    request.rate = 360;
    request.edge[0] = 40;
    return [request, s = Samples(6UL * MENSURA_SOS_MAX_SECTIONS)]() mutable {
        mensura_sos_design(&request, s.data(), MENSURA_SOS_MAX_SECTIONS);
    };
}

// ---- spectra; there and back, so that the data neither grow nor fade away ----

template <void (*transform)(double *, double *, int, int)>
Call there_and_back(int n) {
    return [n, re = noise(n), im = noise(n)]() mutable {
        transform(re.data(), im.data(), n, 0);
        transform(re.data(), im.data(), n, 1);
    };
}

Call real_bins(int n) {
    return [n, x = noise(n), re = noise(n), im = noise(n)]() mutable { RealSigDFT(x.data(), re.data(), im.data(), n); };
}

template <double (*bin)(const double *, int, double)>
Call one_bin(int n) {
    return [n, x = noise(n)] { [[maybe_unused]] volatile double kept = bin(x.data(), n, 0.3); };
}

template <int kind>
Call window(int n) {
    return [n, x = noise(n), y = Samples(static_cast<std::size_t>(n))]() mutable {
        std::ranges::copy(x, y.begin());
        WindowData(y.data(), n, kind, 0, 8, 0);
    };
}

// ---- matrices and the Kalman filter ----

Call fixed_matrices(int n, RMATRIX *(*f)(const RMATRIX *, const RMATRIX *, RMATRIX *)) {
    const auto m = std::make_shared<std::array<RMATRIX, 3>>();
    for (RMATRIX &matrix : *m) setRMATRIX_ptr(noise(n * n).data(), n, n, &matrix);
    return [m, f] { f(&(*m)[0], &(*m)[1], &(*m)[2]); };
}

RMATRIX *inverse_of_first(const RMATRIX *a, const RMATRIX *, RMATRIX *out) { return rmatrix_inverse_ptr(a, out); }

std::shared_ptr<Matrix> heap_matrix(int n) {
    std::shared_ptr<Matrix> m{matrix_new(n, n), matrix_delete};
    const Samples values = noise(n * n);
    for (int i = 0; i < n; ++i) std::copy_n(values.begin() + i * n, n, m->v[i]);
    return m;
}

Call heap_product(int n) {
    return [m = heap_matrix(n)] { matrix_delete(matrix_mul(m.get(), m.get())); };
}

Call reflections(int n) {
    return [m = heap_matrix(n)] {
        Matrix *r = nullptr, *q = nullptr;
        householder(m.get(), &r, &q);
        matrix_delete(r);
        matrix_delete(q);
    };
}

Call kalman_update(int states) {
    const int measurements = states / 3;
    const auto unit = [](int rows, int cols, double x) {
        Samples m(static_cast<std::size_t>(rows * cols));
        for (std::size_t i = 0; i < static_cast<std::size_t>(rows); ++i) m[i * static_cast<std::size_t>(cols) + i] = x;
        return m;
    };
    const auto kf = std::make_shared<KalmanFilter>();
    const Samples one = unit(states, states, 1), little = unit(states, states, 0.01);
    const Samples picks = unit(measurements, states, 1), errors = unit(measurements, measurements, 1);
    initKalmanFilter_d(kf.get(), one.data(), picks.data(), little.data(), errors.data(), one.data(), nullptr,
                       measurements, states);
    return [kf, z = noise(measurements), x = noise(states)]() mutable {
        KalmanFilter_update_d(kf.get(), z.data(), x.data());
    };
}

// ---- streams, smoothing, differential equations ----

Call moving_average(int length) {
    MovingAverageOnline average;
    init_move_average_filter_online(&average, length);
    return [average, x = noise(1000)]() mutable {
        [[maybe_unused]] volatile double kept = 0;
        for (const double sample : x) kept = move_average_filter_online(&average, sample);
    };
}

Call moving_averages(int channels) {
    const auto bank = std::make_shared<MovingAverageBank>();
    init_move_average_filter_onlines(bank.get(), 100, channels);
    return [bank, channels, x = noise(1000 * channels), y = Samples(MOVING_AVERAGE_CHANNELS)]() mutable {
        for (std::size_t i = 0; i < x.size(); i += static_cast<std::size_t>(channels))
            move_average_filter_onlines(bank.get(), &x[i], y.data());
    };
}

Call derivative(int n) {
    return [n, x = noise(n), y = noise(n)]() mutable { central_difference(x.data(), y.data(), n, 0.1); };
}

template <void (*routine)(const double *, double *, int)>
Call smooth(int n) {
    return [n, x = noise(n), y = noise(n)]() mutable { routine(x.data(), y.data(), n); };
}

int decay(double, const double *y, void *count, double *dydt) {
    for (int i = 0; i < *static_cast<int *>(count); ++i) dydt[i] = -y[i];
    return 0;
}

Call adaptive(int components, double divisions) {
    return [components, divisions, y = Samples(20, 1)]() mutable {
        std::array<double, 20> start;
        start.fill(1);
        rkf45(0, 1, divisions, 1e-6, decay, start.data(), components, &components, y.data());
    };
}

Call fixed_steps(int components, double rate) {
    return [components, rate, y = Samples(20, 1)]() mutable {
        std::array<double, 20> start;
        start.fill(1);
        rkf452(0, 1, rate, decay, start.data(), components, &components, y.data());
    };
}

const std::vector<int> kRecord = {100, 1000, 10000, 100000, 1000000}, kMatrix = {1, 3, 10, 30, 100},
                       kTransform = {16, 128, 1024, 8192, 65536, 1048576}, kSlow = {10, 100, 1000, 10000},
                       kSections = {1, 3, 10, 20}, kChannels = {1, 3, 10}, kPoles = {2, 5, 10, 20};

const Growth kGrowth[] = {
    {"`CplxDMult`, 1000 times", "magnitude", "constant", {1, 10, 100, 1000}, thousand_times<square>},
    {"`CplxDPow`, 1000 times", "magnitude", "constant", {1, 10, 100, 1000}, thousand_times<cube_root>},
    {"`CplxDSin`, 1000 times", "magnitude", "constant", {1, 10, 100}, thousand_times<CplxDSin>},
    {"`FindRoots`, 8 random polynomials", "degree", "n²: n roots by passes of n terms", {3, 10, 30, 100}, roots},
    {"`IIRFilter`, 1000 samples", "sections", "n", {1, 3, 10, 50}, filter_samples},
    {"`IIRFilters`, 1000 instants", "channels", "n", kChannels, filter_channels},
    {"`FilterWithIIR`, 3 sections", "samples", "n", kRecord, [](int n) { return filter_block(3, n); }},
    {"`FilterWithIIR`, 10000 samples", "sections", "n", kSections, [](int n) { return filter_block(n, 10000); }},
    {"`IIRFilterZeroPhase`", "samples", "n", kRecord, zero_phase},
    {"`IIRFreqResponse`", "frequencies", "n", kRecord, response},
    {"`CalcIIRFilterCoeff`, Butterworth", "poles", "n", kPoles, design<pfButterworth>},
    {"`CalcIIRFilterCoeff`, Chebyshev", "poles", "n: the corner is searched on a grid", kPoles, design<pfChebyshev>},
    {"`CalcIIRFilterCoeff`, Bessel", "poles", "n² for the roots", {2, 5, 10, 12}, design<pfBessel>},
    {"`CalcIIRFilterCoeff`, Papoulis", "poles", "n² for the roots, more where they are tried again", kPoles,
     design<pfPapoulis>},
    {"`CalcIIRFilterCoeff`, elliptic",
     "poles",
     "n: the corner is searched on a grid",
     {2, 5, 10, 15},
     design<pfElliptic>},
    {"`mensura_sos_design`, Butterworth", "poles", "n", kPoles, sos_design<pfButterworth>},
    {"`mensura_sos_design`, elliptic", "poles", "n", {2, 5, 10, 15}, sos_design<pfElliptic>},
    {"`mensura_sos_filter`, 3 sections", "samples", "n", kRecord, [](int n) { return sos_block(3, n); }},
    {"`mensura_sos_filter`, 10000 samples", "sections", "n", kSections, [](int n) { return sos_block(n, 10000); }},
    {"`mensura_sos_filter_channels`, 1000 samples",
     "channels",
     "n; 1000 channels are 8 MB, which each group of channels reads anew",
     {1, 10, 100, 1000},
     sos_channels},
    {"`mensura_sos_filtfilt`", "samples", "n", kRecord, sos_both_ways},
    {"`FFT`, there and back", "points", "n log n", kTransform, there_and_back<FFT>},
    {"`DFT`, there and back", "points", "n²", kSlow, there_and_back<DFT>},
    {"`RealSigDFT`", "points", "n²", kSlow, real_bins},
    {"`SingleFreqDFT`", "samples", "n", kRecord, one_bin<SingleFreqDFT>},
    {"`Goertzel`", "samples", "n", kRecord, one_bin<Goertzel>},
    {"`WindowData`, Hanning", "points", "n", kRecord, window<wkHanning>},
    {"`WindowData`, Kaiser", "points", "n", kRecord, window<wkKaiser>},
    {"`rmatrix_add_ptr`", "rows", "n²", kMatrix, [](int n) { return fixed_matrices(n, rmatrix_add_ptr); }},
    {"`rmatrix_multi_ptr`", "rows", "n³", kMatrix, [](int n) { return fixed_matrices(n, rmatrix_multi_ptr); }},
    {"`rmatrix_inverse_ptr`", "rows", "n³", kMatrix, [](int n) { return fixed_matrices(n, inverse_of_first); }},
    {"`matrix_mul`", "rows", "n³; memory n²", {3, 10, 30, 100, 300}, heap_product},
    {"`householder`", "rows", "n⁴: n products of full matrices; memory n²", {3, 10, 30, 100}, reflections},
    {"`KalmanFilter_update_d`, a measurement for 3 states", "states", "n³", {3, 9, 30, 90}, kalman_update},
    {"`move_average_filter_online`, 1000 samples", "length", "n", {10, 100, 1000}, moving_average},
    {"`move_average_filter_onlines`, 1000 instants", "channels", "n", kChannels, moving_averages},
    {"`central_difference`", "samples", "n", kRecord, derivative},
    {"`linearSmooth3`", "samples", "n", kRecord, smooth<linearSmooth3>},
    {"`cubicSmooth7`", "samples", "n", kRecord, smooth<cubicSmooth7>},
    {"`rkf45`, 3 components", "steps", "n", {60, 200, 600}, [](int n) { return adaptive(3, n); }},
    {"`rkf45`, 100 steps", "components", "n", {2, 5, 20}, [](int n) { return adaptive(n, 100); }},
    {"`rkf452`, 3 components", "steps", "n", {10, 100, 1000, 10000}, [](int n) { return fixed_steps(3, n); }},
};

// ---- measuring ----

double nanoseconds(const Call &call) {
    constexpr std::size_t kRounds = 9;
    int times = 1;
    const auto run = [&] {
        for (int i = 0; i < times; ++i) call();
    };
    while (bench::seconds(run) < 100e-6) times *= 2;
    Samples all, quiet;
    for (std::size_t attempt = 0; attempt < 5 * kRounds && quiet.size() < kRounds; ++attempt) {
        const double before = bench::probe().now();
        const double t = all.emplace_back(bench::seconds(run) / times * 1e9);
        const double after = bench::probe().now();
        if (bench::probe().quiet(before) && bench::probe().quiet(after)) quiet.push_back(t);
    }
    Samples &counted = quiet.empty() ? all : quiet;
    std::ranges::sort(counted);
    return counted[counted.size() / 2];
}

std::size_t bytes(const Call &call) {
    const std::size_t before = most_in_use = in_use;
    call();
    return most_in_use - before;
}

void print(const Growth &g) {
    std::printf(R"({"what": "%s", "by": "%s", "expected": "%s", "sizes": [)", g.what, g.by, g.expected);
    const char *separator = "";
    for (const int n : g.sizes) {
        const Call call = g.at(n);
        call();
        std::printf("%s[%d, %.3g, %zu]", separator, n, nanoseconds(call), bytes(call));
        separator = ", ";
    }
    std::printf("]}");
}

}  // namespace

int main() {
    const char *separator = "[";
    for (const Growth &g : kGrowth) {
        std::printf("%s\n", separator);
        print(g);
        separator = ",";
    }
    std::printf("\n]\n");
}
