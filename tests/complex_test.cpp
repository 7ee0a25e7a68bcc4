#include <gtest/gtest.h>
#include <mensura/complex.h>

#include <cfloat>
#include <cmath>
#include <numbers>

#include "support/expect.h"

constexpr double kPi = std::numbers::pi, kInf = HUGE_VAL, kNaN = NAN;

TEST(Complex, arithmetic_of_small_integers_is_exact) {
    const CplxD a = getCplxD(3, -4), b = getCplxD(1, 2);
    EXPECT_SAME_BITS(CplxDAdd(a, b), getCplxD(4, -2));
    EXPECT_SAME_BITS(CplxDSub(a, b), getCplxD(2, -6));
    EXPECT_SAME_BITS(CplxDMult(a, b), getCplxD(11, 2));
    EXPECT_SAME_BITS(CplxDMult_coef(a, -2), getCplxD(-6, 8));
    EXPECT_SAME_BITS(CplxDDivision(getCplxD(11, 2), b), getCplxD(3, -4));
    EXPECT_EQ(CplxDCabs(a), 5);
    for (const double im : {-4.0, 0.0, -0.0}) EXPECT_SAME_BITS(CplxDConj(getCplxD(3, im)), getCplxD(3, -im));
}

TEST(CplxDPow, guards_the_power_first_and_the_modulus_next) {
    EXPECT_SAME_BITS(CplxDPow(getCplxD(0, 0), 0), getCplxD(1, 0));
    EXPECT_SAME_BITS(CplxDPow(getCplxD(kNaN, kInf), -0.9e-50), getCplxD(1, 0));
    EXPECT_SAME_BITS(CplxDPow(getCplxD(0, 0), 1e-50), getCplxD(0, 0));  // not below the threshold: no longer 0^0
    EXPECT_SAME_BITS(CplxDPow(getCplxD(0, 0), 2.5), getCplxD(0, 0));
    EXPECT_SAME_BITS(CplxDPow(getCplxD(0, 0.9e-50), -1), getCplxD(0, 0));  // not a huge number
    EXPECT_GT(CplxDPow(getCplxD(1.1e-50, 0), -1).re, 0.9e50);
    EXPECT_SAME_BITS(CplxDPow(getCplxD(1, 1), kNaN).re, kNaN);
}

TEST(CplxDPow, takes_the_principal_branch) {
    EXPECT_CLOSE(CplxDPow(getCplxD(-1, 0), 0.5), getCplxD(0, 1), DBL_EPSILON);
    EXPECT_CLOSE(CplxDPow(getCplxD(-1, -0.0), 0.5), getCplxD(0, -1), DBL_EPSILON);  // arg = -pi below the cut
    EXPECT_CLOSE(CplxDPow(getCplxD(-8, 0), 1.0 / 3), getCplxD(1, std::sqrt(3.0)), 4 * DBL_EPSILON);
}

TEST(CplxDDivision, of_a_finite_number_by_zero_is_nan) {
    for (const CplxD a : {getCplxD(0, 0), getCplxD(1, 0), getCplxD(-2, 3)})
        EXPECT_SAME_BITS(CplxDDivision(a, getCplxD(0, -0.0)), getCplxD(kNaN, kNaN));
}

TEST(CplxDTan, drops_the_imaginary_part_next_to_a_pole) {
    EXPECT_SAME_BITS(CplxDTan(getCplxD(kPi / 2, 1e-9)),
                     getCplxD(std::tan(kPi / 2), 0));  // cosh 1e-9 rounds to 1: d = 0
    EXPECT_GT(CplxDTan(getCplxD(kPi / 2, 1e-7)).im, 0.9e7);
}

TEST(Complex, squares_overflow_and_underflow_where_the_header_says) {
    EXPECT_EQ(CplxDCabs(getCplxD(0, 1e154)), 1e154);
    EXPECT_EQ(CplxDCabs(getCplxD(1.4e154, 0)), kInf);
    EXPECT_GT(CplxDCabs(getCplxD(2e-162, 0)), 0);
    EXPECT_EQ(CplxDCabs(getCplxD(1e-162, 1e-162)), 0);
    EXPECT_SAME_BITS(CplxDDivision(getCplxD(1, 0), getCplxD(1e155, 0)), getCplxD(0, 0));
    EXPECT_EQ(CplxDDivision(getCplxD(1, 0), getCplxD(1e-163, 0)).re, kInf);
    EXPECT_EQ(CplxDTan(getCplxD(0.5, 355)).im, 1);
    EXPECT_SAME_BITS(CplxDTan(getCplxD(0.5, 356)), getCplxD(0, kNaN));
}

// mpmath 1.3.0, mp.dps = 40: sin(z), cos(z), tan(z), z**-1.5 for z = mpc('0.75', '-1.25');
// w**0.25 for w = mpc('-2.5', '0.625'); sin(v), cos(v), tan(v) for v = mpc('-0.5', '0.875').
TEST(Complex, values_are_those_of_mpmath) {
    const CplxD z = getCplxD(0.75, -1.25), w = getCplxD(-2.5, 0.625), v = getCplxD(-0.5, 0.875);
    const double tolerance = 4 * DBL_EPSILON;
    EXPECT_CLOSE(CplxDSin(z), getCplxD(1.2872229100264918858, -1.172106359892702561), tolerance);
    EXPECT_CLOSE(CplxDCos(z), getCplxD(1.3817387306342588853, 1.0919301355539746617), tolerance);
    EXPECT_CLOSE(CplxDTan(z), getCplxD(0.16080778591620642673, -0.97536328503123564619), tolerance);
    EXPECT_CLOSE(CplxDSin(v), getCplxD(-0.67496818908124824144, 0.86969014347545318976), tolerance);
    EXPECT_CLOSE(CplxDCos(v), getCplxD(1.2355209826597135591, 0.4751138907732434805), tolerance);
    EXPECT_CLOSE(CplxDTan(v), getCplxD(-0.24011220947861919284, 0.7962396457446077887), tolerance);
    EXPECT_CLOSE(CplxDPow(z, -1.5), getCplxD(0.014334108262129124737, 0.567992429078886959), tolerance);
    EXPECT_CLOSE(CplxDPow(w, 0.25), getCplxD(0.94905857027491380291, 0.83938856798700760251), tolerance);
}
