// Digital designs: what a request gives, and what degenerate requests do not break.
#include <gtest/gtest.h>

#include <array>
#include <cfloat>
#include <climits>
#include <cmath>
#include <complex>
#include <ctime>
#include <numbers>
#include <tuple>

#include "allocations.h"
#include "designs.h"
#include "support/expect.h"
#include "support/reference/iir.h"

using namespace designs;
using namespace mensura;

template <typename F>
static void for_all_designs(std::span<const int> passes, std::initializer_list<double> cutoffs, F check) {
    for (const int pass : passes)
        for (const iir::Family &family : kFamilies)
            for (int poles = 1; poles <= family.max_poles; ++poles)
                for (const double cutoff : cutoffs) {
                    SCOPED_TRACE(testing::Message() << "pass type " << pass << ", " << family.name << ", " << poles
                                                    << " poles, cut-off " << cutoff);
                    check(request(pass, family.code, poles, cutoff));
                    if (testing::Test::HasFailure()) return;
                }
}

using Section = std::array<double, 6>;
constexpr Section kEmpty{};
static Section section(const IIRCoeffs &c, int k) { return {c.a0[k], c.a1[k], c.a2[k], c.b0[k], c.b1[k], c.b2[k]}; }

using Complex = std::complex<long double>;

// The response at f (1 is Nyquist) that a section of the prototype shall have: with a gain of one at DC, at the s that
// the pass type gives to u = (2/T) (1 - z^-1) / (1 + z^-1).
static Complex requested(const IIRDesignSpec &spec, const LowPassProto &p, int k, double f) {
    constexpr long double kQuarter = std::numbers::pi_v<long double> / 2;
    const double fc = spec.NormCutoff, factor = 0.8 * std::tan((1 + std::min(fc, 0.95)) * std::numbers::pi / 4);
    const long double Q = fc / spec.NormBandwidth / factor;
    const Complex u(0, std::tan(f * kQuarter) / std::tan(fc * kQuarter));
    const Complex band = Q * (u + 1.0L / u), s[] = {u, 1.0L / u, band, 1.0L / band, u};
    const auto over_c0 = [x = s[spec.PassType]](long double c2, long double c1, long double c0) {
        return 1.0L + x * (c1 + x * c2) / c0;
    };
    const Complex numerator = spec.PassType == ptAllPass ? over_c0(p.Den2[k], -p.Den1[k], p.Den0[k])
                                                         : over_c0(p.Num2[k], p.Num1[k], p.Num0[k]);
    return numerator / over_c0(p.Den2[k], p.Den1[k], p.Den0[k]);
}

// How far rounding may move the response at f, relative to it.  A coefficient in error by an ulp moves its polynomial's
// value by that much of the largest term.  Fifty ulps of this condition is the worst seen in any family, order and
// type: a band-pass, whose halves come from a root search.
static double rounding(const IIRCoeffs &c, double f) {
    const auto condition_of = [z = std::polar(1.0, -f * std::numbers::pi)](double c0, double c1, double c2) {
        return (std::fabs(c0) + std::fabs(c1) + std::fabs(c2)) / std::abs(c0 + z * (c1 + z * c2));
    };
    double condition = 0;
    for (int k = 0; k < c.NumSections; ++k)
        condition += condition_of(c.b0[k], c.b1[k], c.b2[k]) + condition_of(1, c.a1[k], c.a2[k]);
    return 128 * DBL_EPSILON * condition;
}

TEST(IirDesign, is_stable_and_has_the_response_of_its_prototype_section_by_section) {
    for_all_designs(kPassTypes, {0.11, 0.2, 0.5, 0.8, 0.96}, [](IIRDesignSpec spec) {
        const int poles = spec.Proto.NumPoles, analog_sections = (poles + 1) / 2;
        const bool band_type = spec.PassType == ptBandPass || spec.PassType == ptNotch;
        spec.GainDb = spec.NormCutoff == 0.5 ? -20 : 0;
        const IIRCoeffs c = CalcIIRFilterCoeff(spec);
        const LowPassProto p = CalcLowPassProtoCoeff(spec.Proto);
        ASSERT_EQ(c.NumSections, band_type ? poles : analog_sections);
        for (int k = 0; k < c.NumSections; ++k) {
            EXPECT_LT(std::fabs(c.a2[k]), 1) << "section " << k;
            EXPECT_LT(std::fabs(c.a1[k]), 1 + c.a2[k]) << "section " << k;
        }
        for (const double f : {0.001, 0.37, 0.98 * spec.NormCutoff, 0.9, 0.999}) {
            Complex h = 1;
            for (int k = 0; k < analog_sections; ++k) {
                h *= requested(spec, p, k, f);
                const int digital_sections = band_type ? 2 * (k + 1) - poles % 2 : k + 1;
                const long double gain = std::pow(10.0L, spec.GainDb / 20 * digital_sections / c.NumSections);
                EXPECT_CLOSE(reference::response(c, digital_sections, f * std::numbers::pi), gain * h,
                             static_cast<double>(std::abs(gain * h)) * rounding(c, f))
                    << "at " << f << ", up to section " << k;
            }
        }
    });
}

