// Prints docs/iir.md: what the filter designs really give, measured from their coefficients.

#include <mensura/iir.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <initializer_list>
#include <numbers>
#include <string>

namespace {

using Complex = std::complex<double>;
using Orders = std::initializer_list<int>;
using std::numbers::pi;

struct Family {
    const char *name;
    int code, max_order;
};

constexpr Family kFamilies[] = {{"Butterworth", pfButterworth, 20}, {"Gaussian", pfGaussian, 12},
                                {"Bessel", pfBessel, 12},           {"Adjustable", pfAdjustable, 20},
                                {"Chebyshev", pfChebyshev, 20},     {"Inverse Chebyshev", pfInverseChebyshev, 15},
                                {"Papoulis", pfPapoulis, 20},       {"Elliptic", pfElliptic, 15}};
constexpr Orders kOrders = {1, 2, 3, 4, 5, 6, 7, 8, 10, 12, 15, 20}, kFewOrders = {1, 2, 3, 4, 6, 8, 12};
constexpr double kCutoff = 0.2, kCentre = 0.4, kBandwidth = 0.1;  // fractions of the Nyquist frequency
constexpr double kHalfPower = 0.5 * std::numbers::sqrt2;
constexpr double kNoRipple = 0.01;  // dB
constexpr double kStep = 2e-4;      // of the scans over frequency

// ---- Measuring ----

IIRCoeffs design(int pass, int family, int order, double cutoff) {
    return CalcIIRFilterCoeff(
        {.PassType = pass,
         .NormCutoff = cutoff,
         .NormBandwidth = kBandwidth,
         .GainDb = 0,
         .Proto = {.Family = family, .NumPoles = order, .Ripple = 0.1, .StopBandDb = 60, .Gamma = 0}});
}

IIRCoeffs low_pass(int family, int order) { return design(ptLowPass, family, order, kCutoff); }
IIRCoeffs high_pass(int family, int order) { return design(ptHighPass, family, order, kCutoff); }

double magnitude(const IIRCoeffs &c, double f) {
    const Complex z1 = std::polar(1.0, -pi * f);
    Complex h = 1;
    for (int k = 0; k < c.NumSections; ++k)
        h *= c.a0[k] * (c.b0[k] + z1 * (c.b1[k] + z1 * c.b2[k])) / (1.0 + z1 * (c.a1[k] + z1 * c.a2[k]));
    return std::abs(h);
}

double gain_db(const IIRCoeffs &c, double f) { return 20 * std::log10(magnitude(c, f)); }

// The nearest frequency on the way from `from`, in the pass band, to `to`, at which the power is halved.
double half_power(const IIRCoeffs &c, double from, double to) {
    const double step = std::copysign(kStep, to - from);
    double passed = from;
    while (std::fabs(passed - from) < std::fabs(to - from) && magnitude(c, passed + step) >= kHalfPower) passed += step;
    double stopped = passed + step;
    for (int i = 0; i < 40; ++i) {
        const double middle = 0.5 * (passed + stopped);
        (magnitude(c, middle) >= kHalfPower ? passed : stopped) = middle;
    }
    return passed;
}

double largest_db(const IIRCoeffs &c, double from, double to) {
    double largest = gain_db(c, to), f = from;
    while (f < to) {
        largest = std::max(largest, gain_db(c, f));
        f += kStep;
    }
    return largest;
}

// The largest rise of the gain on the way up in frequency.
double ripple_db(const IIRCoeffs &c, double to) {
    double lowest = gain_db(c, 0), rise = 0, f = kStep;
    while (f < to) {
        const double g = gain_db(c, f);
        rise = std::max(rise, g - lowest);
        lowest = std::min(lowest, g);
        f += kStep;
    }
    return rise;
}

double largest_pole_radius(const IIRCoeffs &c) {
    double radius = 0;
    for (int k = 0; k < c.NumSections; ++k) {
        const Complex root = std::sqrt(Complex(c.a1[k] * c.a1[k] - 4 * c.a2[k]));
        radius = std::max({radius, std::abs(-c.a1[k] + root) / 2, std::abs(-c.a1[k] - root) / 2});
    }
    return radius;
}

// As a multiple of the bandwidth asked for.
double band_pass_width(const IIRCoeffs &c) {
    return (half_power(c, kCentre, 1) - half_power(c, kCentre, 0)) / kBandwidth;
}

// The cut-off to ask for so that half the power is left at f; the bilinear transform keeps the ratio of the tangents.
double cutoff_for(int family, int order, double f) {
    const double measured = half_power(design(ptLowPass, family, order, f), 0, 1), t = std::tan(f * pi / 2);
    return 2 / pi * std::atan(t * t / std::tan(measured * pi / 2));
}

// ---- Printing ----

std::string number(double x, int decimals) {
    const double rounded = std::round(x * std::pow(10, decimals)) == 0 ? 0.0 : x;  // no -0.0
    char text[32];
    std::snprintf(text, sizeof text, "%.*f", decimals, rounded);
    return text;
}

// A row a family, a column an order.
template <typename Cell>
void print_table(const char *title, Orders orders, Cell cell) {
    std::printf("\n%s\n\n| order |", title);
    for (const int order : orders) std::printf(" %d |", order);
    std::printf("\n|---|");
    for (std::size_t i = 0; i < orders.size(); ++i) std::printf("---:|");
    std::printf("\n");
    for (const Family &family : kFamilies) {
        std::printf("| %s |", family.name);
        for (const int order : orders)
            std::printf(" %s |", order > family.max_order ? "" : cell(family.code, order).c_str());
        std::printf("\n");
    }
}

void print_introduction() {
    const IIRCoeffs c = low_pass(pfButterworth, 6);
    std::printf(R"(# IIR filters: what a design really gives

Made by `docs/iir_table.cpp`, which measures every number below from the coefficients.

## What a design is

1. **Request.** `IIRDesignSpec`: pass type, cut-off (band types: centre and bandwidth), gain, family and order.
2. **Prototype.** `CalcLowPassProtoCoeff` makes an analog low-pass with its corner near 1 rad/s. Every pole has a
   section of its own, so a conjugate pair stands there twice, and the most damped pair stands first.
3. **Digital cascade.** `CalcIIRFilterCoeff` turns each section into the pass type by the bilinear transform, prewarped
   so that 1 rad/s lands on the cut-off.

Units: frequencies are fractions of the Nyquist frequency, `2 f / fs`; ripple, attenuation and gain are dB.

Sign convention: `a` is the denominator and its feedback is subtracted,
`y = a0 (b0 x + b1 x' + b2 x'') - a1 y' - a2 y''`.

## Only the leading sections run

On purpose, low-pass, high-pass and all-pass designs run the first `(NumPoles + 1) / 2` sections of the list, band types
the first `NumPoles` halves. Up to order 3 those are each pole once. From order 4 on **the most damped pairs run twice
and the least damped ones not at all**: it mostly falls earlier, and with a softer knee, than its family's name promises.
The default low-pass (Butterworth, 6 poles) runs its most damped pair twice and the middle pair once:
**%s dB at fc, and -3 dB at %s fc**.

The prototype's corner is that of *all* its sections; the sections that run have another one. And as poles and zeros are
sorted apart, the zeros nearest to the pass band meet the most damped poles: an inverse Chebyshev low-pass of order 12
*gains* %s dB in its stop band. **Measure from the coefficients before you rely on a design.**
)",
                number(gain_db(c, kCutoff), 2).c_str(), number(half_power(c, 0, 1) / kCutoff, 2).c_str(),
                number(largest_db(low_pass(pfInverseChebyshev, 12), 2 * kCutoff, 1), 1).c_str());
}

