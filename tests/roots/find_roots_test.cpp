// The root finder as a whole.
#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <chrono>
#include <cmath>
#include <numbers>

#include "find.h"
#include "support/hash.h"

using namespace roots;

// Tolerances: worst of 1000 polynomials at each of 12 degrees was 2.2e-11 (degree 100); worst median up to degree 30,
// 3.5e-15.
TEST(FindRoots, roots_rebuild_the_polynomial_and_pair_up) {
    support::Noise noise(20);
    std::vector<double> up_to_30;
    for (int i = 0; i < 300; ++i) {
        const int degree = 1 + i % 100;
        SCOPED_TRACE(testing::Message() << "degree " << degree);
        const Coefficients p = random_polynomial(degree, noise);
        const std::vector<CplxD> z = find(p);
        ASSERT_EQ(degree_of(p), std::ssize(z));
        const double error = reference::rebuilding_error(p, z);
        EXPECT_LE(error, 1e-10);
        if (degree <= 30) up_to_30.push_back(error);
        for (std::size_t k = 0; k < z.size(); ++k) {
            if (z[k].im == 0) continue;
            ASSERT_LT(++k, z.size());
            EXPECT_SAME_BITS(z[k], CplxDConj(z[k - 1]));
        }
    }
    std::ranges::sort(up_to_30);
    EXPECT_LE(up_to_30[45], 1e-14);
}

// Programs pair the roots up by their slots, so the order counts as much as the values.
TEST(FindRoots, returns_the_roots_in_the_order_found) {
    const struct {
        Coefficients p;
        std::vector<CplxD> roots;  // of a pair the first one
    } cases[] = {
        // Closed forms.
        {{1, -3, 2}, {{1, 0}, {2, 0}}},
        {{1, -6, 11, -6}, {{3, 0}, {2, 0}, {1, 0}}},
        {{1, -10, 35, -50, 24}, {{2, 0}, {3, 0}, {1, 0}, {4, 0}}},
        {{1, 0, -5, 0, 4}, {{-1, 0}, {1, 0}, {-2, 0}, {2, 0}}},
        // Zeros, roots found by the iteration, then up to four by closed forms; unused slots of leading zeros in front.
        {{0, 1, -15, 85, -225, 274, -120}, {{0, 0}, {1, 0}, {2, 0}, {5, 0}, {4, 0}, {3, 0}}},
        {{1, -2, -1, -2, -20, 24, 0, 0}, {{0, 0}, {0, 0}, {1, 0}, {3, 0}, {-2, 0}, {0, -2}}},
        {{1, 0, 1, 0, 0, 0}, {{0, 0}, {0, 0}, {0, 0}, {0, 1}}},
        {{0, 1, 2}, {{0, 0}, {-2, 0}}},
#if LDBL_MANT_DIG == 64
        // No start of the first kind leads anywhere, in this precision.
        {{1, 0, -1e4, 0, 0, 1e-14}, {{1e-6, 0}, {-5e-7, 5e-7 * std::numbers::sqrt3}, {-100, 0}, {100, 0}}},
        // The real stage ends before its 20 steps, and another pass goes on from where it ended (roots by mpmath, below).
        {{2e11, 0, 1e15, -1, 0, 0, 0, 1e-14},
         {{-1.5848931922611133256e-6, 0},
          {-4.8975893053964849981e-7, 1.5073229983219710371e-6},
          {1.2822055271702051626e-6, 9.315768449873786098e-7},
          {-5e-16, 70.71067811865475244}}},
#endif
        // mpmath 1.3.0, mp.dps = 40: polyroots(p, maxsteps=200, extraprec=200); the order is the library's.
        {{1, 0, -2, -5}, {{2.0945514815423265915, 0}, {-1.0472757407711632957, 1.1359398890889281862}}},
        {{3, -1, 4, 1, -5, 9},
         {{0.8162683164280336477, 0.68696253488165591861},
          {-1.1997794472769288637, 0},
          {-0.049711926122902549203, 1.4813375221413650883}}},
    };
    for (const auto &[p, expected] : cases) {
        SCOPED_TRACE(testing::PrintToString(p));
        std::vector<CplxD> z = find(p);
        ASSERT_EQ(degree_of(p), std::ssize(z));
        for (std::size_t i = 0; i + 1 < z.size(); ++i)
            if (z[i].im != 0) z.erase(z.begin() + static_cast<std::ptrdiff_t>(i) + 1);
        ASSERT_EQ(z.size(), expected.size());
        for (std::size_t i = 0; i < z.size(); ++i)  // within 2 ulp of a double
            EXPECT_CLOSE(z[i], expected[i], 2 * DBL_EPSILON * std::max(1.0, CplxDCabs(expected[i]))) << "root " << i;
    }
}

