#include <gtest/gtest.h>
#include <mensura/mensura.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <complex>
#include <cstring>
#include <numbers>
#include <random>
#include <thread>
#include <vector>

namespace {

using Point = std::complex<double>;
using Precise = std::complex<long double>;
using Signal = std::vector<Point>;
using Size = Signal::size_type;

bool same(const Signal &a, const Signal &b) { return std::memcmp(a.data(), b.data(), a.size() * sizeof(Point)) == 0; }

Signal noise(Size n, double imaginary = 1) {  // each part has a mean square of 1/3
    std::mt19937_64 bits(n);
    std::uniform_real_distribution<double> level(-1, 1);
    Signal x(n);
    for (Point &sample : x) sample = {level(bits), imaginary * level(bits)};
    return x;
}

// What transform(re, im, n, arguments ...) makes of x between marks, which also move it off the alignment of a vector.
Signal run(auto transform, Signal x, Size gap, auto... arguments) {
    const auto canonical = [](double v) { return std::isnan(v) ? std::nan("") : v; };
    std::vector<double> memory(2 * x.size() + 3 * gap, 77);
    double *const re = &memory[gap], *const im = re + x.size() + gap;
    for (Size t = 0; t < x.size(); ++t) {
        re[t] = x[t].real();
        im[t] = x[t].imag();
    }
    transform(re, im, static_cast<int>(x.size()), arguments...);
    EXPECT_EQ(static_cast<Size>(std::ranges::count(memory, 77)), 3 * gap);
    for (Size k = 0; k < x.size(); ++k) x[k] = {canonical(re[k]), canonical(im[k])};
    return x;
}

void plain_fft(double *re, double *im, int n, int dir) {
    std::vector<double> other_re(re, re + n), other_im(im, im + n), w_re(other_re), w_im(other_re);
    std::vector<int> index(other_re.size());
    ReArrangeInput(re, im, other_re.data(), other_im.data(), index.data(), n);
    FillTwiddleArray(w_re.data(), w_im.data(), n, dir);
    EXPECT_TRUE(w_im.begin()[n / 8] == (dir == 0 ? -1 : 1) * std::sqrt(0.5) && w_re.begin()[n / 4] == 0);
    EXPECT_DOUBLE_EQ(w_im.begin()[1], (dir == 0 ? -1 : 1) * std::sin(2 * std::numbers::pi / n));
    Transform(re, im, other_re.data(), other_im.data(), w_re.data(), w_im.data(), n);
    if (IsValidFFTSize(n) % 2 == 0) {
        std::ranges::copy(other_re, re);
        std::ranges::copy(other_im, im);
    }
    for (int k = 0; k < n && dir == 0; ++k) {
        re[k] *= 1.0 / n;
        im[k] *= 1.0 / n;
    }
}

// exp(2 pi i k / n)
std::vector<Precise> unit_circle(Size n) {
    std::vector<Precise> w(n);
    for (Size k = 0; k < n; ++k) w[k] = std::polar(1.0L, 2 * std::numbers::pi_v<long double> * k / n);
    return w;
}

// sum_t x[t] w[k t mod n]: the bin k of the inverse transform, n - k of the forward one before it is divided by n.
Precise sum(const std::vector<Precise> &w, const Signal &x, Size k) {
    Precise result;
    for (Size t = 0; t < x.size(); ++t) result += w[k * t % w.size()] * Precise(x[t]);
    return result;
}

double distance(Point a, Precise b) { return static_cast<double>(std::abs(Precise(a) - b)); }

Signal window(Size n, int kind, double alpha, double beta, int unity = 0) {  // twice over
    return run([=](double *x, double *, int m) { WindowData(x, m, kind, alpha, beta, unity); }, Signal(n, 2), 1);
}

}  // namespace

TEST(FFT, has_the_bits_of_its_plain_steps_in_two_threads_at_once) {
    const double kValues[] = {-0.0, 0.0, 1, -1, DBL_TRUE_MIN, -DBL_MIN, DBL_MAX, -HUGE_VAL, std::nan("")};
    std::mt19937_64 bits(4);
    for (Size n = 8; n <= 1048576; n *= 2)
        for (Size values = 0; values <= (n <= 4096 ? std::size(kValues) : 0); ++values)
            for (const int dir : {0, 1}) {
                Signal x = noise(n);
                for (Size t = 0; t < n && values > 0; ++t) x[t] = {kValues[bits() % values], kValues[bits() % values]};
                const Signal plain = run(plain_fft, x, 1, dir);
                std::jthread other([&] { EXPECT_TRUE(same(run(FFT, x, 3, dir), plain)) << n << ", " << values; });
                EXPECT_TRUE(same(run(FFT, x, 1, dir), plain)) << n << ", " << values;
            }
}

