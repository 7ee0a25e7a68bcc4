// Prototype families: their poles and zeros, and the clamps of a request.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <complex>
#include <numbers>
#include <span>

#include "designs.h"
#include "support/expect.h"

using namespace designs;
using Complex = std::complex<double>;
using Roots = std::array<CplxD, MAX_IIR_SECTIONS>;

template <typename... Settings>
static std::vector<double> design(Settings... settings) {
    return numbers(prototype(settings...));
}

TEST(IirPrototype, clamps_its_request) {
    constexpr int kMostPoles[] = {20, 12, 12, 20, 20, 15, 20, 15};  // as the header says
    for (int family = 0; family < kUnknownFamily; ++family) {
        const int most = kMostPoles[family];
        EXPECT_EQ(prototype(family, most).SectionCount, most);
        for (const int more : {most + 1, INT_MAX}) EXPECT_SAME_BITS(design(family, more), design(family, most));
        EXPECT_SAME_BITS(design(family, INT_MIN), design(kUnknownFamily, 1)) << "family " << family;
    }
    constexpr double kCaps[] = {1.0, 0.5, 0.4, 0.25, 0.125, 0.1};  // Chebyshev, 15 poles and up
    for (int i = 0; i < 6; ++i) {
        EXPECT_SAME_BITS(design(pfChebyshev, 15 + i, 2.0), design(pfChebyshev, 15 + i, kCaps[i])) << 15 + i << " poles";
        EXPECT_NE(design(pfChebyshev, 15 + i, 0.9 * kCaps[i]), design(pfChebyshev, 15 + i, kCaps[i]));
    }
    EXPECT_SAME_BITS(design(pfChebyshev, 5, 0.0), design(pfChebyshev, 5, 0.0001));
    EXPECT_SAME_BITS(design(pfElliptic, 5, 0.0), design(pfElliptic, 5, 0.001));
    for (const int family : {pfInverseChebyshev, pfElliptic}) {
        EXPECT_SAME_BITS(design(family, 5, 0.1, 200), design(family, 5, 0.1, 120));
        EXPECT_SAME_BITS(design(family, 5, 0.1, 5), design(family, 5, 0.1, 20));
        EXPECT_NE(design(family, 5, 0.1, 21), design(family, 5, 0.1, 20));
    }
    for (const double sign : {-1.0, 1.0})
        EXPECT_SAME_BITS(design(pfAdjustable, 5, 0.1, 60, 3 * sign), design(pfAdjustable, 5, 0.1, 60, sign));
    const LowPassProto none = prototype(kUnknownFamily, 6);
    EXPECT_EQ(none.SectionCount, 0);
    for (const auto &values : {none.Num0, none.Den0}) EXPECT_EQ(std::count(values, values + MAX_IIR_SECTIONS, 1), 50);
    for (const auto &values : {none.Num1, none.Num2, none.Den1, none.Den2})
        EXPECT_EQ(std::count(values, values + MAX_IIR_SECTIONS, 0), 50);
}

// Each value and its conjugate are among the roots.  Both sides round some 100 operations.
static void expect_roots(int count, const Roots &roots, int expected_count, std::initializer_list<Complex> values) {
    EXPECT_EQ(count, expected_count);
    for (const Complex z : values)
        for (const Complex value : {z, std::conj(z)}) {
            const auto distance = [value](CplxD r) { return std::abs(Complex(r.re, r.im) - value); };
            const CplxD nearest = *std::min_element(roots.begin(), roots.begin() + count,
                                                    [&](CplxD a, CplxD b) { return distance(a) < distance(b); });
            EXPECT_CLOSE(Complex(nearest.re, nearest.im), value, 1e-13);
        }
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
    EXPECT_SAME_BITS(p[6], getCplxD(-1, 0));
    expect_roots(
        ChebyshevPoly(0.5, 5, p.data()), p, 5,
        {{-0.11196292128849389, 1.0115573693864202}, {-0.29312273341300615, 0.6251768358512401}, -0.36231962424902453});
    expect_roots(
        BesselPoly(5, p.data()), p, 5,
        {{-2.324674303181645, 3.571022920337976}, {-3.3519563991535333, 1.742661416183198}, -3.6467385953296425});
    expect_roots(InvChebyPoly(40, 4, p.data(), z.data(), &zeros), p, 8,
                 {{-0.5045370360501146, 0.24079048688074278}, {-0.17116012188825785, 0.47610224689532044}});
    EXPECT_EQ(zeros, 8);
    InvChebyPoly(40, 5, p.data(), z.data(), &zeros);
    EXPECT_EQ(zeros, 8) << "T_5 has a root at 0, whose reciprocal is no zero";
    expect_roots(
        EllipticPoly(0.5, 60, 5, p.data(), z.data(), &zeros), p, 5,
        {{-0.2889085470048947, 0.6762614069607231}, {-0.09156502765305927, 1.0124235187026418}, -0.40277656528488726});
    expect_roots(zeros, z, 4, {{0, 2.84748550910066}, {0, 1.8524973862467264}});
}

