#include <gtest/gtest.h>
#include <mensura/roots.h>

#include <algorithm>
#include <bit>
#include <cfloat>
#include <chrono>
#include <climits>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstring>
#include <numbers>
#include <random>
#include <set>
#include <vector>

namespace {

using real = long double;
using Coefficients = std::vector<double>;  // highest power first
using Polynomial = std::vector<real>;
using Point = std::complex<real>;

constexpr double kUntouched = 77;
constexpr real kMark = 77;  // the same for the long double arrays

// In [-1, 1).
double uniform(std::mt19937_64 &bits) { return static_cast<double>(bits() >> 11) * 0x1p-52 - 1; }

Coefficients random_polynomial(int degree, std::mt19937_64 &bits) {
    Coefficients p(static_cast<std::size_t>(degree) + 1);
    for (double &c : p) c = uniform(bits);
    return p;
}

template <typename T>
std::vector<T> product(const std::vector<T> &a, const std::vector<T> &b) {
    std::vector<T> ab(a.size() + b.size() - 1);
    for (std::size_t i = 0; i < a.size(); ++i)
        for (std::size_t j = 0; j < b.size(); ++j) ab[i + j] += a[i] * b[j];
    return ab;
}

int degree_of(const auto &p) { return static_cast<int>(p.size()) - 1; }

// FindRoots, with the proof that it writes N roots or none, and nothing else.
std::vector<CplxD> find(const Coefficients &p) {
    Coefficients input = p;
    std::vector<CplxD> roots(p.size() + 1, getCplxD(kUntouched, kUntouched));
    const int count = FindRoots(degree_of(p), input.data(), roots.data());
    EXPECT_EQ(std::memcmp(p.data(), input.data(), p.size() * sizeof(double)), 0);
    EXPECT_TRUE(count == 0 || count == degree_of(p));
    for (auto z = roots.begin() + count; z != roots.end(); ++z) EXPECT_TRUE(z->re == kUntouched && z->im == kUntouched);
    roots.resize(static_cast<std::size_t>(count));
    return roots;
}

// max |rebuilt - p / p[0]| / max |p / p[0]|
double rebuilding_error(const Coefficients &p, const std::vector<CplxD> &roots) {
    std::vector<Point> rebuilt{1};
    for (const CplxD z : roots)
        rebuilt = product(rebuilt, {1, Point(-static_cast<real>(z.re), -static_cast<real>(z.im))});
    real error = 0, size = 0;
    for (std::size_t i = 0; i < p.size(); ++i) {
        const real c = static_cast<real>(p[i]) / static_cast<real>(p[0]);
        error = std::max(error, std::abs(rebuilt[i] - c));
        size = std::max(size, std::fabs(c));
    }
    return static_cast<double>(error / size);
}

}  // namespace

// Tolerances: worst of 1000 polynomials at each of 12 degrees was 2.2e-11 (degree 100); worst median up to degree 30,
// 3.5e-15.
TEST(FindRoots, roots_rebuild_the_polynomial_and_pair_up) {
    std::mt19937_64 bits(20);
    std::vector<double> up_to_30;
    for (int i = 0; i < 300; ++i) {
        const int degree = 1 + i % 100;
        const Coefficients p = random_polynomial(degree, bits);
        const std::vector<CplxD> z = find(p);
        ASSERT_EQ(z.size(), p.size() - 1);
        const double error = rebuilding_error(p, z);
        EXPECT_LE(error, 1e-10) << "degree " << degree;
        if (degree <= 30) up_to_30.push_back(error);
        for (std::size_t k = 0; k < z.size(); ++k) {
            if (z[k].im == 0) continue;
            ASSERT_LT(++k, z.size());
            EXPECT_TRUE(z[k].re == z[k - 1].re && z[k].im == -z[k - 1].im);
        }
    }
    std::sort(up_to_30.begin(), up_to_30.end());
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
        {{1, -15, 85, -225, 274, -120}, {{1, 0}, {2, 0}, {5, 0}, {4, 0}, {3, 0}}},
        {{0, 1, -15, 85, -225, 274, -120}, {{0, 0}, {1, 0}, {2, 0}, {5, 0}, {4, 0}, {3, 0}}},
        {{1, -2, -1, -2, -20, 24, 0, 0}, {{0, 0}, {0, 0}, {1, 0}, {3, 0}, {-2, 0}, {0, -2}}},
        {{1, 0, 1, 0, 0, 0}, {{0, 0}, {0, 0}, {0, 0}, {0, 1}}},
        {{0, 1, 2}, {{0, 0}, {-2, 0}}},
        // mpmath 1.3.0, mp.dps = 40: polyroots(p, maxsteps=200, extraprec=200); the order is the library's.
        {{1, 0, -2, -5}, {{2.0945514815423265915, 0}, {-1.0472757407711632957, 1.1359398890889281862}}},
        {{3, -1, 4, 1, -5, 9},
         {{0.8162683164280336477, 0.68696253488165591861},
          {-1.1997794472769288637, 0},
          {-0.049711926122902549203, 1.4813375221413650883}}},
        {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11},
         {{-0.88465842519699183973, 0.95996668011819043421},
          {0.95324626051399160046, 0.72511051588973388053},
          {0.44276576294433608413, 1.1737407366690425601},
          {-1.2646309651868401683, -0.35726165459563219239},
          {-0.24672263307449567658, -1.2628853966692345372}}},
    };
    for (const auto &[p, expected] : cases) {
        std::vector<CplxD> z = find(p);
        ASSERT_EQ(z.size(), p.size() - 1);
        for (std::size_t i = 0; i + 1 < z.size(); ++i)
            if (z[i].im != 0) z.erase(z.begin() + static_cast<std::ptrdiff_t>(i) + 1);
        ASSERT_EQ(z.size(), expected.size());
        for (std::size_t i = 0; i < z.size(); ++i)  // within 2 ulp of a double
            EXPECT_LE(CplxDCabs(CplxDSub(z[i], expected[i])), 2 * DBL_EPSILON * std::max(1.0, CplxDCabs(expected[i])))
                << "degree " << degree_of(p) << ": {" << z[i].re << ", " << z[i].im << "}";
    }
}