TEST(IirDesign, gain_is_spread_by_the_root_of_the_ratio) {
    IIRDesignSpec spec = request(ptLowPass, pfButterworth, 10);
    const IIRCoeffs plain = CalcIIRFilterCoeff(spec);
    spec.GainDb = -40;
    const IIRCoeffs scaled = CalcIIRFilterCoeff(spec);
    const double g = std::pow(0.01, 1.0 / 5);  // not 10^(-2 / 5), which differs in its last bit
    for (int k = 0; k < 5; ++k) EXPECT_SAME_BITS(scaled.b1[k], plain.b1[k] * g) << "section " << k;
}

TEST(IirDesign, init_writes_the_defaults_and_leaves_the_registers) {
    TIIRFilterBank bank;
    std::memset(&bank, 0x5a, sizeof bank);
    TIIRFilter before = bank.Filters[0];
    const int allocated = allocations;
    initTIIRFilters(&bank, ptHighPass, 2, 100.0, 1000.0);
    EXPECT_EQ(allocations, allocated);
    EXPECT_EQ(bank.Count, 2);
    for (TIIRFilter *f : {&bank.Filters[0], &bank.Filters[1]}) {
        const auto &[pass, cutoff, bandwidth, gain, p] = f->Spec;
        EXPECT_EQ(std::tuple(pass, cutoff, bandwidth, gain), std::tuple(int{ptHighPass}, 0.2, 0.1, 0.0));
        EXPECT_EQ(std::tuple(p.Family, p.NumPoles, p.Ripple, p.StopBandDb, p.Gamma), std::tuple(0, 6, 0.1, 60.0, 0.0));
        EXPECT_EQ(f->Primed, 0);
        EXPECT_SAME_BITS(numbers(f->Coeffs), numbers(CalcIIRFilterCoeff(f->Spec)));
        EXPECT_SAME_BITS(registers(*f), registers(before));
    }
    EXPECT_EQ(std::memcmp(&bank.Filters[2], &before, sizeof before), 0);
    initTIIRFilters(&bank, ptLowPass, -2, 100.0, 1000.0);
    EXPECT_EQ(bank.Count, -2);
    EXPECT_EQ(bank.Filters[0].Spec.PassType, ptHighPass);
}

TEST(IirDesign, sections_beyond_the_poles_of_the_prototype_stay_empty) {
    for (const auto &[poles, sections, designed] : {std::tuple{6, 3, 6}, {5, 3, 5}, {25, 13, 20}, {45, 23, 20}}) {
        TIIRFilter f{};
        f.Coeffs = CalcIIRFilterCoeff(request(ptLowPass, pfButterworth, poles));
        EXPECT_EQ(f.Coeffs.NumSections, sections);
        EXPECT_NE(section(f.Coeffs, designed - 1), kEmpty) << poles << " poles";
        EXPECT_EQ(section(f.Coeffs, designed), kEmpty) << poles << " poles";
        EXPECT_EQ(IIRFilter(&f, 1.0) == 0.0, sections > designed) << poles << " poles";
    }
}

TEST(IirDesign, band_types_keep_their_fourth_order_forms) {
    for (const int pass : {ptBandPass, ptNotch}) {
        const auto design = [pass](int poles, double cutoff) {
            return CalcIIRFilterCoeff(request(pass, pfButterworth, poles, cutoff));
        };
        const IIRCoeffs c = design(45, 0.5);  // 20 sections of order four, 40 halves
        EXPECT_EQ(c.NumSections, 45);
        EXPECT_TRUE(std::isfinite(c.a1[39]));
        EXPECT_TRUE(std::isnan(c.a1[40]));
        EXPECT_TRUE(std::isnan(c.b0[44]));
        EXPECT_EQ(c.a0[44], 1);
        EXPECT_NE(c.a4[0], 0);
        EXPECT_NE(c.b4[19], 0);
        EXPECT_EQ(c.a4[20], 0);
        for (int k = 0; k < 20; ++k) {  // T = 2: odd powers vanish
            EXPECT_EQ(c.a3[k], 0) << "section " << k;
            EXPECT_EQ(c.b3[k], 0) << "section " << k;
        }
        // T - 2 is 2 pi times the distance from 0.5: -0.00063, 0.00048, 0.00053.
        EXPECT_NE(design(6, 0.4999).a3[0], 0.0);
        EXPECT_EQ(design(6, 0.500076).a3[0], 0.0);
        EXPECT_NE(design(6, 0.500084).a3[0], 0.0);
    }
}

