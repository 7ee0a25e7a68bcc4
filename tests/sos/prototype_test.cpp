// Analog prototypes against SciPy, against the formulas of the families, and by their laws.

#include "sos/proto/prototype.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "iir/proto/limits.h"
#include "iir/proto/papoulis_table.h"

using namespace mensura::sos;
namespace iir = mensura::iir;

constexpr double kRipple = 0.5, kStop = 60, kGamma = 0.4;

static mensura_sos_request request_for(int family, int poles, int passes = 1) {
    mensura_sos_request request{};
    request.family = family;
    request.poles = poles;
    request.passes = passes;
    request.ripple_db = kRipple;
    request.stop_db = kStop;
    request.gamma = kGamma;
    return request;
}

static Real distance(Complex a, Complex b) { return std::sqrt(norm(a - b)); }

static Real ratio(Real db) { return std::pow(Real{10}, db / 20); }

static Prototype make(const mensura_sos_request &request, Real level) {
    Prototype made;
    EXPECT_TRUE(make_prototype(request, level, made)) << request.family << ' ' << request.poles << ' ' << level;
    const auto above = [](Complex a, Complex b) { return a.im > b.im; };
    std::sort(made.poles.begin(), made.poles.begin() + static_cast<std::ptrdiff_t>(made.pole_count), above);
    return made;
}

static Real power(const Prototype &prototype, Real w) {
    Real power = 1;
    for (std::size_t i = 0; i < prototype.zero_count; ++i)
        power *= std::pow(1 - std::pow(w / prototype.zeros[i], 2), 2);
    for (std::size_t i = 0; i < prototype.pole_count; ++i) {
        const Complex p = prototype.poles[i];
        const Real from_both = norm(Complex{norm(p) - w * w, 2 * p.re * w});
        power *= p.im > 0 ? norm(p) * norm(p) / from_both : norm(p) / (norm(p) + w * w);
    }
    return power;
}

TEST(SosPrototype, PolesAndZerosAreSciPys) {
    // from scipy.signal import *; cheb1ap(5, 0.5), besselap(6, norm='mag'), ellipap(5, 0.5, 60), cheb2ap(4, 60)
    const struct {
        int family;
        Real level;
        std::vector<Complex> poles;
        std::vector<Real> zeros;
    } kCases[] = {{pfChebyshev,
                   ratio(-kRipple),
                   {{-0.11196292128849389L, 1.0115573693864202L},
                    {-0.29312273341300615L, 0.6251768358512401L},
                    {-0.36231962424902453L, 0}},
                   {}},
                  {pfBessel,
                   std::sqrt(0.5L),
                   {{-0.9306565229468575L, 1.6618632689425887L},
                    {-1.3818580975965615L, 0.9714718907115699L},
                    {-1.5714904036160289L, 0.3208963742226234L}},
                   {}},
                  {pfElliptic,
                   ratio(-kRipple),
                   {{-0.0915592491900586L, 1.012423641952835L},
                    {-0.2889067081793648L, 0.6762768219062187L},
                    {-0.402789380961887L, 0}},
                   {1.8522601861475565L, 2.8470779076397914L}},
                  {pfInverseChebyshev,
                   ratio(-kStop),
                   {{-0.10840753760226532L, 0.27369108124134334L}, {-0.27880321927087176L, 0.12076680559546468L}},
                   {1.082392200292394L, 2.613125929752753L}}};
    for (const auto &[family, level, poles, zeros] : kCases) {
        const int order = static_cast<int>(2 * poles.size()) - (poles.back().im > 0 ? 0 : 1);
        const Prototype found = make(request_for(family, order), level);
        ASSERT_EQ(found.pole_count, poles.size());
        ASSERT_EQ(found.zero_count, zeros.size());
        for (std::size_t i = 0; i < poles.size(); ++i)
            EXPECT_LT(distance(found.poles[i], poles[i]), 3e-15L) << family << ' ' << i;
        for (std::size_t i = 0; i < zeros.size(); ++i)
            EXPECT_LT(std::fabs(found.zeros[i] - zeros[i]), 3e-15L) << family << ' ' << i;
    }
}