#if defined(__x86_64__) && defined(__GLIBC__)
// A second, plain implementation gave the same bits.  They hang on powl, cosl and sqrtl of the C library (glibc 2.36).
TEST(FindRoots, bits_of_300_polynomials_stay_as_they_are) {
    std::mt19937_64 bits(9);
    std::uint64_t digest = 14695981039346656037u;  // FNV-1a
    for (std::size_t i = 0; i < 300; ++i) {
        Coefficients p(6 + i % 30);
        for (double &c : p) c = static_cast<double>(bits() % 19) - 9;
        for (const CplxD z : find(p))
            for (const double part : {z.re + 0.0, z.im + 0.0})  // the sign of a 0 is not promised
                digest = (digest ^ std::bit_cast<std::uint64_t>(part)) * 1099511628211u;
    }
    EXPECT_EQ(digest, 11314790958435385800u);
}
#endif

TEST(FindRoots, returns_0_and_writes_nothing_without_a_root_to_find) {
    Coefficients ones(103, 1);
    CplxD root = getCplxD(kUntouched, kUntouched);
    for (const int N : {0, -1, 101, 102}) EXPECT_EQ(FindRoots(N, ones.data(), &root), 0) << N;
    EXPECT_EQ(root.re, kUntouched);
    for (const std::size_t N : {1u, 4u, 5u, 100u}) {
        Coefficients p(N + 1);
        EXPECT_TRUE(find(p).empty());
        p[0] = 3;
        EXPECT_TRUE(find(p).empty());  // 3 x^N
        p[0] = 0, p[N] = 3;
        EXPECT_TRUE(find(p).empty());  // the constant 3
    }
}

TEST(FindRoots, known_limits) {
    if (LDBL_MANT_DIG != 64) GTEST_SKIP() << "other precisions find them";
    const std::vector<CplxD> z = find({1, 0, 3.75, 0, 4.6875, 0, 1.953125});  // (x^2 + 1.25)^3
    EXPECT_TRUE(std::any_of(z.begin(), z.end(), [](CplxD root) { return CplxDCabs(root) > 1e10; }));
}

TEST(FindRoots, non_finite_coefficients) {
    for (const double bad : {static_cast<double>(NAN), HUGE_VAL, -HUGE_VAL})
        for (std::size_t N = 2; N <= 8; ++N)
            for (std::size_t at = 0; at <= N; ++at) {
                Coefficients p(N + 1);
                for (std::size_t i = 0; i <= N; ++i) p[i] = static_cast<double>(i) + 1.5;
                p[at] = bad;
                const std::vector<CplxD> z = find(p);
                EXPECT_EQ(z.size(), N > 4 ? 0 : N) << bad << " at " << at << " of " << N;
                const auto is_nan = [](CplxD root) { return std::isnan(root.re); };
                EXPECT_TRUE(z.empty() || std::isinf(bad) || std::any_of(z.begin(), z.end(), is_nan));
            }
}