// mpmath 1.2.1, mp.dps = 40: polyroots(c, maxsteps=300, extraprec=300), c by descending power: (-1)^m / m!, n = 4;
// (-1)^m (m!)^g with g = 1, n = 4 and g = -0.5, n = 3, imaginary parts times 1.1.
TEST(PrototypeFamily, poles_of_magnitude_polynomials_are_those_of_mpmath) {
    Roots p{};
    expect_roots(GaussianPoly(4, p.data()), p, 8,
                 {{-1.3553576274667508601, 0.32794826918981345494}, {-1.1810803251149910978, 1.0603749173954646726}});
    expect_roots(
        AdjustablePoly(0.5, 4, p.data()), p, 8,
        {{-0.63844152669714946054, 0.25369855881421857469}, {-0.32677406873518685354, 0.63780685165388635123}});
    expect_roots(AdjustablePoly(-0.5, 3, p.data()), p, 6,
                 {{-1.139493866694760193, 0.0}, {-0.89170995175085015359, 0.83653851564964354041}});
}

// L_n(y), y = w^2, is by its definition the integral from -1 to 2y - 1 of v(x)^2, of (x + 1) v(x)^2 for even n, where v is
// a sum of Legendre polynomials P_0 .. P_k, k = (n - 1) / 2, with weights proportional to 2i + 1; for even n only of
// those with k - i even.  By midpoints; at n = 20 the roots have lost the most digits, 2e-7.
TEST(PrototypeFamily, papoulis_polynomials_satisfy_their_definition) {
    constexpr int kSteps = 5000;
    for (int n = 1; n <= 20; ++n)
        for (const double w : {0.5, 0.8, 0.9}) {
            const int k = (n - 1) / 2;
            const double step = 2 * w * w / kSteps, scale = n % 2 == 0 ? (k + 1) * (k + 2) : 2 * (k + 1) * (k + 1);
            double integral = 0;
            for (int j = 0; j < kSteps; ++j) {
                const double x = (j + 0.5) * step - 1;
                double v = 0;
                for (int i = k; i >= 0; i -= 2 - n % 2) v += (2 * i + 1) * std::legendre(static_cast<unsigned>(i), x);
                integral += step * v * v * (n % 2 == 0 ? x + 1 : 1) / scale;
            }
            Roots p{};
            ASSERT_EQ(PapoulisPoly(n, p.data()), 2 * n);
            Complex product = 1;
            for (int i = 0; i < 2 * n; ++i) product *= 1.0 - Complex(0, w) / support::as_complex(p.data()[i]);
            EXPECT_NEAR(product.real(), 1 + 0.1 * integral, 1e-5) << "order " << n << ", w " << w;
        }
}

TEST(PrototypeFamily, chebyshev_ripple_is_capped_at_3_dB) {
    Roots four{}, ten{};
    ChebyshevPoly(4, 5, four.data());
    ChebyshevPoly(10, 5, ten.data());
    EXPECT_SAME_BITS(ten, four);
}

TEST(PrototypeFamily, elliptic_search_stops_at_the_ends_of_its_range) {
    const auto roots_at = [](double ripple, double stop, int n) {
        std::vector<CplxD> roots(2 * MAX_IIR_SECTIONS);  // poles, then zeros
        int zeros = 0;
        EXPECT_EQ(EllipticPoly(ripple, stop, n, roots.data(), &roots[MAX_IIR_SECTIONS], &zeros), n);
        EXPECT_EQ(zeros, n);
        return roots;
    };
    // Two poles reach 115.7 dB at the least modulus, 0.001, with zeros at sqrt(2) / 0.001 to second order in it.
    const auto deep = roots_at(0.1, 120, 2);
    EXPECT_NEAR(deep[MAX_IIR_SECTIONS].im / (std::numbers::sqrt2 / 0.001), 1, 1e-6);
    EXPECT_SAME_BITS(roots_at(0.1, 150, 2), deep);
    EXPECT_SAME_BITS(roots_at(0.1, 10, 14), roots_at(0.1, 20, 14));
    // A target out of reach: the fifteenth evaluation is at the least modulus, which then moves to 0.01899 once more.
    // The zeros, 1 / (modulus cos theta) for moduli this small, lie by the moved one.
    const auto moved = roots_at(0.459, 294.557, 6);
    EXPECT_NEAR(moved[MAX_IIR_SECTIONS].im * std::cos(std::numbers::pi / 12), 1 / 0.01899, 0.1);
}

TEST(PrototypeFamily, orders_that_do_not_fit_write_nothing) {
    for (const int n : {INT_MIN, -1, 0, 51, INT_MAX})
        for (const int count :
             {ButterworthPoly(n, nullptr), ChebyshevPoly(1, n, nullptr), GaussianPoly(n, nullptr),
              AdjustablePoly(0, n, nullptr), BesselPoly(n, nullptr), PapoulisPoly(n, nullptr),
              InvChebyPoly(60, n, nullptr, nullptr, nullptr), EllipticPoly(1, 60, n, nullptr, nullptr, nullptr)})
            EXPECT_EQ(count, 0) << "order " << n;
    EXPECT_EQ(GaussianPoly(26, nullptr), 0);  // 52 roots
}
