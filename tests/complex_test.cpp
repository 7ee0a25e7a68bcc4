#include <gtest/gtest.h>
#include <mensura/complex.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kPi = std::numbers::pi;

void expect_near(CplxD actual, CplxD expected, double tolerance) {
    EXPECT_LE(CplxDCabs(CplxDSub(actual, expected)), tolerance)
        << "{" << actual.re << ", " << actual.im << "} instead of {" << expected.re << ", " << expected.im << "}";
}

void expect_equal(CplxD actual, double re, double im) {
    EXPECT_EQ(actual.re, re);
    EXPECT_EQ(actual.im, im);
}

}  // namespace

TEST(Complex, arithmetic_of_small_integers_is_exact) {
    const CplxD a = getCplxD(3, -4), b = getCplxD(1, 2);
    expect_equal(CplxDAdd(a, b), 4, -2);
    expect_equal(CplxDSub(a, b), 2, -6);
    expect_equal(CplxDMult(a, b), 11, 2);
    expect_equal(CplxDMult_coef(a, -2), -6, 8);
    expect_equal(CplxDDivision(getCplxD(11, 2), b), 3, -4);
    EXPECT_EQ(CplxDCabs(a), 5);
    expect_equal(CplxDConj(a), 3, 4);
    EXPECT_TRUE(std::signbit(CplxDConj(getCplxD(1, 0.0)).im));
    EXPECT_FALSE(std::signbit(CplxDConj(getCplxD(1, -0.0)).im));
}

TEST(CplxDPow, guards_the_power_first_and_the_modulus_next) {
    expect_equal(CplxDPow(getCplxD(0, 0), 0), 1, 0);
    expect_equal(CplxDPow(getCplxD(kNaN, kInf), -0.9e-50), 1, 0);
    expect_equal(CplxDPow(getCplxD(0, 0), 1e-50), 0, 0);  // not below the threshold: no longer 0^0
    expect_equal(CplxDPow(getCplxD(0, 0), 2.5), 0, 0);
    expect_equal(CplxDPow(getCplxD(0, 0.9e-50), -1), 0, 0);  // not a huge number
    EXPECT_GT(CplxDPow(getCplxD(1.1e-50, 0), -1).re, 0.9e50);
    EXPECT_TRUE(std::isnan(CplxDPow(getCplxD(1, 1), kNaN).re));
}

TEST(CplxDPow, takes_the_principal_branch) {
    expect_near(CplxDPow(getCplxD(-1, 0), 0.5), getCplxD(0, 1), DBL_EPSILON);
    expect_near(CplxDPow(getCplxD(-1, -0.0), 0.5), getCplxD(0, -1), DBL_EPSILON);  // arg = -pi below the cut
    expect_near(CplxDPow(getCplxD(-8, 0), 1.0 / 3), getCplxD(1, std::sqrt(3.0)), 4 * DBL_EPSILON);
}

TEST(CplxDDivision, of_a_finite_number_by_zero_is_nan) {
    for (const CplxD a : {getCplxD(0, 0), getCplxD(1, 0), getCplxD(-2, 3)}) {
        EXPECT_TRUE(std::isnan(CplxDDivision(a, getCplxD(0, -0.0)).re));
        EXPECT_TRUE(std::isnan(CplxDDivision(a, getCplxD(0, -0.0)).im));
    }
}

TEST(CplxDTan, drops_the_imaginary_part_next_to_a_pole) {
    expect_equal(CplxDTan(getCplxD(kPi / 2, 1e-9)), std::tan(kPi / 2), 0);  // cosh 1e-9 rounds to 1: d = 0
    EXPECT_GT(CplxDTan(getCplxD(kPi / 2, 1e-7)).im, 0.9e7);
}

TEST(Complex, squares_overflow_and_underflow_where_the_header_says) {
    EXPECT_EQ(CplxDCabs(getCplxD(0, 1e154)), 1e154);
    EXPECT_EQ(CplxDCabs(getCplxD(1.4e154, 0)), kInf);
    EXPECT_GT(CplxDCabs(getCplxD(2e-162, 0)), 0);
    EXPECT_EQ(CplxDCabs(getCplxD(1e-162, 1e-162)), 0);
    expect_equal(CplxDDivision(getCplxD(1, 0), getCplxD(1e155, 0)), 0, 0);
    EXPECT_EQ(CplxDDivision(getCplxD(1, 0), getCplxD(1e-163, 0)).re, kInf);
    EXPECT_EQ(CplxDTan(getCplxD(0.5, 355)).im, 1);
    EXPECT_EQ(CplxDTan(getCplxD(0.5, 356)).re, 0);
    EXPECT_TRUE(std::isnan(CplxDTan(getCplxD(0.5, 356)).im));
}

// Each bound counts the roundings on the way, half an epsilon each; libm is taken as within an ulp.
TEST(Complex, laws) {
    std::mt19937_64 bits(1);
    const auto uniform = [&bits] { return static_cast<double>(bits() >> 11) * 0x1p-51 - 2; };  // [-2, 2)
    const CplxD one = getCplxD(1, 0);
    for (int i = 0; i < 2000; ++i) {
        const CplxD z = getCplxD(uniform(), uniform()), w = getCplxD(uniform(), uniform());
        const double size = CplxDCabs(z), grown = std::cosh(z.im) * std::cosh(z.im);
        expect_near(CplxDDivision(CplxDMult(z, w), w), z, 4 * DBL_EPSILON * size);
        // The argument is up to pi, with an error of up to 2 epsilon, and doubled.
        expect_near(CplxDPow(z, 2), CplxDMult(z, z), 8 * DBL_EPSILON * size * size);
        const CplxD s = CplxDSin(z), c = CplxDCos(z);
        expect_near(CplxDAdd(CplxDMult(s, s), CplxDMult(c, c)), one, 8 * DBL_EPSILON * grown);
        // d = cosh^2 - sin^2 = |cos z|^2 loses what cancels.
        const double lost = grown / (c.re * c.re + c.im * c.im);
        const CplxD quotient = CplxDDivision(s, c);
        expect_near(CplxDTan(z), quotient, 8 * DBL_EPSILON * lost * CplxDCabs(quotient));
    }
}

// mpmath 1.3.0, mp.dps = 40: sin(z), cos(z), tan(z), z**-1.5 for z = mpc('0.75', '-1.25');
// w**0.25 for w = mpc('-2.5', '0.625').
TEST(Complex, reference_values) {
    const CplxD z = getCplxD(0.75, -1.25), w = getCplxD(-2.5, 0.625);
    const double tolerance = 4 * DBL_EPSILON;
    expect_near(CplxDSin(z), getCplxD(1.2872229100264918858, -1.172106359892702561), tolerance);
    expect_near(CplxDCos(z), getCplxD(1.3817387306342588853, 1.0919301355539746617), tolerance);
    expect_near(CplxDTan(z), getCplxD(0.16080778591620642673, -0.97536328503123564619), tolerance);
    expect_near(CplxDPow(z, -1.5), getCplxD(0.014334108262129124737, 0.567992429078886959), tolerance);
    expect_near(CplxDPow(w, 0.25), getCplxD(0.94905857027491380291, 0.83938856798700760251), tolerance);
}