TEST(IirDesign, halves_of_a_band_section_multiply_to_its_fourth_order_form) {
    constexpr int kBandTypes[] = {ptBandPass, ptNotch};
    for_all_designs(kBandTypes, {0.3}, [](const IIRDesignSpec &spec) {
        if (spec.Proto.NumPoles % 2 != 0) return;  // section 0 is whole
        const IIRCoeffs c = CalcIIRFilterCoeff(spec);
        const double whole = c.a4[0] / (c.a2[0] * c.a2[1]);            // c0, which the halves are divided by
        const double scale = std::fabs(whole) * 16 * DBL_EPSILON * 6;  // 16 at most in (1 + z^-1)^4
        EXPECT_NEAR(whole * (c.a1[0] * c.a2[1] + c.a2[0] * c.a1[1]), c.a3[0], scale);
        EXPECT_NEAR(std::fabs(whole * c.b2[0] * c.b2[1]), std::fabs(c.b4[0]), scale);
        EXPECT_NEAR(std::fabs(whole * (c.b1[0] * c.b2[1] + c.b2[0] * c.b1[1])), std::fabs(c.b3[0]), scale);
    });
}

TEST(IirDesign, any_number_of_poles_pass_type_or_family_stays_inside_the_record) {
    constexpr struct {
        int poles, sections, band_sections;
    } kCases[] = {
        {INT_MIN, INT_MIN / 2 + 1, INT_MIN}, {-3, -1, -3}, {-2, 0, -2}, {0, 0, 0}, {1, 1, 1}, {INT_MAX, 50, 50}};
    for (const auto &[poles, sections, band_sections] : kCases)
        for (const int pass : kPassTypes) {
            SCOPED_TRACE(testing::Message() << poles << " poles, pass type " << pass);
            const bool band_type = pass == ptBandPass || pass == ptNotch;
            IIRDesignSpec spec = request(pass, pfButterworth, poles);
            spec.GainDb = poles < 1 ? 20 : 0;  // no section takes it
            const IIRCoeffs c = CalcIIRFilterCoeff(spec), one = CalcIIRFilterCoeff(request(pass, pfButterworth, 1));
            EXPECT_EQ(c.NumSections, band_type ? band_sections : sections);
            if (poles > 1) continue;
            EXPECT_EQ(section(c, 0), band_type && poles < 1 ? kEmpty : section(one, 0));
        }
    for (const auto &[pass, family] : {std::pair{-1, 0}, {5, 0}, {0, kUnknownFamily}}) {
        const IIRCoeffs c = CalcIIRFilterCoeff(request(pass, family, 6));
        EXPECT_EQ(c.NumSections, 3);
        EXPECT_EQ(section(c, 0), kEmpty) << "pass type " << pass << ", family " << family;
    }
}

[[gnu::noinline]] static void poison_stack(unsigned long long value) {
    volatile unsigned long long area[1 << 12];
    for (volatile unsigned long long &word : area) word = value;
}

TEST(IirDesign, degenerate_requests_give_the_same_bits_in_bounded_time_without_memory) {
    for (const int pass : kPassTypes)
        for (const iir::Family &family : kFamilies)
            for (const double bad : {std::nan(""), HUGE_VAL, -HUGE_VAL, 0.0, -0.3, 1.0, 1e300})
                for (int field = 0; field < 6; ++field) {
                    SCOPED_TRACE(testing::Message() << "pass type " << pass << ", " << family.name << ", field "
                                                    << field << " is " << bad);
                    IIRDesignSpec spec = request(pass, family.code, field < 3 ? 5 : 12);
                    double *const fields[] = {&spec.NormCutoff,   &spec.NormBandwidth,    &spec.GainDb,
                                              &spec.Proto.Ripple, &spec.Proto.StopBandDb, &spec.Proto.Gamma};
                    *fields[field] = bad;
                    const std::clock_t start = std::clock();
                    const int allocated = allocations;
                    poison_stack(~0ULL);
                    const IIRCoeffs first = CalcIIRFilterCoeff(spec);
                    poison_stack(0x3c3c3c3c3c3c3c3c);
                    const IIRCoeffs second = CalcIIRFilterCoeff(spec);
                    EXPECT_EQ(allocations, allocated);
                    EXPECT_LT(std::clock() - start, CLOCKS_PER_SEC);
                    EXPECT_SAME_BITS(numbers(second), numbers(first));
                }
}
