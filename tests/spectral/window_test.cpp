// Data windows.
#include <gtest/gtest.h>
#include <mensura/spectral.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <numeric>

#include "signals.h"
#include "support/expect.h"

static std::vector<double> window(std::size_t n, int kind, double alpha, double beta, int unity_gain = 0) {
    const auto multiply = [=](double *x, double *, int m) { WindowData(x, m, kind, alpha, beta, unity_gain); };
    std::vector<double> factors;
    for (const signals::Point w : signals::run(multiply, signals::Signal(n, 2), 1)) factors.push_back(w.real() / 2);
    return factors;
}

// The first factor of four.  scipy 1.10.1, from scipy.signal.windows the element [1] of kaiser(6, 1.5), hann(6),
// hamming(6), blackman(6), blackmanharris(6), nuttall(6) - 0.01 (wkBlackmanNuttall), gaussian(6, 2.5 / 2.7183 / 2**.5),
// and of general_cosine(6, a) with a the constants of the header, the odd ones negated, for wkFlatTop (1,
// 1.93293488969227, 1.28349769674027, 0.38130801681619, 0.02929730258511), wkNuttall and wkKaiserBessel.
// mpmath 1.2.1: sinc(0.6 * pi)**1.5 and sin(0.2 * pi)**1.5.
constexpr double kFirst[] = {0.8463630030778,  0.3583915848216, 0.3454915028125, 0.3978521825875, 0.2007701432625,
                             -0.3181431487553, 0.1030114893457, 0.1005152530499, 0.0986650640741, 0.1680168543582,
                             0.5000000000000,  0.0699415237957, 0.4506382253489};

TEST(WindowData, has_the_values_of_its_windows) {
    for (int kind = wkKaiser; kind <= wkSine; ++kind) {
        SCOPED_TRACE(testing::Message() << "window " << kind);
        const bool uses_beta = kind == wkKaiser || kind == wkSinc || kind == wkSine;
        EXPECT_NEAR(window(4, kind, 0, 1.5)[0], kFirst[kind - wkKaiser], 1e-13);
        EXPECT_NEAR(window(9, kind, 0, 1.5)[4], kind == wkFlatTop ? 4.62703790583384 : 1, 4 * DBL_EPSILON);
        EXPECT_SAME_BITS(window(9, kind, -1, -1), window(9, kind, 0, 0));  // both are clamped
        EXPECT_SAME_BITS(window(9, kind, NAN, 25), window(9, kind, 0, 10));
        EXPECT_EQ(window(9, kind, 0, 1) != window(9, kind, 0, 9), uses_beta);
    }
}

TEST(WindowData, is_symmetric_with_a_flat_middle_and_a_mean_gain_of_one_if_asked) {
    for (int kind = wkKaiser; kind <= wkSine; ++kind)
        for (std::size_t n = 1; n <= 40; ++n)
            for (const double alpha : {0.0, 0.29, 0.3, 0.5, 1.0, 2.0}) {
                SCOPED_TRACE(testing::Message() << "window " << kind << ", " << n << " points, alpha " << alpha);
                const bool has_own_centre = kind == wkKaiser || kind == wkFlatTop;  // and takes no flat middle
                const std::size_t flat = has_own_centre ? 0 : static_cast<std::size_t>(alpha * static_cast<double>(n));
                const std::size_t taper = n - std::min(n, flat + flat % 2);
                if (kind == wkTriangle && taper % 2 == 0) continue;  // its points are no samples of a curve
                const auto w = window(n, kind, alpha, 1.5), unity = window(n, kind, alpha, 1.5, -1);
                const auto finer = window(2 * taper + 1, kind, 0, 1.5);
                const double mean = std::accumulate(w.begin(), w.end(), 0.0) / static_cast<double>(n);
                for (std::size_t i = 0; i < n; ++i) {
                    const std::size_t j = std::min(i, n - 1 - i);
                    EXPECT_EQ(w[i], j < taper / 2 || has_own_centre ? finer[2 * j + 1] : 1) << "at " << i;
                    EXPECT_EQ(unity[i], w[i] / mean) << "at " << i;  // to the bit: both add from left to right
                }
            }
}

// The library leaves out the exponent 1; a pow that rounds x to another number would give a window other values.
TEST(WindowData, takes_a_number_to_the_power_of_1_as_pow_does) {
    const volatile double one = 1;  // or the compiler would leave it out, too
    support::Noise noise(4);
    for (int i = 0; i < 10000; ++i) {
        const double x = std::ldexp(noise(), noise.below(2000) - 1000);
        ASSERT_SAME_BITS(std::pow(x, one), x);
    }
}

TEST(Bessel, is_its_series_up_to_the_ninth_term_and_Sinc_is_1_around_0) {
    // mpmath 1.2.1, mp.dps = 40: fsum((mpf(5)**k / factorial(k))**2 for k in range(10))
    EXPECT_NEAR(Bessel(-10) / 2806.6743218166369, 1, 4 * DBL_EPSILON);
    for (const double x : {-1e-5, 0.0, 9e-6, 4.0}) EXPECT_EQ(Sinc(x), std::fabs(x) < 1e-5 ? 1 : std::sin(x) / x) << x;
}