// Tolerances.  FFT: each stage rounds by an ulp of the rms of its values, at most sqrt(2 n / 3).  DFT: four times the
// worst seen, 1.0 n ulps, at a few points: the angles of its table are rounded as numbers up to 2 pi.
TEST(Transforms, are_the_sums_of_their_definition) {
    for (Size n = 1; n <= 1048576; n += n < 256 ? 1 : n) {
        const auto w = unit_circle(n);
        for (const int dir : {0, 1}) {
            const int size = static_cast<int>(n), stages = IsValidFFTSize(size);
            const double scale = dir == 0 ? size : 1, fast_error = stages * std::sqrt(size / 1.5) * DBL_EPSILON;
            const Signal x = noise(n), fast = run(FFT, x, 1, dir), slow = n <= 512 ? run(DFT, x, 1, dir) : fast;
            for (Size k = n > 512 ? n / 3 : 0; k < n; k += n * n / 262144 | 1) {  // up to 512 points all bins
                const Precise exact = sum(w, x, dir == 0 ? n - k : k);
                EXPECT_LE(distance(slow[k] * scale, exact), 4 * size * DBL_EPSILON) << k << " of " << n;
                EXPECT_TRUE(stages == 0 || distance(fast[k] * scale, exact) <= fast_error) << k << " of " << n;
            }
        }
    }
}

// Tolerance: what the sums above are allowed, in the two transforms of a comparison and twice as much for a and b.
TEST(Transforms, are_linear_turn_shifts_into_phases_and_undo_each_other) {
    const Point a{0.5, -2}, b{3, 0.25};
    for (const Size n : {8U, 15U, 64U, 243U, 512U})
        for (const auto transform : {DFT, FFT}) {
            if (transform == FFT && IsValidFFTSize(static_cast<int>(n)) == 0) continue;
            const double tolerance = 16 * static_cast<double>(n) * DBL_EPSILON;
            Signal impulse(n), mixed(n);
            const Signal x = noise(n), y(x.rbegin(), x.rend());
            Signal later = x;
            std::rotate(later.begin(), later.end() - 3, later.end());
            impulse[0] = static_cast<double>(n);
            for (Size t = 0; t < n; ++t) mixed[t] = a * x[t] + b * y[t];
            const Signal bins = run(transform, x, 1, 0), of_y = run(transform, y, 1, 0),
                         back = run(transform, bins, 1, 1);
            mixed = run(transform, mixed, 1, 0);
            later = run(transform, later, 1, 0);
            EXPECT_EQ(run(transform, impulse, 1, 0), Signal(n, 1));
            const auto w = unit_circle(n);
            for (Size k = 0; k < n; ++k) {
                EXPECT_LE(std::abs(mixed[k] - (a * bins[k] + b * of_y[k])), tolerance) << k << " of " << n;
                EXPECT_LE(distance(later[k], Precise(bins[k]) * conj(w[3 * k % n])), tolerance) << k << " of " << n;
                EXPECT_LE(std::abs(back[k] - x[k]), tolerance) << k << " of " << n;
            }
        }
}

// Tolerance: five times the worst seen, 30.  The states of Goertzel's recursion grow to 1 / sin(pi f), n at most.
TEST(RealSignals, have_the_bins_of_DFT_but_for_the_one_after_the_middle_of_an_odd_length) {
    for (int n = 1; n <= 243; ++n) {
        const Size size = static_cast<Size>(n);
        const Signal x = noise(size, 0), full = run(DFT, x, 1, 0);
        std::vector<double> samples;
        for (const Point sample : x) samples.push_back(sample.real());
        const Signal half = run([&](double *re, double *im, int) { RealSigDFT(samples.data(), re, im, n); }, x, 1);
        for (Size k = 0; k < size; ++k) {
            EXPECT_EQ(half[k], k <= size / 2 ? full[k] : k == size - size / 2 ? x[k] : conj(full[size - k])) << n;
            const double f = 2.0 * static_cast<double>(k) / n, power = n * n * std::norm(full[k]);
            const double gain = std::min<double>(n, 1 / std::fabs(std::sin(std::numbers::pi * f)));
            for (const double magnitude : {SingleFreqDFT(samples.data(), n, f), Goertzel(samples.data(), n, f)})
                EXPECT_NEAR(magnitude * magnitude, power, 160 * n * std::sqrt(n) * gain * gain * DBL_EPSILON) << n;
        }
    }
    const double x[] = {0x1p-50, 0, 0};  // below the floor, but not 0
    EXPECT_TRUE(Goertzel(x, 1, 0.3) == 0x1p-50 && Goertzel(&x[1], 2, 0.3) == 1e-12);
    for (const int n : {INT_MIN, 0}) EXPECT_TRUE(Goertzel(x, n, HUGE_VAL) == 1e-12 && SingleFreqDFT(x, n, 0) == 0);
}

