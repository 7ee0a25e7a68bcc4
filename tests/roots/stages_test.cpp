// The stages of the root finder on their own.
#include <gtest/gtest.h>
#include <mensura/roots.h>

#include <climits>
#include <cmath>
#include <numbers>
#include <set>
#include <vector>

#include "support/noise.h"
#include "support/reference/roots.h"

using real = long double;
using Polynomial = std::vector<real>;  // highest power first

// Small integers, so that all sums are exact.
TEST(Stages, a_quotient_and_its_remainder_multiply_back_to_the_polynomial) {
    support::Noise noise(8);
    for (int N = 1; N <= 20; ++N) {
        SCOPED_TRACE(testing::Message() << "degree " << N);
        const std::size_t n = static_cast<std::size_t>(N);
        Polynomial p(n + 1), r(n + 2);
        for (real &c : p) c = noise.below(19) - 9;
        real TUV[] = {1, real(noise.below(5) - 2), real(noise.below(5) - 2)};
        Polynomial in = p, in_place = p;
        in_place.resize(n + 2);
        QuadSynDiv(in.data(), N, TUV, r.data());
        QuadSynDiv(in_place.data(), N, TUV, in_place.data());
        EXPECT_EQ(in, p);
        EXPECT_EQ(in_place, r);
        // Quotient times divisor plus R[N-1] (x + u) + R[N].
        Polynomial rebuilt(2);
        if (N >= 2) rebuilt = reference::product(Polynomial(r.begin(), r.end() - 3), {1, TUV[1], TUV[2]});
        rebuilt[n - 1] += r[n - 1];
        rebuilt[n] += r[n - 1] * TUV[1] + r[n];
        EXPECT_EQ(rebuilt, p);
        EXPECT_EQ(r[n + 1], r[n - 1] * TUV[1] + r[n]);

        Polynomial derivative = p;
        for (std::size_t i = 0; i <= n; ++i) derivative[i] *= static_cast<real>(n - i);
        DerivOfP(in.data(), N, in.data());  // in place
        EXPECT_EQ(in, derivative);
    }
}

TEST(Stages, start_values_cover_the_half_circle_once) {
    Polynomial p{2, -3, 5, -7, 11, -13, 17}, KR(8), KQ(8), QP(8);
    real TUV[3];
    int flag = 0;
    std::set<long> degrees;
    for (int index = 0; index < 180; ++index) {
        SetTUVandK(p.data(), 6, TUV, KR.data(), KQ.data(), index, 0.5L, 3, QP.data(), &flag);
        EXPECT_EQ(TUV[0], 1) << index;
        EXPECT_EQ(TUV[2], index == 2 ? -0.25L : 0.25L) << index;  // index 2: roots +radius and -radius
        degrees.insert(std::lround(std::acos(-TUV[1]) * 180 / std::numbers::pi_v<real>));  // -u = 2 radius cos
    }
    EXPECT_EQ(degrees.size(), 179);  // u = 0 at index 2 as at 90 degrees; 0 is not there
    EXPECT_EQ(*degrees.begin(), 1);
    EXPECT_EQ(*degrees.rbegin(), 179);
}

TEST(Stages, touch_nothing_outside_their_domain) {
    const Polynomial untouched(4, 77);
    Polynomial a = untouched, b = a, c = a, d = a, TUV = a, p = a;
    int flag = 9;
    for (const auto &[N, index] : {std::pair{0, 0}, {-3, 0}, {2, -1}, {2, 180}})
        SetTUVandK(p.data(), N, TUV.data(), a.data(), b.data(), index, 1, 0, c.data(), &flag);
    for (const int N : {1, 0, -3}) {
        EXPECT_EQ(QuadIterate(0, p.data(), a.data(), b.data(), c.data(), N, TUV.data(), &flag), 0);
        UpdateTUV(0, p.data(), N, a.data(), b.data(), c.data(), TUV.data(), &flag);
    }
    for (const int N : {0, -3}) {
        EXPECT_EQ(RealIterate(0, p.data(), a.data(), b.data(), c.data(), N, d.data()), 0);
        QuadSynDiv(p.data(), N, TUV.data(), a.data());
    }
    DerivOfP(p.data(), -1, a.data());
    for (const Polynomial &x : {a, b, c, d, TUV, p}) EXPECT_EQ(x, untouched);
    EXPECT_EQ(flag, 9);
}

TEST(Stages, take_any_pass_and_step) {  // which count steps: the sanitizers look for an overflow
    for (const int pass : {INT_MIN, INT_MAX}) {
        Polynomial p{1, -6, 11, -6, 0}, TUV{1, 5, 9}, qp(5), kq{1, -4, 11. / 3, 0, 0}, qk(5);
        int flag = 3;  // no progress
        UpdateTUV(-pass / 2, p.data(), 3, qp.data(), kq.data(), qk.data(), TUV.data(), &flag);
        UpdateTUV(pass, p.data(), 3, qp.data(), kq.data(), qk.data(), TUV.data(), &flag);
        QuadIterate(pass, p.data(), qp.data(), kq.data(), qk.data(), 3, TUV.data(), &flag);
        EXPECT_TRUE(std::isfinite(TUV[1] + TUV[2])) << "pass " << pass << ": " << testing::PrintToString(TUV);
    }
}