// The slowest took 0.3 s in an optimised build; without a bound on passes and steps they would not end.
TEST(FindRoots, ends_soon_on_hostile_coefficients) {
    std::vector<Coefficients> hostile;
    std::mt19937_64 bits(5);
    for (const int spread : {50, 100, 100, 200, 300}) {
        hostile.push_back(random_polynomial(100, bits));
        for (double &c : hostile.back()) c *= std::pow(10.0, spread * uniform(bits));
    }
    hostile.emplace_back(101, DBL_TRUE_MIN);
    hostile.emplace_back(101, DBL_MAX);
    for (const double end : {DBL_TRUE_MIN, DBL_MAX}) {
        hostile.emplace_back(101, 1.0).front() = end;
        hostile.emplace_back(101, 1.0).back() = end;
        hostile.emplace_back(101, end).front() = 1;
    }
    for (const Coefficients &p : hostile) {
        const auto start = std::chrono::steady_clock::now();
        find(p);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
    }
}

// FindRoots hands degrees up to 4 straight to the closed forms.  Rebuilding errors measured over 1000 polynomials of
// each degree: median at most 1.1e-16, worst 1.5e-13 (the cubic, by cancellation between roots of very different size).
TEST(ClosedForms, solve_their_polynomials) {
    std::mt19937_64 bits(7);
    std::vector<double> errors;
    for (int i = 0; i < 3000; ++i) {
        const Coefficients p = random_polynomial(2 + i % 3, bits);
        errors.push_back(rebuilding_error(p, find(p)));
    }
    std::sort(errors.begin(), errors.end());
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
        EXPECT_LE(rebuilding_error(p, find(p)), 6 * DBL_EPSILON) << p[1] << ' ' << p[2];
    for (const CplxD z : find({1, 8, 24, 32, 16})) EXPECT_TRUE(z.re == -2 && z.im == 0);  // (x + 2)^4
}

TEST(QuadCubicRoots, counts_what_it_solves) {
    const struct {
        Polynomial p;
        int count;
        real first;
    } cases[] = {{{4, -2}, 1, 0.5L},         {{0, 1, 2}, 1, -2}, {{1, 2, 0, 0}, 1, -2}, {{0, 2, -6, 0}, 1, 3},
                 {{2, 0, -8, 0, 0}, 2, -2},  {{0, 0, 3}, 0, 0},  {{4, 0, 0, 0}, 0, 0},  {{0, 0, 0, 0, 0}, 0, 0},
                 {{1, 1, 1e-30L / 2}, 1, -1}};  // a trailing coefficient below 1e-30 of its neighbour counts as 0
    for (const auto &[p, count, first] : cases) {
        Polynomial input = p, re(p.size(), kMark), im = re;
        EXPECT_EQ(QuadCubicRoots(input.data(), degree_of(p), re.data(), im.data()), count);
        EXPECT_EQ(input, p);
        EXPECT_EQ(re[0], first);
        EXPECT_EQ(std::count(re.begin() + count, re.end(), 0), degree_of(p) - count);
        EXPECT_EQ(std::count(im.begin(), im.end(), 0), degree_of(p));
        EXPECT_TRUE(re.back() == kMark && im.back() == kMark);
    }
    Polynomial p(6, 1), out(6, kMark);
    for (const int N : {-1, 0, 5}) EXPECT_EQ(QuadCubicRoots(p.data(), N, out.data(), out.data()), 0);
    EXPECT_EQ(out, Polynomial(6, kMark));
}

TEST(ReversePoly, and_InvertRoots_undo_themselves) {
    for (const Polynomial &p : {Polynomial{1, 2, -4, 8}, Polynomial{1, -2, 16, 0.5L, 4}}) {
        Polynomial q = p;
        ReversePoly(q.data(), degree_of(q));
        EXPECT_EQ(q.front(), 1);
        EXPECT_EQ(q[1], p[p.size() - 2] / p.back());
        ReversePoly(q.data(), degree_of(q));
        EXPECT_EQ(q, p);  // powers of two: no rounding
    }
    Polynomial zero_end{1, 2, 0};
    ReversePoly(zero_end.data(), 2);
    EXPECT_EQ(zero_end, (Polynomial{0, 2, 1}));  // reversed, not divided by 0
    ReversePoly(zero_end.data(), -1);
    EXPECT_EQ(zero_end, (Polynomial{0, 2, 1}));

    Polynomial re{0, 2, 1}, im{0, 0, -1};
    InvertRoots(0, re.data(), im.data());
    EXPECT_EQ(re, (Polynomial{0, 2, 1}));
    InvertRoots(3, re.data(), im.data());
    EXPECT_EQ(re, (Polynomial{0, 0.5L, 0.5L}));
    EXPECT_EQ(im, (Polynomial{0, 0, 0.5L}));
}