#if defined(__x86_64__) && defined(__GLIBC__)
// A second, plain implementation gave the same bits.  They depend on powl, cosl and sqrtl of the C library (glibc 2.36).
TEST(FindRoots, bits_of_300_polynomials_stay_as_they_are) {
    support::Noise noise(9);
    support::Hash hash;
    for (std::size_t i = 0; i < 300; ++i) {
        Coefficients p(6 + i % 30);
        for (double &c : p) c = noise.below(19) - 9;
        for (const CplxD z : find(p))
            for (const double part : {z.re, z.im}) hash.add(part + 0.0);  // the sign of a 0 is not promised
    }
    EXPECT_EQ(hash.value(), 10663661652421214903U);
}
#endif

TEST(FindRoots, returns_0_and_writes_nothing_without_a_root_to_find) {
    Coefficients ones(103, 1);
    CplxD root{77, 77};
    for (const int N : {0, -1, 101, 102}) EXPECT_EQ(FindRoots(N, ones.data(), &root), 0) << N;
    EXPECT_EQ(root.re, 77);
    for (const std::size_t N : {1U, 4U, 5U, 100U})
        for (const auto &[first, last] : {std::pair{0, 0}, {3, 0}, {0, 3}}) {  // nothing, 3 x^N, the constant 3
            Coefficients p(N + 1);
            p.front() = first;
            p.back() = last;
            EXPECT_EQ(find(p).size(), 0) << first << " x^" << N << " + " << last;
        }
}

// (x^2 + 1.25)^3: where the last quartic counts as one in x^2 decides what becomes of a triple pair.
TEST(FindRoots, known_limits) {
    if (LDBL_MANT_DIG != 64) GTEST_SKIP() << "other precisions find them";
    double largest = 0;
    for (const CplxD z : find({1, 0, 3.75, 0, 4.6875, 0, 1.953125})) largest = std::max(largest, CplxDCabs(z));
    EXPECT_GT(largest, 1e10);
}

TEST(FindRoots, non_finite_coefficients) {
    for (const double bad : {std::nan(""), HUGE_VAL, -HUGE_VAL})
        for (std::size_t N = 2; N <= 8; ++N)
            for (std::size_t at = 0; at <= N; ++at) {
                SCOPED_TRACE(testing::Message() << bad << " at " << at << " of " << N);
                Coefficients p(N + 1);
                for (std::size_t i = 0; i <= N; ++i) p[i] = static_cast<double>(i) + 1.5;
                p[at] = bad;
                const std::vector<CplxD> z = find(p);
                EXPECT_EQ(z.size(), N > 4 ? 0 : N);
                const auto nans = std::ranges::count_if(z, [](CplxD root) { return std::isnan(root.re); });
                EXPECT_TRUE(nans > 0 || N > 4 || std::isinf(bad));
            }
}

// The slowest took 0.3 s in an optimised build; without a bound on passes and steps they would not end.
TEST(FindRoots, ends_soon_on_hostile_coefficients) {
    std::vector<Coefficients> hostile;
    support::Noise noise(5);
    for (const int spread : {50, 100, 100, 200, 300}) {
        hostile.push_back(random_polynomial(100, noise));
        for (double &c : hostile.back()) c *= std::pow(10.0, spread * noise());
    }
    for (const double end : {DBL_TRUE_MIN, DBL_MAX}) {
        hostile.emplace_back(101, end);
        hostile.emplace_back(101, 1.0).front() = end;
        hostile.emplace_back(101, 1.0).back() = end;
        hostile.emplace_back(101, end).front() = 1;
    }
    for (const Coefficients &p : hostile) {
        const auto start = std::chrono::steady_clock::now();
        find(p);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15)) << testing::PrintToString(p);
    }
}