void print_ripple(const Family &family) {
    std::string rippling;
    for (int order = 1; order <= family.max_order; ++order) {
        const IIRCoeffs c = low_pass(family.code, order);
        const double ripple = ripple_db(c, half_power(c, 0, 1));
        if (ripple >= kNoRipple)
            rippling += (rippling.empty() ? "" : ", ") + std::to_string(order) + " (" + number(ripple, 2) + ")";
    }
    if (!rippling.empty()) std::printf("- %s: %s\n", family.name, rippling.c_str());
}

void print_low_pass() {
    std::printf("\n## Low-pass, cut-off %s, ripple 0.1 dB, stop band 60 dB, gamma 0\n", number(kCutoff, 1).c_str());
    print_table("Gain at fc in dB / -3 dB point (half the power, nearest to DC) as a multiple of fc:", kOrders,
                [](int family, int order) {
                    const IIRCoeffs c = low_pass(family, order);
                    return number(gain_db(c, kCutoff), 1) + " / " + number(half_power(c, 0, 1) / kCutoff, 2);
                });
    print_table("Highest gain in the stop band, from 2 fc to Nyquist, in dB / largest pole radius:", kOrders,
                [](int family, int order) {
                    const IIRCoeffs c = low_pass(family, order);
                    return number(largest_db(c, 2 * kCutoff, 1), 1) + " / " + number(largest_pole_radius(c), 3);
                });
    std::printf(
        "\nPass-band ripple, the largest rise of the gain on the way up from DC to the -3 dB point, in dB by order; "
        "every\n"
        "design not listed stays below %s dB, that is, its gain only falls:\n\n",
        number(kNoRipple, 2).c_str());
    for (const Family &family : kFamilies) print_ripple(family);
}