// Small integers, so that all sums are exact.
TEST(Stages, division_and_derivative_obey_their_laws) {
    std::mt19937_64 bits(8);
    const auto integer = [&bits](int limit) { return static_cast<real>(std::round(uniform(bits) * limit)); };
    for (int N = 1; N <= 20; ++N) {
        Polynomial p(static_cast<std::size_t>(N) + 1), q = p;
        for (std::size_t i = 0; i < p.size(); ++i) p[i] = integer(9), q[i] = integer(9);
        const std::size_t n = static_cast<std::size_t>(N);
        real TUV[] = {1, integer(2), integer(2)};
        Polynomial r(n + 2), in = p, in_place = p;
        in_place.resize(n + 2);
        QuadSynDiv(in.data(), N, TUV, r.data());
        QuadSynDiv(in_place.data(), N, TUV, in_place.data());
        EXPECT_EQ(in, p);
        EXPECT_EQ(in_place, r);
        // Quotient times divisor plus R[N-1] (x + u) + R[N].
        Polynomial rebuilt =
            N < 2 ? Polynomial{0, 0} : product(Polynomial(r.begin(), r.end() - 3), {1, TUV[1], TUV[2]});
        rebuilt[n - 1] += r[n - 1];
        rebuilt[n] += r[n - 1] * TUV[1] + r[n];
        EXPECT_EQ(rebuilt, p);
        EXPECT_EQ(r[n + 1], r[n - 1] * TUV[1] + r[n]);

        const auto derivative = [](Polynomial a) {
            DerivOfP(a.data(), degree_of(a), a.data());  // in place
            EXPECT_EQ(a.back(), 0);
            a.pop_back();
            return a;
        };
        Polynomial sum = product(derivative(p), q);
        const Polynomial other = product(p, derivative(q));
        for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += other[i];
        EXPECT_EQ(derivative(product(p, q)), sum);
    }
}

TEST(Stages, start_values_cover_the_half_circle_once) {
    Polynomial p{2, -3, 5, -7, 11, -13, 17}, KR(8), KQ(8), QP(8);
    real TUV[3];
    int flag = 0;
    std::set<long> degrees;
    for (int index = 0; index < 180; ++index) {
        SetTUVandK(p.data(), 6, TUV, KR.data(), KQ.data(), index, 0.5L, 3, QP.data(), &flag);
        EXPECT_EQ(TUV[0], 1);
        EXPECT_EQ(TUV[2], index == 2 ? -0.25L : 0.25L);  // index 2: roots +radius and -radius
        degrees.insert(std::lround(std::acos(-TUV[1]) * 180 / std::numbers::pi_v<real>));  // -u = 2 radius cos
    }
    EXPECT_EQ(degrees.size(), 179u);  // u = 0 at index 2 as at 90 degrees; 0 is not there
    EXPECT_EQ(*degrees.begin(), 1);
    EXPECT_EQ(*degrees.rbegin(), 179);
}

TEST(Stages, touch_nothing_outside_their_domain) {
    const Polynomial marked(4, kMark);
    Polynomial a = marked, b = marked, c = marked, d = marked, TUV = marked, p = marked;
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
    for (const Polynomial &x : {a, b, c, d, TUV, p}) EXPECT_EQ(x, marked);
    EXPECT_EQ(flag, 9);
}

TEST(Stages, take_any_pass_and_step) {  // which count steps: the sanitizers look for an overflow
    for (const int pass : {INT_MIN, INT_MAX}) {
        Polynomial p{1, -6, 11, -6, 0}, TUV{1, 5, 9}, qp(5), kq{1, -4, 11. / 3, 0, 0}, qk(5);
        int flag = 3;  // no progress
        UpdateTUV(-pass / 2, p.data(), 3, qp.data(), kq.data(), qk.data(), TUV.data(), &flag);
        UpdateTUV(pass, p.data(), 3, qp.data(), kq.data(), qk.data(), TUV.data(), &flag);
        QuadIterate(pass, p.data(), qp.data(), kq.data(), qk.data(), 3, TUV.data(), &flag);
        EXPECT_TRUE(std::isfinite(TUV[1]) && std::isfinite(TUV[2])) << pass;
    }
}
