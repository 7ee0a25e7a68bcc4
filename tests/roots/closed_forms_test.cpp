// The closed forms up to degree four, to which FindRoots hands such degrees straight.
#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>

#include "find.h"

using namespace roots;
using real = long double;
using Polynomial = std::vector<real>;

// Rebuilding errors measured over 1000 polynomials of each degree: median at most 1.1e-16, worst 1.5e-13 (the cubic, by
// cancellation between roots of very different size).
TEST(ClosedForms, solve_their_polynomials) {
    support::Noise noise(7);
    std::vector<double> errors;
    for (int i = 0; i < 3000; ++i) {
        const Coefficients p = random_polynomial(2 + i % 3, noise);
        errors.push_back(reference::rebuilding_error(p, find(p)));
    }
    std::ranges::sort(errors);
    EXPECT_LE(errors[1500], 2 * DBL_EPSILON);
    EXPECT_LE(errors.back(), 1e-11);

    const Coefficients special[] = {
        {1, -2, 1},                       // double root
        {1, -5, 7, -3},                   // double root 1, and 3
        {1, -3, 1, 1},                    // R = 0: 1 and 1 +- sqrt 2
        {1, 1, 5, 1},                     // reversed, one real root
        {1, 6, 11, 6},                    // reversed, three real roots
        {1, -6, 13, -10},                 // 2, 2 +- i
        {1, 0, 5, 0, 4},                  // biquadratic, A1 > 0
        {1, 0, -1, 0, 1},                 // biquadratic, A1 < 0
        {1, 0, 2, 0, 1},                  // (x^2 + 1)^2
        {1, -6, 13, -12, 4},              // (x - 1)^2 (x - 2)^2
        {1, 7, 3, 2, 5},                  // reversed quartic
        {1, -4, 6, -4, 1 + DBL_EPSILON},  // |g| <= 1e-8: taken as a quadruple root
    };
    for (const Coefficients &p : special)  // at most 12 roundings of a root, added up; measured: below 1e-15
        EXPECT_LE(reference::rebuilding_error(p, find(p)), 6 * DBL_EPSILON) << testing::PrintToString(p);
    for (const CplxD z : find({1, 8, 24, 32, 16})) EXPECT_CLOSE(z, getCplxD(-2, 0), 0);  // (x + 2)^4
    const std::vector<CplxD> fourfold = find({1, 2, -1, -4, -1, 2, 1});  // (x + 1)^4 (x - 1)^2, rounded by a division
    for (std::size_t i = 2; i < 6; ++i) EXPECT_CLOSE(fourfold.at(i), getCplxD(-1, 0), 0);
    // R = 0 stands for an angle of 30 degrees, whose sine is the double below 1/2.
    EXPECT_SAME_BITS(find({1, -3, 1, 1}).at(1), getCplxD(1 + DBL_EPSILON, 0));
}

TEST(QuadCubicRoots, counts_what_it_solves) {
    constexpr real kUntouched = 77;
    const struct {
        Polynomial p;
        int count;
        real first;
    } cases[] = {{{4, -2}, 1, 0.5L},         {{0, 1, 2}, 1, -2}, {{1, 2, 0, 0}, 1, -2}, {{0, 2, -6, 0}, 1, 3},
                 {{2, 0, -8, 0, 0}, 2, -2},  {{0, 0, 3}, 0, 0},  {{4, 0, 0, 0}, 0, 0},  {{0, 0, 0, 0, 0}, 0, 0},
                 {{1, 1, 1e-30L / 2}, 1, -1}};  // a trailing coefficient below 1e-30 of its neighbour counts as 0
    for (const auto &[p, count, first] : cases) {
        SCOPED_TRACE(testing::PrintToString(p));
        Polynomial input = p, re(p.size(), kUntouched), im = re;
        EXPECT_EQ(QuadCubicRoots(input.data(), degree_of(p), re.data(), im.data()), count);
        EXPECT_EQ(input, p);
        EXPECT_EQ(re[0], first);
        EXPECT_EQ(std::count(re.begin() + count, re.end(), 0), degree_of(p) - count);
        EXPECT_EQ(std::count(im.begin(), im.end(), 0), degree_of(p));
        EXPECT_EQ(re.back(), kUntouched);
        EXPECT_EQ(im.back(), kUntouched);
    }
    Polynomial p(6, 1), out(6, kUntouched);
    for (const int N : {-1, 0, 5}) EXPECT_EQ(QuadCubicRoots(p.data(), N, out.data(), out.data()), 0);
    EXPECT_EQ(out, Polynomial(6, kUntouched));
}

TEST(ReversePoly, divides_by_the_last_coefficient) {
    const struct {
        Polynomial p, reversed;
    } cases[] = {{{1, 2, -4, 8}, {1, -0.5L, 0.25L, 0.125L}},
                 {{1, -2, 16, 0.5L, 4}, {1, 0.125L, 4, -0.5L, 0.25L}},
                 {{1, 2, 0}, {0, 2, 1}}};  // reversed, not divided by 0
    for (const auto &[p, reversed] : cases) {
        Polynomial q = p;
        ReversePoly(q.data(), -1);
        EXPECT_EQ(q, p);
        ReversePoly(q.data(), degree_of(q));
        EXPECT_EQ(q, reversed);
    }
}

TEST(InvertRoots, inverts_all_but_0) {
    Polynomial re{0, 2, 1}, im{0, 0, -1};
    InvertRoots(0, re.data(), im.data());
    EXPECT_EQ(re, (Polynomial{0, 2, 1}));
    InvertRoots(3, re.data(), im.data());
    EXPECT_EQ(re, (Polynomial{0, 0.5L, 0.5L}));
    EXPECT_EQ(im, (Polynomial{0, 0, 0.5L}));
}