void print_other_types() {
    std::printf("\n## High-pass, cut-off %s\n", number(kCutoff, 1).c_str());
    print_table("Gain at fc in dB / -3 dB point as a multiple of fc / highest gain from DC to fc/2 in dB:", kFewOrders,
                [](int family, int order) {
                    const IIRCoeffs c = high_pass(family, order);
                    return number(gain_db(c, kCutoff), 1) + " / " + number(half_power(c, 1, 0) / kCutoff, 2) + " / " +
                           number(largest_db(c, 0, kCutoff / 2), 0);
                });
    std::printf("\n## Band-pass and notch, centre %s, bandwidth %s\n", number(kCentre, 1).c_str(),
                number(kBandwidth, 1).c_str());
    print_table(
        "Band-pass: -3 dB width as a multiple of the bandwidth / highest gain two bandwidths and more off centre in "
        "dB:",
        kFewOrders, [](int family, int order) {
            const IIRCoeffs c = design(ptBandPass, family, order, kCentre);
            const double stop =
                std::max(largest_db(c, 0, kCentre - 2 * kBandwidth), largest_db(c, kCentre + 2 * kBandwidth, 1));
            return number(band_pass_width(c), 2) + " / " + number(stop, 0);
        });
    print_table(
        "Notch: -3 dB width as a multiple of the bandwidth / highest gain within 1/20 of it around the centre in dB:",
        kFewOrders, [](int family, int order) {
            const IIRCoeffs c = design(ptNotch, family, order, kCentre);
            const double width = half_power(c, 1, 0) - half_power(c, 0, 1);
            const double depth = largest_db(c, kCentre - kBandwidth / 40, kCentre + kBandwidth / 40);
            return number(width / kBandwidth, 2) + " / " + number(depth, 0);
        });
}