// 1 / |H|^2 is the polynomial of the family in w^2 but for the unit of w, which the product of the poles tells.
TEST(SosPrototype, PolynomialFamiliesHaveTheirPolynomials) {
    const auto coefficient = [](int family, int n, int m) {
        const Real factorial = std::tgamma(static_cast<Real>(m + 1));
        if (family == pfGaussian) return 1 / factorial;
        if (family == pfAdjustable) return std::pow(factorial, 2 * Real{kGamma});
        return m == 0 ? 1 : iir::kPapoulisL[static_cast<std::size_t>(n) - 1][static_cast<std::size_t>(m) - 1] / 10.0L;
    };
    for (const int family : {pfGaussian, pfAdjustable, pfPapoulis})
        for (int n = 1; n <= iir::max_poles(family); ++n) {
            Prototype found = make(request_for(family, n), 0.5L);
            Real product = 1;
            for (std::size_t i = 0; i < found.pole_count; ++i) {
                if (family == pfAdjustable) found.poles[i].im /= 1.1L;
                product *= found.poles[i].im > 0 ? std::pow(norm(found.poles[i]), 2) : norm(found.poles[i]);
            }
            const Real unit = std::pow(product * coefficient(family, n, n), -1 / static_cast<Real>(n));
            for (const Real u : {0.04L, 2.25L, 9.0L}) {  // where the powers of Papoulis keep their digits
                Real loss = 0;
                for (int m = n; m >= 0; --m) loss = loss * u + coefficient(family, n, m);
                EXPECT_LT(std::fabs(power(found, std::sqrt(u / unit)) * loss - 1), 1e-15L) << family << ' ' << n;
            }
        }
}

static void expect_laws(const mensura_sos_request &request, double level_db) {
    SCOPED_TRACE(testing::Message() << "family " << request.family << ", " << request.poles << " poles, " << level_db
                                    << " dB in " << request.passes << " passes");
    constexpr int kPoints = 400;
    constexpr Real kSame = 1e-12L;  // dB
    const Prototype found = make(request, ratio(Real{level_db} / request.passes));
    const auto level = [&](Real w) {
        return 10 * request.passes * std::log10(power(found, w) / (found.peak * found.peak));
    };
    EXPECT_EQ(found.pole_count, static_cast<std::size_t>(request.poles + 1) / 2);
    const bool has_zeros = iir::depends_on(request.family, iir::kStopBand);
    EXPECT_EQ(found.zero_count, has_zeros ? static_cast<std::size_t>(request.poles) / 2 : 0);
    EXPECT_LT(std::fabs(level(1) - level_db), kSame);

    const bool has_ripple = iir::depends_on(request.family, iir::kRipple);
    const Real least = has_ripple ? std::min(level_db, -kRipple) : level_db;
    Real lowest = 0, highest = -kStop, previous = 0;
    for (int i = 0; i < kPoints; ++i) {
        const Real inside = level(static_cast<Real>(i) / kPoints);
        lowest = std::min(lowest, inside);
        highest = std::max(highest, inside);
        EXPECT_LE(inside, has_ripple ? kSame : previous + kSame) << i;
        EXPECT_LE(level(kPoints / static_cast<Real>(i + 1)), level_db + kSame) << i;  // never comes back
        previous = inside;
    }
    EXPECT_GE(lowest, least - kSame);
    EXPECT_GE(highest, -0.01L);
    if (has_ripple && request.poles > 1) {
        EXPECT_LE(lowest, -kRipple + 0.01L);
    }
}

TEST(SosPrototype, HasItsLevelLastAtOneAndKeepsToItsBands) {
    for (const auto &family : iir::kFamilies)
        for (int poles = 1; poles <= family.max_poles; ++poles)
            for (const double level_db : {-0.01, -kRipple, -3.0103, -kStop})
                expect_laws(request_for(family.code, poles, 1 + poles / 2 % 2), level_db);
}

TEST(SosPrototype, NeighboursOfTheRippleLevelHaveNeighbouringPoles) {
    for (const int family : {pfChebyshev, pfElliptic})
        for (const int order : {2, 7, 12}) {
            const auto request = request_for(family, order);
            const Real level = ratio(-kRipple), below = level * (1 - 1e-15L), above = level * (1 + 1e-15L);
            const Prototype at = make(request, level);
            for (const Prototype &other : {make(request, below), make(request, above)})
                for (std::size_t i = 0; i < at.pole_count; ++i)
                    EXPECT_LT(distance(at.poles[i], other.poles[i]), 1e-13L) << family << ' ' << order;
        }
}

TEST(SosPrototype, RefusesWhatDoesNotExist) {
    Prototype made;
    for (const int family : {pfInverseChebyshev, pfElliptic})
        EXPECT_FALSE(make_prototype(request_for(family, 5), ratio(-kStop - 0.001), made));
    auto narrow = request_for(pfElliptic, 15);  // the transition would be 1e-40 wide
    narrow.ripple_db = 10;
    narrow.stop_db = 10.00001;
    EXPECT_FALSE(make_prototype(narrow, ratio(-10), made));
    EXPECT_FALSE(make_prototype(request_for(pfButterworth, 5), 1, made));
}
