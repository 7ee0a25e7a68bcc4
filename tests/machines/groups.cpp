#include "groups.h"

#include <mensura/mensura.h>

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <ranges>

#include "support/noise.h"
#include "support/reference/smooth.h"

namespace {

std::vector<double> noise(std::size_t n, unsigned seed) { return support::Noise(seed)(n); }

void add(Results &results, std::convertible_to<double> auto value) { results.push_back(static_cast<double>(value)); }
void add(Results &results, CplxD z) { results.insert(results.end(), {z.re, z.im}); }
void add(Results &results, std::initializer_list<double> values) { results.insert(results.end(), values); }
void add(Results &results, const std::ranges::range auto &values) {
    for (const auto &value : values) add(results, value);
}

template <typename Number>
std::span<const Number> first(int n, const Number *values) {
    return {values, static_cast<std::size_t>(n)};
}

void add(Results &results, const RMATRIX &m) {
    for (int i = 0; i < m.rows; ++i) add(results, first(m.cols, m.data + RMATRIX_CAPACITY * i));
}

using Owner = std::unique_ptr<Matrix, decltype([](Matrix *m) { matrix_delete(m); })>;

void add(Results &results, const Owner &m) {
    for (int i = 0; i < m->m; ++i) add(results, first(m->n, m->v[i]));
}

void add_all(Results &results, const auto &...values) { (add(results, values), ...); }

std::vector<double *> rows_of(auto &&packed, std::size_t columns) {
    std::vector<double *> rows;
    for (std::size_t at = 0; at < packed.size(); at += columns) rows.push_back(&packed[at]);
    return rows;
}

// ---- Complex numbers ----

template <typename F>
void for_complex_pairs(F f) {
    const auto x = noise(4000, 1);
    for (std::size_t i = 0; i < x.size(); i += 4) f(getCplxD(9 * x[i], x[i + 1]), getCplxD(x[i + 2], 9 * x[i + 3]));
}

void complex_arithmetic(Results &results) {
    for_complex_pairs([&](CplxD a, CplxD b) {
        for (const auto f : {CplxDAdd, CplxDSub, CplxDMult, CplxDDivision}) add(results, f(a, b));
        add(results, CplxDMult_coef(CplxDConj(a), b.re));
        add(results, CplxDCabs(a));
    });
}

void complex_functions(Results &results) {
    for_complex_pairs([&](CplxD a, CplxD b) {
        for (const auto f : {CplxDCos, CplxDSin, CplxDTan}) add(results, f(a));
        add(results, CplxDPow(a, 0.3 * b.im));
    });
}

// ---- Roots ----

using Long = std::array<long double, 16>;

void roots_closed_forms(Results &results) {
    const auto x = noise(2000, 2);
    for (std::size_t i = 0; i + 5 <= x.size(); i += 5) {
        Long p{1}, re{}, im{};
        std::copy_n(&x[i], 5, &p[1]);
        Long quartic = p, cubic = p, any = p;
        QuadRoots(p.data(), re.data(), im.data());
        CubicRoots(cubic.data(), &re[2], &im[2]);
        BiQuadRoots(quartic.data(), &re[5], &im[5]);
        ReversePoly(any.data(), 4);
        QuadCubicRoots(any.data(), 4, &re[9], &im[9]);
        InvertRoots(4, &re[9], &im[9]);
        add_all(results, re, im);
    }
}

void roots_stages(Results &results) {
    const auto x = noise(14, 3);
    Long p{}, derivative{}, k{}, quotient{}, scratch{}, tuv{};
    std::ranges::copy(x, p.begin());
    const int n = 12;
    for (int mode = 0; mode < 4; ++mode) {
        int flag = 0;
        long double start = 0.5L;
        DerivOfP(p.data(), n, derivative.data());
        SetTUVandK(p.data(), n, tuv.data(), derivative.data(), k.data(), 30 * mode, 0.7L, mode, quotient.data(), &flag);
        QuadSynDiv(p.data(), n, tuv.data(), quotient.data());
        UpdateTUV(0, p.data(), n, quotient.data(), k.data(), scratch.data(), tuv.data(), &flag);
        QuadIterate(0, p.data(), quotient.data(), k.data(), scratch.data(), n, tuv.data(), &flag);
        add(results, first(3, tuv.data()));
        RealIterate(0, p.data(), quotient.data(), derivative.data(), scratch.data(), n, &start);
        add(results, start);
    }
}

void roots_found(Results &results) {
    for (int n = 1; n <= 100; n += n / 6 + 1) {
        auto p = noise(static_cast<std::size_t>(n) + 1, 4);
        std::array<CplxD, 100> roots{};
        std::array<long double, 100> re{}, im{};
        std::array<long double, 101> precise{};
        std::ranges::copy(p, precise.begin());
        const int count = FindRoots(n, p.data(), roots.data());
        PFiftyOne(precise.data(), n, re.data(), im.data());
        add_all(results, first(count, roots.data()), first(n, re.data()));
    }
}

// ---- Filters ----

IIRCoeffs sections(double shift) {  // three stable ones
    IIRCoeffs c{};
    for (const std::size_t k : {0U, 1U, 2U}) {
        c.a0[k] = 1;
        c.a1[k] = -1.25 + 0.25 * static_cast<double>(k) + shift;
        c.a2[k] = 0.5;
        c.b0[k] = c.b2[k] = 0.1;
        c.b1[k] = 0.19;
    }
    c.NumSections = 3;
    return c;
}

void iir_filters(Results &results) {
    for (int k = 0; k <= 22; ++k) add(results, Factorial(k));
    auto x = noise(4000, 5);
    TIIRFilter filter{};
    filter.Coeffs = sections(0);
    for (const double sample : x) add(results, IIRFilter(&filter, sample));
    const auto bank = std::make_unique<TIIRFilterBank>();
    for (std::size_t i = 0; i < 10; ++i) bank->Filters[i].Coeffs = sections(0.02 * static_cast<double>(i));
    bank->Count = 10;
    for (std::size_t i = 0; i + 10 <= x.size(); i += 10) IIRFilters(bank.get(), &x[i], &x[i]);
    add(results, x);
    add(results, first(4000, IIRFilterZeroPhase(&filter, x.data(), nullptr, 4000)));
}

void iir_shared_registers(Results &results) {
    const auto x = noise(4000, 6);
    std::vector<double> y(x.size());
    FilterWithIIR(x.data(), y.data(), 4000, sections(0));
    add(results, y);
    for (int k = 0; k < 100; ++k)
        for (int j = 0; j < 3; ++j) add(results, SectCalc(x[static_cast<std::size_t>(k)], k, j, sections(0)));
}

void iir_designs(Results &results) {
    for (int pass = ptLowPass; pass <= ptAllPass; ++pass)
        for (int family = pfButterworth; family <= pfElliptic; ++family)
            for (int poles = 1; poles <= 12; poles += 2) {
                const IIRCoeffs c = CalcIIRFilterCoeff({pass, 0.3, 0.1, 3, {family, poles, 0.1, 60, 0.2}});
                for (const auto &values : {c.a0, c.a1, c.a2, c.b0, c.b1, c.b2}) add(results, first(6, values));
            }
    TIIRFilter filter;
    initTIIRFilter(&filter, ptHighPass, 40, 360);
    add(results, first(3, filter.Coeffs.a1));
    const auto bank = std::make_unique<TIIRFilterBank>();
    initTIIRFilters(bank.get(), ptNotch, 10, 60, 360);
    add(results, first(6, bank->Filters[9].Coeffs.a1));
    auto x = noise(500, 7);
    dataZeroPhaseFilter(x.data(), 500, 0.01, 0.5, 10);
    add(results, x);
}

void iir_prototypes(Results &results) {
    for (int n = 1; n <= 12; ++n) {
        std::array<CplxD, 50> roots{}, zeros{};
        int count = 0;
        const auto keep = [&](int poles) { add(results, first(poles, roots.data())); };
        keep(ButterworthPoly(n, roots.data()));
        keep(ChebyshevPoly(0.1, n, roots.data()));
        keep(GaussianPoly(n, roots.data()));
        keep(AdjustablePoly(0.3, n, roots.data()));
        keep(BesselPoly(n, roots.data()));
        keep(PapoulisPoly(n, roots.data()));
        keep(InvChebyPoly(60, n, roots.data(), zeros.data(), &count));
        keep(EllipticPoly(0.1, 60, n, roots.data(), zeros.data(), &count));
        std::array<std::array<double, 50>, 6> c{};
        std::array<double, 101> product{};
        const int quadratics = GetFilterCoeff(n, roots.data(), c[0].data(), c[1].data(), c[2].data());
        RebuildPoly(quadratics, product.data(), c[0].data(), c[1].data(), c[2].data());
        ReverseCoeff(product.data(), 2 * quadratics);
        c[5].fill(1);
        SetCornerFreq(quadratics, c[0].data(), c[1].data(), c[2].data(), c[3].data(), c[4].data(), c[5].data());
        add_all(results, product, c[0]);
        std::array<int, 12> order{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
        HeapIndexSort(c[1].data(), order.data(), n, 1);
        SortRootsByZeta(roots.data(), n, 1);
        add_all(results, roots, order[0], first(12, CalcLowPassProtoCoeff({pfBessel, n, 0.1, 60, 0}).Den1));
    }
}

void iir_response(Results &results) {
    std::array<double, 1000> re{}, im{};
    IIRFreqResponse(sections(0), 3, re.data(), im.data(), 1000);
    add_all(results, re, im);
}

// ---- Filters as requested ----

constexpr double kSections[] = {0.1, 0.19, 0.1, 1, -1.25, 0.5, 0.3, 0.1, 0, 1, -0.75, 0, 1, -0.5, 0.25, 1, -0.5, 0.5};

void sos_runs(Results &results) {
    constexpr int kChannels = 7, kSamples = 300;
    auto x = noise(kChannels * kSamples, 17);
    std::array<double, 12 * kChannels> state{};
    mensura_sos_steady_state(kSections, 3, x[0], state.data());
    mensura_sos_filter(kSections, 3, state.data(), x.data(), 1, x.data(), 1, 1000);
    mensura_sos_filter_channels(kSections, 3, state.data(), kChannels, x.data(), kChannels, 1, x.data(), kChannels, 1,
                                kSamples);
    for (int ends = MENSURA_SOS_ENDS_NONE; ends <= MENSURA_SOS_ENDS_CONSTANT; ++ends)
        mensura_sos_filtfilt(kSections, 3, ends, -1, x.data(), 1, x.data(), 1, 500, nullptr);
    std::array<double, 100> step{}, impulse{};
    mensura_sos_step_response(kSections, 3, step.data(), 100);
    mensura_sos_impulse_response(kSections, 3, impulse.data(), 100);
    double overshoot = 0;
    ptrdiff_t settling = 0;
    mensura_sos_step_figures(kSections, 1, 0.01, 1000, &overshoot, &settling);
    add_all(results, x, state, step, impulse, overshoot, settling, mensura_sos_extension(kSections, 3));
}

void sos_designs(Results &results) {
    mensura_sos_request request;
    mensura_sos_default_request(&request, sizeof request);
    request.rate = 1;
    std::array<double, MENSURA_SOS_MAX_SECTIONS * 6> sos{};
    for (int pass = ptLowPass; pass <= ptAllPass; ++pass)
        for (int family = pfButterworth; family <= pfElliptic; ++family)
            for (int poles = 1; poles <= 10; poles += 3) {
                request.pass_type = pass;
                request.family = family;
                request.poles = poles;
                request.edge[0] = 0.1;
                request.edge[1] = 0.15;
                const int n = mensura_sos_design(&request, sos.data(), MENSURA_SOS_MAX_SECTIONS);
                add_all(results, n, *mensura_sos_message(n) != 0, first(n < 0 ? 0 : 6 * n, sos.data()));
            }
    const mensura_sos_requirement band = {sizeof band, ptBandPass, 2, 0, 1, {0.1, 0.15}, {0.08, 0.2}, 1, 60};
    for (int family = -1; family <= pfElliptic; ++family)
        add_all(results, mensura_sos_order(&band, family, 0, &request, sizeof request), request.edge, request.level_db);
}

void sos_measures(Results &results) {
    auto f = noise(200, 18);
    for (double &frequency : f) frequency = 0.25 + 0.25 * frequency;
    std::vector<double> re(f.size()), im(f.size()), delay(f.size()), crossings(10), extremes(2);
    mensura_sos_response(kSections, 3, 1, f.data(), re.data(), im.data(), 200);
    mensura_sos_group_delay(kSections, 3, 1, f.data(), delay.data(), 200);
    add(results, mensura_sos_crossings(kSections, 3, 1, 2, crossings.data(), 10));
    mensura_sos_extremes(kSections, 3, 1, 0, 0.3, &extremes[0], &extremes[1]);
    mensura_sos_pole_radius(kSections, 3, &results.emplace_back());
    add_all(results, re, im, delay, crossings, extremes);
}

// ---- Spectra ----

void spectral_butterflies(Results &results) {
    for (int n = 8; n <= 4096; n *= 8) {
        const std::size_t size = static_cast<std::size_t>(n);
        const auto x = noise(2 * size, 8), w = noise(size, 9);  // any factors do
        std::vector<double> a(2 * size), b(2 * size);
        std::vector<int> order(size);
        ReArrangeInput(x.data(), &x[size], a.data(), &a[size], order.data(), n);
        Transform(b.data(), &b[size], a.data(), &a[size], w.data(), &w[size / 2], n);
        add_all(results, a, b, RequiredFFTSize(n + 1) + IsValidFFTSize(n));
    }
}

void fast_transforms(Results &results, int smallest, int largest) {
    for (int n = smallest; n <= largest; n *= 2)
        for (const int dir : {0, 1}) {
            const std::size_t size = static_cast<std::size_t>(n);
            auto x = noise(2 * size, 10), twiddles = x;
            FFT(x.data(), &x[size], n, dir);
            FillTwiddleArray(twiddles.data(), &twiddles[size / 2], n, dir);
            add_all(results, x, first(n, twiddles.data()));
        }
}

void spectral_fast(Results &results) { fast_transforms(results, 8, 16384); }
void spectral_fast_and_long(Results &results) { fast_transforms(results, 32768, 65536); }

void spectral_transforms(Results &results) {
    for (const int n : {8, 64, 1000, 1024}) {
        const std::size_t size = static_cast<std::size_t>(n);
        auto x = noise(2 * size, 10), bins = x;
        RealSigDFT(x.data(), bins.data(), &bins[size], n);
        DFT(x.data(), &x[size], n, 1);
        add_all(results, bins, x);
    }
}

void spectral_single_frequencies(Results &results) {
    const auto x = noise(1000, 11);
    for (int i = 1; i < 100; ++i)
        for (const auto f : {SingleFreqDFT, Goertzel}) add(results, f(x.data(), 1000, 0.01 * i));
}

void spectral_windows(Results &results) {
    for (int kind = wkNone; kind <= wkSine; ++kind)
        for (const int n : {5, 64, 1000}) {
            std::vector<double> window(static_cast<std::size_t>(n), 1);
            WindowData(window.data(), n, kind, 0.1, 3, 1);
            add(results, window);
            add(results, {Bessel(0.01 * n), Sinc(0.01 * n)});
        }
}

// ---- Matrices ----

void matrix_fixed(Results &results) {
    for (const int n : {1, 3, 9, 32, 100}) {
        const std::size_t size = static_cast<std::size_t>(n * n);
        auto x = noise(2 * size, 12);
        const auto rows = rows_of(std::span(x).subspan(size), static_cast<std::size_t>(n));
        const auto m = std::make_unique<std::array<RMATRIX, 4>>();
        auto &[a, b, c, d] = *m;
        setRMATRIX_ptr(x.data(), n, n, &a);
        setRMATRIX1_ptr(rows.data(), n, n, &b);
        add(results, *rmatrix_multi_ptr(&a, &b, &c));
        add(results, *rmatrix_inverse_ptr(&a, &c));
        add(results, *rmatrix_add_ptr(&a, rmatrix_sub_ptr(&a, &b, &c), &c));
        rmatrix_transpose_ptr(&a, &c);
        initRMATRIX(&d, n, n);
        initRMATRIX_identity(&d, n, n);
        copyRMATRIX(&c, &d);
        c = rmatrix_add(rmatrix_multi(a, rmatrix_sub(b, a)), rmatrix_transpose(rmatrix_inverse(b)));
        add(results, c);
        c = setRMATRIX(x.data(), n, 1);
        add_all(results, first(n, rmatrix_to_vector(&c, nullptr)), setRMATRIX1(rows.data(), n, n), isEmptyRMATRIX(&d));
    }
}

void matrix_heap(Results &results) {
    auto x = noise(40 * 21, 13);
    const auto rows = rows_of(x, 21);
    const Owner a{matrix_copy(21, rows.data(), 40)}, zero{matrix_new(21, 3)}, reflection{vmul(rows[0], 40)};
    matrix_transpose(a.get());
    const Owner product{matrix_mul(reflection.get(), a.get())}, minor{matrix_minor(a.get(), 2)};
    Matrix *r = nullptr, *q = nullptr;
    householder(a.get(), &r, &q);
    add_all(results, a, zero, product, minor, Owner{q}, Owner{r});
    std::array<double, 40> column{};
    mcol(a.get(), column.data(), 3);
    vmadd(column.data(), rows[1], 0.3, column.data(), 21);
    add(results, vnorm(column.data(), 40));
    add(results, first(40, vdiv(column.data(), 3, column.data(), 40)));
}

// ---- The Kalman filter ----

void kalman(Results &results) {
    std::array<double, 81> A{}, Q{}, P{};
    std::array<double, 27> C{};
    std::array<double, 9> R{}, x{};
    getKalmanFilterA(A.data(), 9, 0.02);
    getKalmanFilterC(C.data(), 3);
    getKalmanFilterQ(Q.data(), 9, 1e-4, 1e-5, 1e-6, 1e-2, 1e-3, 1);
    getKalmanFilterR(R.data(), 3, 0.25);
    getKalmanFilterP(P.data(), 9, 1);
    auto a_rows = rows_of(A, 9), c_rows = rows_of(C, 9), q_rows = rows_of(Q, 9), r_rows = rows_of(R, 3),
         p_rows = rows_of(P, 9);
    const auto filters = std::make_unique<std::array<KalmanFilter, 2>>();
    auto &[kf, other] = *filters;
    initKalmanFilter_d(&other, A.data(), C.data(), Q.data(), R.data(), P.data(), nullptr, 3, 9);
    initKalmanFilter_d1(&kf, a_rows.data(), c_rows.data(), q_rows.data(), r_rows.data(), p_rows.data(), x.data(), 3, 9);
    resetKalmanFilter_d(&kf, x.data());
    initKalmanFilter(&kf, &other.A, &other.C, &other.Q, &other.R, &other.P, nullptr);
    resetKalmanFilter(&kf);
    const auto z = noise(1200, 14);
    const auto measurement = std::make_unique<RMATRIX>();
    for (std::size_t i = 0; i + 12 <= z.size(); i += 12) {
        KalmanFilter_update_d(&kf, &z[i], x.data());
        KalmanFilter_update1_d(&kf, &z[i + 3], A.data(), x.data());
        KalmanFilter_update1_d1(&kf, &z[i + 6], a_rows.data(), x.data());
        add(results, *KalmanFilter_update1(&kf, setRMATRIX_ptr(&z[i + 9], 3, 1, measurement.get()), &other.A));
        add(results, *KalmanFilter_update(&other, measurement.get()));
        add(results, first(3, getKalmanFilter_out_d(&kf, x.data())));
        add(results, first(9, getKalmanFilter_state_d(&kf, x.data())));
    }
    add_all(results, *getKalmanFilter_out(&kf), *getKalmanFilter_state(&kf), kf.P);
}

// ---- Streams and smoothers ----

void online(Results &results) {
    const auto x = noise(3000, 15);
    std::vector<double> derivative(x.size());
    central_difference(x.data(), derivative.data(), 3000, 0.1);
    add(results, derivative);
    CentralDiffOnline differences[11];
    AmplitudeLimitOnline limits[11];
    const auto both = std::make_unique<LimitAverageOnline[]>(11);
    const auto average = std::make_unique<MovingAverageOnline>();
    const auto averages = std::make_unique<MovingAverageBank>();
    init_central_difference_online(&differences[10], 0.1);
    init_central_difference_onlines(differences, 10, 0.1);
    init_amlitude_limit_filer_online(&limits[10], 0.5);
    init_amlitude_limit_filer_onlines(limits, 10, 0.5);
    init_amlitude_limit_move_average_filter_online(&both[10], 16, 0.5);
    init_amlitude_limit_move_average_filter_onlines(both.get(), 16, 10, 0.5);
    init_move_average_filter_online(average.get(), 100);
    init_move_average_filter_onlines(averages.get(), 20, 10);
    for (std::size_t i = 0; i + 10 <= x.size(); i += 10) {
        double y[4][10];
        central_difference_onlines(differences, &x[i], y[0], 10);
        amlitude_limit_filer_onlines(limits, &x[i], y[1], 10);
        amlitude_limit_move_average_filter_onlines(both.get(), &x[i], y[2], 10);
        move_average_filter_onlines(averages.get(), &x[i], y[3]);
        add(results, y);
        add(results, central_difference_online(&differences[10], x[i]));
        add(results, amlitude_limit_filer_online(&limits[10], x[i]));
        add(results, amlitude_limit_move_average_filter_online(&both[10], x[i]));
        add(results, move_average_filter_online(average.get(), x[i]));
    }
}

void smooth(Results &results) {
    const auto x = noise(500, 16);
    for (const auto &smoother : reference::kSmoothers)
        for (const int n : {5, 20, 500}) {
            std::vector<double> y(static_cast<std::size_t>(n));
            smoother.run(x.data(), y.data(), n);
            add(results, y);
        }
}

// ---- Differential equations ----

int spin(double t, const double *y, void *, double *dydt) {  // a rigid body, driven
    dydt[0] = y[1] * y[2] + 0.01 * t;
    dydt[1] = -y[0] * y[2];
    dydt[2] = -0.51 * y[0] * y[1];
    return 0;
}

void ode(Results &results, auto run) {
    std::array<double, 3> y{0, 1, 1};
    for (int i = 0; i < 20; ++i) {
        run(0.5 * i, y.data());
        add(results, y);
    }
}

void ode_fixed_steps(Results &results) {
    ode(results, [](double t, double *y) { rkf452(t, t + 0.505, 100, spin, y, 3, nullptr, y); });
}

void ode_own_steps(Results &results) {
    ode(results, [](double t, double *y) { rkf45(t, t + 0.5, 20, 1e-7, spin, y, 3, nullptr, y); });
}

using enum Group::Bits;
constexpr Group kGroups[] = {
    {"complex.arithmetic", kExact, complex_arithmetic},
    {"complex.functions", kLibm, complex_functions},
    {"roots.closed_forms", kRoots, roots_closed_forms},
    {"roots.stages", kRoots, roots_stages},
    {"roots.found", kRoots, roots_found},
    {"iir.filters", kExact, iir_filters},
    {"iir.shared_registers", kExact, iir_shared_registers, true},
    {"iir.designs", kRoots, iir_designs},
    {"iir.prototypes", kRoots, iir_prototypes},
    {"iir.response", kLibm, iir_response},
    {"sos.runs", kExact, sos_runs},
    {"sos.designs", kLibm, sos_designs},
    {"sos.measures", kLibm, sos_measures},
    {"spectral.butterflies", kExact, spectral_butterflies},
    {"spectral.fast", kExact, spectral_fast},
    {"spectral.fast_and_long", kLibm, spectral_fast_and_long},
    {"spectral.transforms", kLibm, spectral_transforms},
    {"spectral.single_frequencies", kLibm, spectral_single_frequencies},
    {"spectral.windows", kLibm, spectral_windows},
    {"matrix.fixed", kExact, matrix_fixed},
    {"matrix.heap", kExact, matrix_heap},
    {"kalman", kExact, kalman},
    {"online", kExact, online},
    {"smooth", kExact, smooth},
    {"ode.fixed_steps", kExact, ode_fixed_steps},
    {"ode.own_steps", kLibm, ode_own_steps},
};

}  // namespace

const std::span<const Group> kAllGroups = kGroups;
