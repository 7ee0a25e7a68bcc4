#include <gtest/gtest.h>
#include <mensura/mensura.h>

#include <algorithm>
#include <array>
#include <cfloat>
#include <climits>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>
#include <numbers>
#include <numeric>
#include <random>
#include <vector>

#include "allocations.h"

namespace {

using Complex = std::complex<double>;
using Roots = std::array<CplxD, MAX_IIR_SECTIONS>;
using Values = std::array<double, MAX_IIR_SECTIONS>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN(), kInf = std::numeric_limits<double>::infinity();
constexpr int kPassTypes = 5, kFamilies = 8;
constexpr int kMaxOrder[kFamilies] = {20, 12, 12, 20, 20, 15, 20, 15};

IIRDesignSpec request(int pass, int family, int poles, double cutoff = 0.2) {
    return {pass, cutoff, 0.1, 0.0, {family, poles, 0.1, 60.0, 0.0}};
}

LowPassProto proto(int family, int poles, double ripple = 0.1, double stop = 60, double gamma = 0) {
    return CalcLowPassProtoCoeff({family, poles, ripple, stop, gamma});
}

// The bits of all values; padding behind the count may differ.
bool same(const IIRCoeffs &a, const IIRCoeffs &b) {
    return a.NumSections == b.NumSections && std::memcmp(&a, &b, offsetof(IIRCoeffs, NumSections)) == 0;
}
bool same(const LowPassProto &a, const LowPassProto &b) {
    return a.SectionCount == b.SectionCount && std::memcmp(&a, &b, offsetof(LowPassProto, SectionCount)) == 0;
}

bool is_zero(const IIRCoeffs &c, int k) {
    return c.a0[k] == 0 && c.a1[k] == 0 && c.a2[k] == 0 && c.b0[k] == 0 && c.b1[k] == 0 && c.b2[k] == 0;
}

struct Response {
    Complex h;
    double tolerance;  // relative
};

// The response at f (1 is Nyquist).  A coefficient in error by an ulp moves its polynomial's value by that much of the
// largest term.  Twelve ulps of this condition is the worst seen in any family, order and type: a band-pass, whose
// halves come from a root search.
Response response(const IIRCoeffs &c, double f) {
    const Complex z1 = std::polar(1.0, -std::numbers::pi * f);
    Complex h = 1;
    double condition = 0;
    for (int k = 0; k < c.NumSections; ++k) {
        const Complex num = c.b0[k] + z1 * (c.b1[k] + z1 * c.b2[k]), den = 1.0 + z1 * (c.a1[k] + z1 * c.a2[k]);
        h *= c.a0[k] * num / den;
        condition += (std::fabs(c.b0[k]) + std::fabs(c.b1[k]) + std::fabs(c.b2[k])) / std::abs(num) +
                     (1 + std::fabs(c.a1[k]) + std::fabs(c.a2[k])) / std::abs(den);
    }
    return {h, 32 * DBL_EPSILON * condition};
}

double magnitude(const LowPassProto &p, double w) {
    Complex h = 1;
    const Complex s{0, w};
    for (int k = 0; k < p.SectionCount; ++k)
        h *= (p.Num0[k] + s * (p.Num1[k] + s * p.Num2[k])) / (p.Den0[k] + s * (p.Den1[k] + s * p.Den2[k]));
    return std::abs(h);
}

template <typename F>
void for_all_designs(std::initializer_list<int> passes, std::initializer_list<double> cutoffs, F check) {
    for (const int pass : passes)
        for (int family = 0; family < kFamilies; ++family)
            for (int poles = 1; poles <= kMaxOrder[family]; ++poles)
                for (const double cutoff : cutoffs) {
                    SCOPED_TRACE(testing::Message() << "pass type " << pass << ", family " << family << ", " << poles
                                                    << " poles, cut-off " << cutoff);
                    check(request(pass, family, poles, cutoff));
                }
}

// ---- Digital designs ----

TEST(IirDesign, is_stable_and_has_its_gain_where_it_should) {
    for_all_designs({ptLowPass, ptHighPass, ptBandPass, ptNotch}, {0.11, 0.5, 0.8}, [](IIRDesignSpec spec) {
        const double fc = spec.NormCutoff, passed[] = {0, 1, fc, 0, 1}, stopped[] = {1, 0, 0, fc};  // by type
        const int pass = spec.PassType, family = spec.Proto.Family;
        spec.GainDb = fc == 0.5 ? -20 : 0;
        const IIRCoeffs c = CalcIIRFilterCoeff(spec);
        for (int k = 0; k < c.NumSections; ++k)
            EXPECT_TRUE(std::fabs(c.a2[k]) < 1 && std::fabs(c.a1[k]) < 1 + c.a2[k]) << k;
        for (int i = pass; i <= (pass == ptNotch ? 4 : pass); ++i) {  // the notch passes DC and Nyquist
            const auto [h, tolerance] = response(c, passed[i]);
            EXPECT_NEAR(std::abs(h) / std::pow(10.0, spec.GainDb / 20), 1.0, tolerance);
        }
        if (family != pfInverseChebyshev && family != pfElliptic) {
            EXPECT_LT(std::abs(response(c, stopped[pass]).h), 1e-6);
        }
    });
}

TEST(IirDesign, all_pass_has_the_reversed_denominator_and_magnitude_one) {
    for_all_designs({ptAllPass}, {0.02, 0.8}, [](const IIRDesignSpec &spec) {
        const IIRCoeffs c = CalcIIRFilterCoeff(spec);
        constexpr double kTolerance = 4 * DBL_EPSILON;  // three terms, divided by their sum
        for (int k = 0; k < c.NumSections; ++k) {
            const bool first_order = c.a2[k] == 0 && c.b2[k] == 0;
            EXPECT_NEAR(c.b0[k], first_order ? c.a1[k] : c.a2[k], kTolerance);
            EXPECT_NEAR(c.b1[k], first_order ? 1.0 : c.a1[k], kTolerance);
            EXPECT_NEAR(c.b2[k], first_order ? 0.0 : 1.0, kTolerance);
            EXPECT_LT(std::fabs(c.a1[k]), 1 + c.a2[k]);
        }
        for (const double f : {0.0, 0.37, 1.0}) EXPECT_NEAR(std::abs(response(c, f).h), 1.0, response(c, f).tolerance);
    });
}

TEST(IirDesign, init_writes_the_defaults_and_leaves_the_registers) {
    TIIRFilterBank bank;
    std::memset(&bank, 0x5a, sizeof bank);
    const TIIRFilter before = bank.Filters[0];
    initTIIRFilters(&bank, ptHighPass, 2, 100.0, 1000.0);
    EXPECT_EQ(bank.Count, 2);
    for (const TIIRFilter *f : {&bank.Filters[0], &bank.Filters[1]}) {
        const auto &[pass, cutoff, bandwidth, gain, p] = f->Spec;
        EXPECT_TRUE(pass == ptHighPass && cutoff == 0.2 && bandwidth == 0.1 && gain == 0.0);
        EXPECT_TRUE(p.Family == 0 && p.NumPoles == 6 && p.Ripple == 0.1 && p.StopBandDb == 60.0 && p.Gamma == 0.0);
        EXPECT_TRUE(f->Primed == 0 && same(f->Coeffs, CalcIIRFilterCoeff(f->Spec)));
        EXPECT_EQ(std::memcmp(f->RegX1, before.RegX1, 4 * sizeof f->RegX1), 0);
    }
    EXPECT_EQ(std::memcmp(&bank.Filters[2], &before, sizeof before), 0);
    initTIIRFilters(&bank, ptLowPass, -2, 100.0, 1000.0);
    EXPECT_TRUE(bank.Count == -2 && bank.Filters[0].Spec.PassType == ptHighPass);
}

TEST(IirDesign, runs_the_leading_sections_most_damped_first) {
    const auto low_pass = [](int poles) { return CalcIIRFilterCoeff(request(ptLowPass, pfButterworth, poles)); };
    const IIRCoeffs six = low_pass(6), five = low_pass(5), many = low_pass(25);
    const auto equal = [&six](int k, int l) { return six.a1[k] == six.a1[l] && six.a2[k] == six.a2[l]; };
    EXPECT_TRUE(equal(0, 1) && !equal(1, 2) && equal(2, 3) && !equal(3, 4) && equal(4, 5) && is_zero(six, 6));
    EXPECT_TRUE(six.NumSections == 3 && six.a2[0] < six.a2[2] && six.a2[2] < six.a2[4]);  // squared pole radii
    EXPECT_TRUE(five.NumSections == 3 && five.a2[0] == 0 && five.b2[0] == 0 && five.a2[1] != 0 && five.a2[2] != 0);
    EXPECT_TRUE(many.NumSections == 13 && !is_zero(many, 19) && is_zero(many, 20));
    TIIRFilter silent{};
    silent.Coeffs = low_pass(45);
    EXPECT_TRUE(silent.Coeffs.NumSections == 23 && !is_zero(silent.Coeffs, 19) && is_zero(silent.Coeffs, 20));
    EXPECT_EQ(IIRFilter(&silent, 1.0), 0.0);

    for (const int pass : {ptBandPass, ptNotch}) {
        EXPECT_EQ(CalcIIRFilterCoeff(request(pass, pfButterworth, 5)).NumSections, 5);
        const IIRCoeffs c = CalcIIRFilterCoeff(request(pass, pfButterworth, 45, 0.5));
        EXPECT_TRUE(c.NumSections == 45 && std::isfinite(c.a1[39]) && std::isnan(c.a1[40]) && std::isnan(c.b0[44]));
        EXPECT_TRUE(c.a0[44] == 1 && c.a4[0] != 0 && c.b4[19] != 0 && c.a4[20] == 0);  // fourth-order forms stay
        for (int k = 0; k < 20; ++k) EXPECT_TRUE(c.a3[k] == 0 && c.b3[k] == 0) << k;   // T = 2: odd powers vanish
        // T - 2 is 2 pi times the distance from 0.5: -0.00063, 0.00048, 0.00053.
        EXPECT_NE(CalcIIRFilterCoeff(request(pass, pfButterworth, 6, 0.4999)).a3[0], 0.0);
        EXPECT_EQ(CalcIIRFilterCoeff(request(pass, pfButterworth, 6, 0.500076)).a3[0], 0.0);
        EXPECT_NE(CalcIIRFilterCoeff(request(pass, pfButterworth, 6, 0.500084)).a3[0], 0.0);
    }
}

TEST(IirDesign, bandwidth_is_corrected_by_a_tuned_factor) {
    // One pole: a2 = (Q T^2 + 4 Q - 2 T) / (Q T^2 + 4 Q + 2 T) with Q = cut-off / bandwidth / factor.
    const std::pair<double, double> factors[] = {{0.2, 0.8 * std::tan(0.3 * std::numbers::pi)},
                                                 {0.9, 0.8 * std::tan(0.475 * std::numbers::pi)},
                                                 {0.96, 20.361359663485633},
                                                 {0.99, 20.361359663485633}};
    for (const auto &[cutoff, factor] : factors) {
        const double a2 = CalcIIRFilterCoeff(request(ptBandPass, pfButterworth, 1, cutoff)).a2[0];
        const double T = 2 * std::tan(cutoff * std::numbers::pi / 2), Q = 2 * T * (1 + a2) / ((4 + T * T) * (1 - a2));
        EXPECT_NEAR(cutoff / 0.1 / Q / factor, 1, 1e-13) << cutoff;
    }
}

TEST(IirDesign, halves_of_a_band_section_multiply_to_its_fourth_order_form) {
    for_all_designs({ptBandPass, ptNotch}, {0.3}, [](const IIRDesignSpec &spec) {
        const IIRCoeffs c = CalcIIRFilterCoeff(spec);
        if (spec.Proto.NumPoles < 2 || spec.Proto.NumPoles % 2 != 0) return;  // section 0 is whole
        const double whole = c.a4[0] / (c.a2[0] * c.a2[1]);                   // c0, which the halves are divided by
        const double scale = std::fabs(whole) * 16 * DBL_EPSILON * 6;         // 16 at most in (1 + z^-1)^4
        EXPECT_NEAR(whole * (c.a1[0] * c.a2[1] + c.a2[0] * c.a1[1]), c.a3[0], scale);
        EXPECT_NEAR(std::fabs(whole * c.b2[0] * c.b2[1]), std::fabs(c.b4[0]), scale);
        EXPECT_NEAR(std::fabs(whole * (c.b1[0] * c.b2[1] + c.b2[0] * c.b1[1])), std::fabs(c.b3[0]), scale);
    });
}

TEST(IirDesign, any_number_of_poles_pass_type_or_family_stays_inside_the_record) {
    constexpr int kPoles[] = {INT_MIN, -3, -2, 0, 1, INT_MAX}, kSections[] = {INT_MIN / 2 + 1, -1, 0, 0, 1, 50},
                  kBandSections[] = {INT_MIN, -3, -2, 0, 1, 50};
    for (std::size_t i = 0; i < std::size(kPoles); ++i)
        for (int pass = 0; pass < kPassTypes; ++pass) {
            SCOPED_TRACE(testing::Message() << kPoles[i] << " poles, pass type " << pass);
            const bool band_type = pass == ptBandPass || pass == ptNotch;
            IIRDesignSpec spec = request(pass, pfButterworth, kPoles[i]);
            spec.GainDb = kPoles[i] < 1 ? 20 : 0;  // no section takes it
            const IIRCoeffs c = CalcIIRFilterCoeff(spec), one = CalcIIRFilterCoeff(request(pass, pfButterworth, 1));
            EXPECT_EQ(c.NumSections, band_type ? kBandSections[i] : kSections[i]);
            if (kPoles[i] > 1) continue;
            EXPECT_EQ(is_zero(c, 0), band_type && kPoles[i] < 1);
            EXPECT_TRUE(is_zero(c, 0) || (c.b0[0] == one.b0[0] && c.b1[0] == one.b1[0] && c.a1[0] == one.a1[0]));
        }
    for (const IIRDesignSpec &unknown :
         {request(-1, 0, 6), request(kPassTypes, 0, 6), request(ptLowPass, kFamilies, 6)})
        EXPECT_TRUE(CalcIIRFilterCoeff(unknown).NumSections == 3 && is_zero(CalcIIRFilterCoeff(unknown), 0));
}

[[gnu::noinline]] void poison_stack(unsigned long long value) {
    volatile unsigned long long area[1 << 12];
    for (volatile unsigned long long &word : area) word = value;
}

TEST(IirDesign, degenerate_requests_give_the_same_bits_in_bounded_time) {
    for (int pass = 0; pass < kPassTypes; ++pass)
        for (int family = 0; family < kFamilies; ++family)
            for (const double bad : {kNaN, kInf, -kInf, 0.0, -0.3, 1.0, 1e300})
                for (int field = 0; field < 6; ++field) {
                    IIRDesignSpec spec = request(pass, family, field < 3 ? 5 : 12);
                    double *const fields[] = {&spec.NormCutoff,   &spec.NormBandwidth,    &spec.GainDb,
                                              &spec.Proto.Ripple, &spec.Proto.StopBandDb, &spec.Proto.Gamma};
                    *fields[field] = bad;
                    const std::clock_t start = std::clock();
                    poison_stack(~0ULL);
                    const IIRCoeffs first = CalcIIRFilterCoeff(spec);
                    poison_stack(0x3c3c3c3c3c3c3c3c);
                    EXPECT_TRUE(same(first, CalcIIRFilterCoeff(spec)))
                        << pass << ' ' << family << ' ' << bad << ' ' << field;
                    EXPECT_LT(std::clock() - start, CLOCKS_PER_SEC);
                }
}

// ---- Prototypes ----

TEST(IirPrototype, clamps_its_request) {
    for (int family = 0; family < kFamilies; ++family) {
        const int most = kMaxOrder[family];
        EXPECT_EQ(proto(family, most).SectionCount, most);
        for (const int more : {most + 1, INT_MAX}) EXPECT_TRUE(same(proto(family, more), proto(family, most)));
        EXPECT_TRUE(same(proto(family, INT_MIN), proto(kFamilies, 1)));
    }
    constexpr double kCaps[] = {1.0, 0.5, 0.4, 0.25, 0.125, 0.1};  // Chebyshev, 15 poles and up
    for (int i = 0; i < 6; ++i) {
        EXPECT_TRUE(same(proto(pfChebyshev, 15 + i, 2.0), proto(pfChebyshev, 15 + i, kCaps[i])));
        EXPECT_FALSE(same(proto(pfChebyshev, 15 + i, 0.9 * kCaps[i]), proto(pfChebyshev, 15 + i, kCaps[i])));
    }
    EXPECT_TRUE(same(proto(pfChebyshev, 5, 0.0), proto(pfChebyshev, 5, 0.0001)));
    EXPECT_TRUE(same(proto(pfElliptic, 5, 0.0), proto(pfElliptic, 5, 0.001)));
    for (const int family : {pfInverseChebyshev, pfElliptic}) {
        EXPECT_TRUE(same(proto(family, 5, 0.1, 200), proto(family, 5, 0.1, 120)));
        EXPECT_TRUE(same(proto(family, 5, 0.1, 5), proto(family, 5, 0.1, 20)));
        EXPECT_FALSE(same(proto(family, 5, 0.1, 21), proto(family, 5, 0.1, 20)));
    }
    for (const double sign : {-1.0, 1.0})
        EXPECT_TRUE(same(proto(pfAdjustable, 5, 0.1, 60, 3 * sign), proto(pfAdjustable, 5, 0.1, 60, sign)));
    const LowPassProto none = proto(kFamilies, 6);
    EXPECT_TRUE(none.SectionCount == 0 && none.Num0[0] == 1 && none.Den0[49] == 1 && none.Den1[0] == 0);
}

CplxD quadratic(double c2, double c1, double c0, CplxD s) {
    return CplxDAdd(CplxDAdd(CplxDMult_coef(CplxDMult(s, s), c2), CplxDMult_coef(s, c1)), {c0, 0.0});
}

// The definition: every point of the grid in turn.
double plain_corner(int count, const LowPassProto &p) {
    double g = 1.0;
    for (int k = 0; k < count; ++k) g *= p.Den0[k] / p.Num0[k];
    for (int i = 1; i < 5999; ++i) {
        const CplxD s{0.0, i / 512.0};
        CplxD h{1.0, 0.0};
        for (int k = 0; k < count; ++k) {
            h = CplxDMult(h, quadratic(p.Num2[k], p.Num1[k], p.Num0[k], s));
            h = CplxDDivision(h, quadratic(p.Den2[k], p.Den1[k], p.Den0[k], s));
        }
        if (CplxDCabs(CplxDMult_coef(h, g)) < 0.7071) return s.im;
    }
    return 5999 / 512.0;
}

// SetCornerFreq passes over most of the grid by a faster test and must stop at the same point.  Section `count` becomes
// 1/1, which changes no magnitude and comes back with the scale in its Den0.
void expect_plain_corner(int count, LowPassProto p) {
    p.Den2[count] = p.Den1[count] = p.Num2[count] = p.Num1[count] = 0.0;
    p.Den0[count] = p.Num0[count] = 1.0;
    const double corner = plain_corner(count + 1, p);
    SetCornerFreq(count + 1, p.Den2, p.Den1, p.Den0, p.Num2, p.Num1, p.Num0);
    EXPECT_EQ(p.Den0[count], 1.0 / corner);
}

TEST(SetCornerFreq, moves_the_corner_of_every_family_to_one_radian_per_second) {
    for (int family = 0; family < kFamilies; ++family)
        for (int n = 2; n <= kMaxOrder[family]; ++n) {
            SCOPED_TRACE(testing::Message() << "family " << family << ", order " << n);
            const LowPassProto p = proto(family, n, 0.5, 50 + n, 0.1 * n - 1);
            for (const double w : {0.02, 2.0}) {
                LowPassProto moved = p;
                for (int k = 0; k < n; ++k) {
                    moved.Den1[k] *= p.Den2[k] != 0 ? w : 1;
                    moved.Den0[k] *= p.Den2[k] != 0 ? w * w : w;
                    moved.Num0[k] *= p.Num2[k] != 0 ? w * w : 1;
                }
                expect_plain_corner(n, moved);
            }
            if (n % 2 != 0 && (family == pfInverseChebyshev || family == pfElliptic)) {  // the real pole has no zeros
                EXPECT_TRUE(p.Den2[0] == 0 && p.Num2[0] == 0 && p.Num0[0] == 1 && p.Num2[1] == 1 && p.Num2[n - 1] == 1);
            }
            if (family == pfButterworth) continue;  // is not moved
            // One step of the grid is at most 1/20 of the unscaled corner: inverse Chebyshev, 2 poles.
            EXPECT_LT(magnitude(p, 1), magnitude(p, 0) * 0.7071 * (1 + 1e-12));
            EXPECT_GE(magnitude(p, 0.95), magnitude(p, 0) * 0.7071);
        }
}

TEST(SetCornerFreq, finds_the_plain_corner_of_hostile_cascades) {
    constexpr double kHostile[] = {0.0,   -1.0,  kNaN,   kInf, -kInf,   1e200,   1e-200, 1e-320, 1e-9,
                                   1e-30, 1e-12, 9999.9, 1e4,  10001.0, DBL_MAX, 1.0,    0.3,    -0.3};
    std::mt19937 random(20240611);
    const auto below = [&random](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    for (int round = 0; round < 80; ++round) {
        SCOPED_TRACE(testing::Message() << "round " << round);
        LowPassProto p{};
        double *const arrays[] = {p.Den2, p.Den1, p.Den0, p.Num2, p.Num1, p.Num0};
        const int count = 1 + below(round % 8 == 0 ? 49 : 12), hostile = below(3);
        for (int k = 0; k < count; ++k) {
            const double w0 = std::exp(0.01 * below(600) - 2);
            p.Den2[k] = p.Num2[k] = 1.0;
            p.Den1[k] = 0.01 * below(200) * w0;
            p.Num1[k] = below(2) * w0;
            p.Den0[k] = p.Num0[k] = w0 * w0;
            if (round % 4 < 2 && k < hostile) arrays[below(6)][k] = kHostile[below(std::size(kHostile))];
            // Squares that overflow on the way, or end among the subnormals, where the exact evaluation does neither.
            const double scale = std::pow(10, (round % 4 == 2 ? k < count / 2 ? 340.0 : -340.0 : -161.45) / count);
            for (double *coefficient : {p.Num2 + k, p.Num1 + k, p.Num0 + k})
                if (round % 4 == 2 && count % 2 == 0) *coefficient *= scale;
            for (double *coefficient : {p.Den2 + k, p.Den1 + k, p.Den0 + k})
                if (round % 4 == 3) *coefficient *= scale;
        }
        expect_plain_corner(count, p);
    }
    LowPassProto pole_on_the_grid{};
    std::ranges::fill(pole_on_the_grid.Den2, 1.0);
    for (double *constant : {pole_on_the_grid.Den0, pole_on_the_grid.Num0}) std::fill_n(constant, 50, 4.0);
    for (const int count : {0, 1, 3, 49}) expect_plain_corner(count, pole_on_the_grid);
    SetCornerFreq(-3, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);  // touches nothing
}

TEST(SetCornerFreq, finds_the_plain_corner_on_a_plateau_at_the_level) {
    // L (s^2 + n1 s + w0^2) / (s^2 + d1 s + w0^2), w0 far below the grid, comes down to L as 1 + 5e-15 / w^2: the last
    // bits decide where it is below.
    for (const int count : {1, 5, 19, 20})
        for (const double deviation : {1e-8, 1e-10, 0.0, -1e-16, -3e-15, -1e-13, -1e-11, -1e-9}) {
            SCOPED_TRACE(testing::Message() << count << " sections, " << deviation);
            const double L = std::pow(0.7071 * (1 + deviation), 1.0 / count), d1 = 1.2e-6, w0_squared = 1e-12;
            const double n1 = L * std::sqrt(d1 * d1 + 2 * w0_squared * (1 / L - 1) + 1e-14 / count);
            LowPassProto p{};
            std::fill_n(p.Num2, count, L);
            std::fill_n(p.Num1, count, n1);
            std::fill_n(p.Den2, count, 1.0);
            std::fill_n(p.Den1, count, d1);
            for (double *constant : {p.Num0, p.Den0}) std::fill_n(constant, count, w0_squared);
            expect_plain_corner(count, p);
        }
}

// ---- Families ----

// Each value and its conjugate are among the roots.  Both sides round some 100 operations.
void expect_roots(int count, const Roots &roots, int expected_count, std::initializer_list<Complex> values) {
    EXPECT_EQ(count, expected_count);
    for (const Complex z : values)
        for (const Complex value : {z, std::conj(z)})
            EXPECT_TRUE(std::any_of(roots.begin(), roots.begin() + count, [&](CplxD r) {
                return std::abs(Complex(r.re, r.im) - value) < 1e-13;
            })) << value;
}

TEST(PrototypeFamily, poles_and_zeros_are_those_of_scipy) {
    // scipy 1.10.1, from scipy.signal: buttap(7)[1], cheb1ap(5, 0.5)[1], besselap(5, norm='delay')[1],
    // cheb2ap(4, 40)[1], ellipap(5, 0.5, 60.00663086819615)[1] and [0]: where the search for 60 dB stops, 0.1 dB near.
    Roots p{}, z{};
    int zeros = 0;
    expect_roots(ButterworthPoly(7, p.data()), p, 7,
                 {{-0.22252093395631445, 0.9749279121818236},
                  {-0.6234898018587336, 0.7818314824680298},
                  {-0.9009688679024191, 0.4338837391175581},
                  -1});
    expect_roots(
        ChebyshevPoly(0.5, 5, p.data()), p, 5,
        {{-0.11196292128849389, 1.0115573693864202}, {-0.29312273341300615, 0.6251768358512401}, -0.36231962424902453});
    expect_roots(
        BesselPoly(5, p.data()), p, 5,
        {{-2.324674303181645, 3.571022920337976}, {-3.3519563991535333, 1.742661416183198}, -3.6467385953296425});
    expect_roots(InvChebyPoly(40, 4, p.data(), z.data(), &zeros), p, 8,
                 {{-0.5045370360501146, 0.24079048688074278}, {-0.17116012188825785, 0.47610224689532044}});
    expect_roots(
        EllipticPoly(0.5, 60, 5, p.data(), z.data(), &zeros), p, 5,
        {{-0.2889085470048947, 0.6762614069607231}, {-0.09156502765305927, 1.0124235187026418}, -0.40277656528488726});
    expect_roots(zeros, z, 4, {{0, 2.84748550910066}, {0, 1.8524973862467264}});
}

// mpmath 1.2.1, mp.dps = 40: polyroots(c, maxsteps=300, extraprec=300), c by descending power: (-1)^m / m!, n = 4;
// 0.1 (-1)^m times L_5 = y - 8 y^2 + 28 y^3 - 40 y^4 + 20 y^5, the integral of its Legendre sum by sympy;
// (-1)^m (m!)^g with g = 1, n = 4 and g = -0.5, n = 3, imaginary parts times 1.1.
TEST(PrototypeFamily, poles_of_magnitude_polynomials_are_those_of_mpmath) {
    Roots p{};
    expect_roots(GaussianPoly(4, p.data()), p, 8,
                 {{-1.3553576274667508601, 0.32794826918981345494}, {-1.1810803251149910978, 1.0603749173954646726}});
    expect_roots(PapoulisPoly(5, p.data()), p, 10,
                 {{-0.71763889361285774401, 0.0},
                  {-0.58242364480498337483, 0.67312121641077025204},
                  {-0.22358669535631318315, 1.0925286866709297145}});
    expect_roots(
        AdjustablePoly(0.5, 4, p.data()), p, 8,
        {{-0.63844152669714946054, 0.25369855881421857469}, {-0.32677406873518685354, 0.63780685165388635123}});
    expect_roots(AdjustablePoly(-0.5, 3, p.data()), p, 6,
                 {{-1.139493866694760193, 0.0}, {-0.89170995175085015359, 0.83653851564964354041}});
}

TEST(PrototypeFamily, chebyshev_ripple_is_capped_at_3_dB) {
    Roots four{}, ten{};
    ChebyshevPoly(4, 5, four.data());
    ChebyshevPoly(10, 5, ten.data());
    EXPECT_EQ(std::memcmp(&four, &ten, sizeof four), 0);
}

TEST(PrototypeFamily, elliptic_search_stops_at_the_ends_of_its_range) {
    const auto roots_at = [](double stop, int n) {
        std::array<Roots, 2> roots{};
        int zeros = 0;
        EXPECT_EQ(EllipticPoly(0.1, stop, n, roots[0].data(), roots[1].data(), &zeros), n);
        EXPECT_EQ(zeros, n);
        return roots;
    };
    // Two poles reach 115.7 dB at the least modulus, 0.001, with zeros at sqrt(2) / 0.001 to second order in it.
    const auto deep = roots_at(120, 2), deeper = roots_at(150, 2), shallow = roots_at(20, 14), none = roots_at(10, 14);
    EXPECT_NEAR(deep[1][0].im / (std::numbers::sqrt2 / 0.001), 1, 1e-6);
    EXPECT_EQ(std::memcmp(&deep, &deeper, sizeof deep), 0);
    EXPECT_EQ(std::memcmp(&shallow, &none, sizeof shallow), 0);

    // A target out of reach: the fifteenth evaluation is at the least modulus, which then moves to 0.01899 once more.
    // The zeros, 1 / (modulus cos theta) for moduli this small, lie by the moved one.
    Roots poles, zeros;
    int count = 0;
    EllipticPoly(0.459, 294.557, 6, poles.data(), zeros.data(), &count);
    EXPECT_NEAR(zeros[0].im * std::cos(std::numbers::pi / 12), 1 / 0.01899, 0.1);
}

TEST(PrototypeFamily, orders_that_do_not_fit_write_nothing) {
    for (const int n : {INT_MIN, -1, 0, 51, INT_MAX})
        EXPECT_EQ(ButterworthPoly(n, nullptr) + ChebyshevPoly(1, n, nullptr) + GaussianPoly(n, nullptr) +
                      AdjustablePoly(0, n, nullptr) + BesselPoly(n, nullptr) + PapoulisPoly(n, nullptr) +
                      InvChebyPoly(60, n, nullptr, nullptr, nullptr) +
                      EllipticPoly(1, 60, n, nullptr, nullptr, nullptr),
                  0);
    EXPECT_EQ(GaussianPoly(26, nullptr), 0);  // 52 roots
}

TEST(PrototypeUtility, factorial_and_reverse_coeff) {
    EXPECT_TRUE(Factorial(-3) == 1 && Factorial(0) == 1 && Factorial(5) == 120 && Factorial(INT_MAX) == kInf);
    EXPECT_EQ(Factorial(22), 1124000727777607680000.0);
    std::array<double, 3> p = {2, 4, 8}, zero_last = {5, 1, 0};
    ReverseCoeff(p.data(), 2);
    ReverseCoeff(zero_last.data(), 2);
    ReverseCoeff(nullptr, -1);
    EXPECT_EQ(p, (std::array{1.0, 0.5, 0.25}));
    EXPECT_EQ(zero_last, (std::array{1.0, 1.0, 5.0}));
}

TEST(PrototypeUtility, rebuild_poly_multiplies_the_sections) {
    double c2[] = {1, 0, 0}, c1[] = {2, 1, 0}, c0[] = {3, 4, 5}, poly[7];  // (s^2 + 2 s + 3) (s + 4) 5
    EXPECT_EQ(RebuildPoly(3, poly, c2, c1, c0), 3);
    EXPECT_TRUE(std::ranges::equal(poly, std::array{60.0, 55.0, 30.0, 5.0, 0.0, 0.0, 0.0}));
    c2[2] = kNaN;  // is other than 0
    EXPECT_EQ(RebuildPoly(3, poly, c2, c1, c0), 6);
    double zeros[] = {0, 0};
    EXPECT_EQ(RebuildPoly(2, poly, zeros, zeros, zeros), -1);
    for (const int count : {-1, 0, 51}) EXPECT_EQ(RebuildPoly(count, nullptr, nullptr, nullptr, nullptr), -1);
}

TEST(PrototypeUtility, heap_index_sort_orders_a_permutation) {
    std::mt19937 random(7);
    for (std::size_t n = 2; n < 130; ++n)
        for (const int ascending : {0, 1}) {
            std::vector<double> keys(n);
            for (double &key : keys) key = static_cast<double>(random() % 40);  // with ties
            std::vector<int> index(n), all(n);
            std::iota(all.begin(), all.end(), 0);
            index = all;
            EXPECT_EQ(HeapIndexSort(keys.data(), index.data(), static_cast<int>(n), ascending), 1);
            EXPECT_TRUE(std::ranges::is_permutation(index, all));
            for (double &key : keys) key *= ascending ? 1 : -1;
            EXPECT_TRUE(std::ranges::is_sorted(index, {}, [&](int i) { return keys[static_cast<std::size_t>(i)]; }));
        }
    double ties[] = {2, 1, 2, 1, 2, 1, 2, 1};  // expected as a second, independent heap sort left them
    std::array<int, 8> up = {0, 1, 2, 3, 4, 5, 6, 7}, down = up;
    HeapIndexSort(ties, up.data(), 8, 1);
    HeapIndexSort(ties, down.data(), 8, 0);
    EXPECT_EQ(up, (std::array{7, 5, 3, 1, 2, 6, 4, 0}));
    EXPECT_EQ(down, (std::array{6, 2, 0, 4, 5, 7, 3, 1}));
    double key = 1;
    int index = 0;
    for (const int count : {INT_MIN, 0, 1}) EXPECT_EQ(HeapIndexSort(&key, &index, count, 1), 0);
}

TEST(PrototypeUtility, sections_of_a_root_list_come_most_damped_first) {
    // Two of a pair, a near duplicate that ousts one of them, roots that are and just are not tidied, and two without a
    // section.
    CplxD roots[] = {{-1, 2}, {-1, -2}, {-1.0005, 2.0005}, {-3, 1e-4}, {-1.999e-3, 2}, {-0.004, -3.9999},
                     {1, 1},  {0, 0}};
    Values c2, c1, c0;
    ASSERT_EQ(GetFilterCoeff(8, roots, c2.data(), c1.data(), c0.data()), 5);
    constexpr double kExpected[5][3] = {
        {0, 1, 3}, {1, 2.001, 5.0030005}, {1, 2, 5}, {1, 0.008, 15.99921601}, {1, 0, 4}};
    for (std::size_t k = 0; k < 5; ++k) {
        EXPECT_TRUE(c2[k] == kExpected[k][0] && c1[k] == kExpected[k][1]) << k << ' ' << c1[k];
        EXPECT_NEAR(c0[k], kExpected[k][2], 1e-12) << k;
    }
    CplxD with_nan[] = {{kNaN, 1}, {-1, kNaN}, {-2, 1}, {kNaN, kNaN}};
    EXPECT_EQ(GetFilterCoeff(4, with_nan, c2.data(), c1.data(), c0.data()), 1);
    EXPECT_TRUE(c2[0] == 1 && c1[0] == 4 && c0[0] == 5);

    CplxD axis[] = {{0, -3}, {0, 1}, {1e-5, -2}};  // sorted by |im|
    SortRootsByZeta(axis, 3, 1);
    EXPECT_TRUE(axis[0].im == 1 && axis[1].im == -2 && axis[1].re == 0 && axis[2].im == -3);
    for (const int count : {-1, 0, 100}) SortRootsByZeta(nullptr, count, 1);
    EXPECT_EQ(GetFilterCoeff(0, nullptr, nullptr, nullptr, nullptr), 0);
}

// ---- Running ----

TIIRFilter low_pass_filter() {
    TIIRFilter f{};
    initTIIRFilter(&f, ptLowPass, 40.0, 360.0);
    return f;
}

TEST(IIRFilter, starts_as_if_its_first_input_had_lasted_for_ever) {
    constexpr double kInput = 3.7;
    TIIRFilter f = low_pass_filter(), fresh = f;
    IIRFilter(&f, kInput);
    for (int k = 0; k < MAX_IIR_SECTIONS; ++k) {
        EXPECT_TRUE(f.RegX2[k] == kInput && f.RegY2[k] == kInput) << k;
        EXPECT_TRUE(k < 3 || (f.RegX1[k] == kInput && f.RegY1[k] == kInput)) << k;
    }
    for (int i = 0; i < 50; ++i) EXPECT_NEAR(IIRFilter(&f, kInput), kInput, kInput * response(f.Coeffs, 0).tolerance);
    IIRFilter(&f, kNaN);
    for (int i = 0; i < 50; ++i) EXPECT_TRUE(std::isnan(IIRFilter(&f, kInput)));
    f.Primed = 0;
    for (int i = 0; i < 50; ++i) EXPECT_EQ(IIRFilter(&f, i % 7), IIRFilter(&fresh, i % 7));
}

TEST(IIRFilter, runs_the_difference_equation_of_each_section) {
    TIIRFilter f{};
    IIRCoeffs &c = f.Coeffs;
    c.a0[0] = 0.5, c.a1[0] = 0.25, c.a2[0] = 0.125, c.b0[0] = 1, c.b1[0] = 2, c.b2[0] = 3;
    for (const int sections : {INT_MIN, 0, 1}) {  // section 0 always runs
        c.NumSections = sections;
        f.Primed = 0;
        EXPECT_EQ(IIRFilter(&f, 1), 0.5 * (1 + 2 + 3) - 0.25 - 0.125);
        EXPECT_EQ(IIRFilter(&f, 2), 0.5 * (2 + 2 + 3) - 0.25 * 2.625 - 0.125);
        EXPECT_EQ(IIRFilter(&f, 4), 0.5 * (4 + 4 + 3) - 0.25 * 2.71875 - 0.125 * 2.625);
        EXPECT_TRUE(f.RegX1[1] == 1 && f.RegY1[1] == 1 && f.RegY2[49] == 1);  // as primed: sections beyond do not run
    }
    c = {};
    for (int k = 0; k < MAX_IIR_SECTIONS; ++k) c.a0[k] = 1, c.b0[k] = k == 49 ? 2 : 1;
    for (const int sections : {49, 50, 60, INT_MAX}) {
        c.NumSections = sections;
        EXPECT_EQ(IIRFilter(&f, 3), sections < 50 ? 3 : 6);
    }
}

TEST(IIRFilters, equals_iir_filter_channel_by_channel) {
    struct Run {
        TIIRFilterBank bank;
        double in[16], separate[16];
    };
    std::vector<Run> runs(3);
    Run &start = runs[0], &banked = runs[1], &single = runs[2];
    std::mt19937 random(11);
    const auto value = [&random] { return static_cast<double>(random() % 2048) / 1024 - 1; };
    for (TIIRFilter &f : start.bank.Filters) {
        IIRCoeffs &c = f.Coeffs;
        for (double *values : {c.a1, c.a2, c.b0, c.b1, c.b2, f.RegX1, f.RegX2, f.RegY1, f.RegY2})
            std::generate_n(values, MAX_IIR_SECTIONS, value);
    }
    for (int sections = 1; sections <= MAX_IIR_SECTIONS; ++sections)
        for (int count = -1; count <= 10; ++count)
            for (int place = 0; place < 6; ++place) {
                SCOPED_TRACE(testing::Message() << sections << " sections, " << count << " channels, place " << place);
                start.bank.Count = count;
                for (TIIRFilter &f : start.bank.Filters) {
                    const auto rarely = [&] { return count % 2 != 0 && random() % 12 == 0; };
                    f.Coeffs.NumSections = rarely() ? static_cast<int>(random() % 60) : sections;
                    f.Primed = rarely() ? 0 : 1;
                    std::fill_n(f.Coeffs.a0, MAX_IIR_SECTIONS, 1.0);
                    if (rarely()) f.Coeffs.a0[random() % static_cast<unsigned>(sections)] = 0.3;
                }
                std::ranges::generate(start.in, value);
                if (random() % 8 == 0) start.in[3] = kNaN;
                std::memcpy(&banked, &start, sizeof start);
                std::memcpy(&single, &start, sizeof start);
                // An output may feed a later input or a filter, and a filter an input.
                const auto in = [place](Run &r) { return place == 5 ? r.bank.Filters[2].RegY1 : r.in + 1; };
                const auto out = [place](Run &r) {
                    double *const places[] = {r.separate, r.in + 1, r.in + 2, r.in, r.bank.Filters[3].RegX1,
                                              r.separate};
                    return places[place];
                };
                for (int t = 0; t < 2; ++t) {
                    EXPECT_EQ(IIRFilters(&banked.bank, in(banked), out(banked)), count);
                    for (int i = 0; i < count; ++i) out(single)[i] = IIRFilter(&single.bank.Filters[i], in(single)[i]);
                }
                EXPECT_EQ(std::memcmp(&banked, &single, sizeof banked), 0);
            }
}

#ifdef COUNTS_ALLOCATIONS
TEST(IirMemory, nothing_allocates) {
    TIIRFilterBank bank;
    double samples[10] = {};
    void *(*volatile const allocate)(std::size_t) = std::malloc;
    const int before = allocations;
    std::free(allocate(1));
    initTIIRFilters(&bank, ptLowPass, 10, 40.0, 360.0);
    IIRFilters(&bank, samples, samples);
    IIRFilter(&bank.Filters[0], 1.0);
    for (int pass = 0; pass < kPassTypes; ++pass)
        for (int family = 0; family < kFamilies; ++family) CalcIIRFilterCoeff(request(pass, family, 12));
    EXPECT_EQ(allocations, before + 1);  // the one above, which shows that they are counted
}
#endif

}  // namespace