void print_recommendation() {
    const auto stop = [](int family, int order) {
        return number(largest_db(low_pass(family, order), 2 * kCutoff, 1), 1);
    };
    std::printf(R"(
## Which to use

- **Butterworth** of order 1 to 3 is the textbook filter, %s dB at fc; order 4 to 8 is a smooth all-purpose filter
  once its cut-off is corrected as below.
- **Papoulis and Chebyshev** of order 4 to 8 fall fastest: at order 6 they leave %s and %s dB from 2 fc,
  Butterworth %s dB. Their gain only falls. Avoid odd Chebyshev orders from 11 on, which ripple more than asked for.
- **Gaussian and Bessel** up to order 6; more poles add little (Bessel leaves %s dB at order 6, %s at 12).
- **Elliptic** of order 4 and 5 leaves %s and %s dB of the 60 dB asked for; higher orders make the transition
  steeper but not the stop band deeper (%s dB at order 10).
- **Inverse Chebyshev** up to order 5 only: it leaves %s dB at order 5, %s at 6, %s at 8 and %s at 15.
- **Band types:** a Butterworth of order 1 to 3 is %s times as wide as asked for; from order 4 on a band-pass comes
  out narrower and a notch wider, least so in the Gaussian and Bessel families.
- Keep to the family's largest order: beyond it the poles stay the same, only more of the sections run, and from about
  twice that order on the surplus sections are zero or NaN.
)",
                number(gain_db(low_pass(pfButterworth, 3), kCutoff), 2).c_str(), stop(pfPapoulis, 6).c_str(),
                stop(pfChebyshev, 6).c_str(), stop(pfButterworth, 6).c_str(), stop(pfBessel, 6).c_str(),
                stop(pfBessel, 12).c_str(), stop(pfElliptic, 4).c_str(), stop(pfElliptic, 5).c_str(),
                stop(pfElliptic, 10).c_str(), stop(pfInverseChebyshev, 5).c_str(), stop(pfInverseChebyshev, 6).c_str(),
                stop(pfInverseChebyshev, 8).c_str(), stop(pfInverseChebyshev, 15).c_str(),
                number(band_pass_width(design(ptBandPass, pfButterworth, 3, kCentre)), 2).c_str());
}

void print_correction() {
    const double asked = cutoff_for(pfButterworth, 6, kCutoff);
    const double reached = half_power(design(ptLowPass, pfButterworth, 6, asked), 0, 1);
    std::printf(R"(
## How to get a wanted -3 dB point

The bilinear transform keeps the ratio of `tan(pi f / 2)` at the -3 dB point and at the cut-off, so one measurement
corrects the request. For low-pass types (for high-pass types exchange `lo` and `hi`):

```c
#include <complex.h>
#include <math.h>
#include <mensura/iir.h>

static const double pi = 3.141592653589793;

static double gain(const IIRCoeffs *c, double f)
{
    const double complex z1 = cexp(-I * pi * f);
    double complex h = 1;
    for (int k = 0; k < c->NumSections; ++k)
        h *= c->a0[k] * (c->b0[k] + z1 * (c->b1[k] + z1 * c->b2[k])) / (1 + z1 * (c->a1[k] + z1 * c->a2[k]));
    return cabs(h);
}

IIRCoeffs low_pass_with_half_power_at(double f, IIRDesignSpec spec)
{
    double lo = 0, hi = 1, t = tan(f * pi / 2);
    spec.NormCutoff = f;
    const IIRCoeffs c = CalcIIRFilterCoeff(spec);
    for (int i = 0; i < 50; ++i) {
        const double middle = (lo + hi) / 2;
        *(gain(&c, middle) > sqrt(0.5) ? &lo : &hi) = middle;
    }
    spec.NormCutoff = 2 / pi * atan(t * t / tan(lo * pi / 2));
    return CalcIIRFilterCoeff(spec);
}
```

For the default low-pass and -3 dB at %s this asks for a cut-off of %s and gets %s.
)",
                number(kCutoff, 4).c_str(), number(asked, 4).c_str(), number(reached, 4).c_str());
}

}  // namespace

int main() {
    print_introduction();
    print_low_pass();
    print_other_types();
    print_recommendation();
    print_correction();
}
