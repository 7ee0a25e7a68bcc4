// Data windows.  A window is symmetric, so only the first half of its taper is computed:
//
//     value(1) .. value(L/2) | flat middle, or the one centre point | value(L/2) .. value(1)

#include <mensura/spectral.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <span>

#include "../internal/clamp.h"
#include "../internal/constants.h"
#include "../internal/scratch.h"

namespace {

using mensura::kPi, mensura::kTwoPi;

constexpr double kLargestBeta = 10.0;    // as the header states
constexpr double kGaussScale = 2.7183;   // the Gauss window ends at exp(-kGaussScale^2)
constexpr double kSmallArgument = 1e-5;  // |x| below which sin(x) / x counts as 1; it differs by less than 2e-11

// 1! .. 9!, for the terms of I0.
constexpr double kFactorial[] = {1.0, 2.0, 6.0, 24.0, 120.0, 720.0, 5040.0, 40320.0, 362880.0};

// a[0] + a[1] cos t + a[2] cos 2t + ...; enum WindowKind has the formulas.
template <std::size_t terms>
using CosineSum = double[terms];

constexpr CosineSum<2> kHanning = {0.5, -0.5};
constexpr CosineSum<2> kHamming = {0.54, -0.46};
constexpr CosineSum<3> kBlackman = {0.42, -0.5, 0.08};
constexpr CosineSum<5> kFlatTop = {1.0, -1.93293488969227, 1.28349769674027, -0.38130801681619, 0.02929730258511};
constexpr CosineSum<4> kBlackmanHarris = {0.35875, -0.48829, 0.14128, -0.01168};
constexpr CosineSum<4> kBlackmanNuttall = {0.3535819, -0.4891775, 0.1365995, -0.0106411};
constexpr CosineSum<4> kNuttall = {0.355768, -0.487396, 0.144232, -0.012604};
constexpr CosineSum<4> kKaiserBessel = {0.402, -0.498, 0.098, 0.001};

// pow(x, exponent); its bits may differ from those of a product.  x to the power of 1 is x wherever pow errs by less
// than half an ulp before it rounds.
double power(double x, double exponent) { return exponent == 1.0 ? x : std::pow(x, exponent); }

template <std::size_t terms>
double cosine_sum(const CosineSum<terms> &a, double t) {
    double sum = a[0] + a[1] * std::cos(t);
    for (std::size_t m = 2; m < terms; ++m) sum += a[m] * std::cos(static_cast<double>(m) * t);
    return sum;
}

// The first values of a taper of `points` points: samples j = 1, 2, ... of a curve over the period D = points + 1.
void fill_taper(std::span<double> w, int kind, std::size_t points, double beta) {
    const double d = static_cast<double>(points) + 1.0;
    const auto fill = [w](auto value) {
        for (std::size_t i = 0; i < w.size(); ++i) w[i] = value(static_cast<double>(i + 1));
    };
    const auto fill_cosines = [&](const auto &a) { fill([&](double j) { return cosine_sum(a, kTwoPi * j / d); }); };

    switch (kind) {
        case wkKaiser: {
            const double peak = Bessel(beta);
            return fill([=](double j) {
                const double x = (2.0 * j - d) / d;
                return Bessel(beta * std::sqrt(1.0 - x * x)) / peak;
            });
        }
        case wkSinc: return fill([=](double j) { return power(Sinc(kPi * (2.0 * j - d) / d), beta); });
        case wkHanning: return fill_cosines(kHanning);
        case wkHamming: return fill_cosines(kHamming);
        case wkBlackman: return fill_cosines(kBlackman);
        case wkFlatTop: return fill_cosines(kFlatTop);
        case wkBlackmanHarris: return fill_cosines(kBlackmanHarris);
        case wkBlackmanNuttall: return fill_cosines(kBlackmanNuttall);
        case wkNuttall: return fill_cosines(kNuttall);
        case wkKaiserBessel: return fill_cosines(kKaiserBessel);
        case wkTriangle: {
            const std::size_t steps = (points + 1) / 2;
            return fill([=](double j) { return j / static_cast<double>(steps); });
        }
        case wkGauss:
            return fill([=](double j) {
                const double v = (j - d / 2.0) / (d / 2.0) * kGaussScale;
                return std::exp(-(v * v));
            });
        case wkSine: return fill([=](double j) { return power(std::sin(kPi * j / d), beta); });
        default: return;
    }
}

// Points of the flat middle: alpha n, rounded down, then up to an even number.
std::size_t flat_points(std::size_t n, double alpha) {
    const double fraction = alpha > 0.0 ? std::min(alpha, 1.0) : 0.0;  // a NaN is not above 0
    const auto flat = static_cast<std::size_t>(fraction * static_cast<double>(n));
    return std::min(flat + flat % 2, n);
}

// The factors of a window: the values of `edge`, `flat` times `centre`, and the values of `edge` backwards.
struct Window {
    std::span<double> edge;
    double centre;
    std::size_t flat;
};

double mean(const Window &w) {
    double sum = 0.0;
    for (const double value : w.edge) sum += value;
    for (std::size_t i = 0; i < w.flat; ++i) sum += w.centre;
    for (std::size_t i = w.edge.size(); i > 0; --i) sum += w.edge[i - 1];
    return sum / static_cast<double>(2 * w.edge.size() + w.flat);
}

void divide(Window &w, double divisor) {
    for (double &value : w.edge) value /= divisor;
    w.centre /= divisor;
}

void multiply(double *data, const Window &w) {
    const std::size_t half = w.edge.size();
    for (std::size_t i = 0; i < half; ++i) data[i] *= w.edge[i];
    for (std::size_t i = 0; i < w.flat; ++i) data[half + i] *= w.centre;
    for (std::size_t i = 0; i < half; ++i) data[half + w.flat + i] *= w.edge[half - 1 - i];
}

}  // namespace

void WindowData(double *data, int n, int kind, double alpha, double beta, int unityGain) {
    if (n < 1 || kind < wkKaiser || kind > wkSine) return;
    const auto size = static_cast<std::size_t>(n);
    // Kaiser and the flat top have no flat middle.  The centre of an odd n is a point of their taper, because it may
    // differ from 1: the flat top's peak does, and Kaiser's is NaN where beta is.
    const bool has_own_centre = kind == wkKaiser || kind == wkFlatTop;
    const std::size_t points = size - (has_own_centre ? 0 : flat_points(size, alpha)), half = points / 2;

    const auto work = mensura::scratch<double>(half + 1);
    if (!work) return;
    const std::span computed(work.get(), half + (has_own_centre ? size % 2 : 0));
    fill_taper(computed, kind, points, mensura::clamp_or_nan(beta, 0.0, kLargestBeta));

    Window window{computed.first(half), computed.size() > half ? computed[half] : 1.0, size - 2 * half};
    if (unityGain != 0) {
        const double gain = mean(window);
        if (gain != 0.0) divide(window, gain);
    }
    multiply(data, window);
}

double Bessel(double x) {
    const double half = x / 2.0;
    double sum = 1.0 + half * half;  // the terms with k = 0 and 1
    for (std::size_t k = 2; k <= std::size(kFactorial); ++k) {
        // volatile, so that the compiler does not replace pow(half, 2) by half * half, whose bits can differ.
        const volatile auto exponent = static_cast<double>(k);
        const double term = std::pow(half, exponent) / kFactorial[k - 1];
        sum += term * term;
    }
    return sum;
}

double Sinc(double x) { return x > -kSmallArgument && x < kSmallArgument ? 1.0 : std::sin(x) / x; }