TEST(Spectral, sizes_and_arguments_that_are_not_valid_change_nothing) {
    for (int p = 0; p <= 30; ++p) {
        const int n = 1 << p, valid = std::clamp(n, 8, 1048576);
        EXPECT_TRUE(IsValidFFTSize(n) == (n == valid ? p : 0) && IsValidFFTSize(n + 1) == 0 && IsValidFFTSize(-n) == 0);
        EXPECT_TRUE(RequiredFFTSize(n) == valid && RequiredFFTSize(n / 2 + 1) == valid && RequiredFFTSize(-n) == 8);
    }
    const auto call_all = [](double *x, double *y, int) {
        for (const int dir : {INT_MIN, -1, 2, INT_MAX}) {
            FFT(x, y, 8, dir);
            FFT(x, y, 16, dir);
            DFT(x, y, 16, dir);
        }
        for (const int n : {INT_MIN, -8, 0, 1, 2, 4, 12, 2097152, INT_MAX}) FFT(x, y, n, 0);
        for (const int n : {INT_MIN, 0}) {
            DFT(x, y, n, 0);
            RealSigDFT(y, x, x, n);
            WindowData(x, n, wkSine, 0, 1, 1);
        }
        for (const int kind : {INT_MIN, -1, 0, 1, 15, INT_MAX}) WindowData(x, 16, kind, 0.1, 2, 1);
    };
    EXPECT_TRUE(same(run(call_all, noise(16), 1), noise(16)));
}

TEST(WindowData, has_the_values_and_laws_of_its_windows) {
    // The first factor of four, by code.  scipy 1.10.1, from scipy.signal.windows the element [1] of kaiser(6, 1.5),
    // hann(6), hamming(6), blackman(6), blackmanharris(6), nuttall(6) - 0.01 (wkBlackmanNuttall), gaussian(6, 2.5 /
    // 2.7183 / 2**.5), and of general_cosine(6, a) with a the constants of the header, the odd ones negated, for
    // wkFlatTop (1, 1.93293488969227, 1.28349769674027, 0.38130801681619, 0.02929730258511), wkNuttall and
    // wkKaiserBessel.  mpmath 1.2.1: sinc(0.6 * pi)**1.5 and sin(0.2 * pi)**1.5.
    constexpr double kFirst[] = {0.8463630030778,  0.3583915848216, 0.3454915028125, 0.3978521825875, 0.2007701432625,
                                 -0.3181431487553, 0.1030114893457, 0.1005152530499, 0.0986650640741, 0.1680168543582,
                                 0.5000000000000,  0.0699415237957, 0.4506382253489};
    for (int kind = wkKaiser; kind <= wkSine; ++kind) {
        EXPECT_NEAR(window(4, kind, 0, 1.5)[0].real() / 2, kFirst[kind - 2], 1e-13) << kind;
        EXPECT_NEAR(window(9, kind, 0, 1.5)[4].real(), kind == wkFlatTop ? 2 * 4.62703790583384 : 2, 8 * DBL_EPSILON);
        EXPECT_EQ(window(9, kind, -1, -1), window(9, kind, 0, 0));
        EXPECT_EQ(window(9, kind, std::nan(""), 25), window(9, kind, 0, 10));
        EXPECT_EQ(window(9, kind, 0, 1) != window(9, kind, 0, 9), kind < wkHanning || kind == wkSine) << kind;
        const bool whole = kind == wkKaiser || kind == wkFlatTop;
        for (Size n = 1; n <= 40; ++n)
            for (const double alpha : {0.0, 0.29, 0.3, 0.5, 1.0, 2.0}) {
                const Size flat = whole ? 0 : Size(alpha * double(n)), taper = n - std::min(n, flat + flat % 2);
                const Signal w = window(n, kind, alpha, 1.5), unity = window(n, kind, alpha, 1.5, -1);
                const Signal finer = window(2 * taper + 1, kind, 0, 1.5), spectrum = run(DFT, w, 1, 0);
                if (kind == wkTriangle && taper % 2 == 0) continue;
                for (Size i = 0; i < n; ++i) {
                    const Size j = std::min(i, n - 1 - i);
                    EXPECT_EQ(w[i], j < taper / 2 || whole ? finer[2 * j + 1] : 2) << kind << ' ' << n;
                    // Bin 0 is the mean, of up to 40 factors up to 9, each rounded.
                    EXPECT_NEAR(unity[i].real() * spectrum[0].real() / 2, w[i].real(), 360 * DBL_EPSILON) << kind;
                }
            }
    }
}

TEST(Bessel, is_its_series_up_to_the_ninth_term_and_Sinc_is_1_around_0) {
    // mpmath 1.2.1, mp.dps = 40: fsum((mpf(5)**k / factorial(k))**2 for k in range(10))
    EXPECT_NEAR(Bessel(-10) / 2806.6743218166369, 1, 4 * DBL_EPSILON);
    for (const double x : {-1e-5, 0.0, 9e-6, 4.0}) EXPECT_EQ(Sinc(x), std::fabs(x) < 1e-5 ? 1 : std::sin(x) / x);
}
