#include "analysis.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>

#include "request.h"

namespace tools {

namespace {

using std::numbers::pi;

constexpr double kHalfPower = 0.70710678118654752;

// Frequencies in ascending order, dense around the cut-off and, for band types, around the centre: equal steps of the
// logarithm of tan(pi f / rate), which the bilinear transform keeps, and of the distance from the centre in bandwidths.
std::vector<double> frequency_grid(const IIRDesignSpec &spec, double rate) {
    constexpr int kSteps = 4000;
    const double nyquist = 0.5 * rate, t = std::tan(0.5 * pi * spec.NormCutoff);
    const double cutoff = spec.NormCutoff * nyquist, bandwidth = spec.NormBandwidth * nyquist;
    std::vector<double> grid{0, nyquist};
    for (int i = 0; i <= kSteps; ++i) {
        const double x = std::pow(10.0, 8.0 * i / kSteps - 4);
        grid.push_back(rate / pi * std::atan(t * x));
        grid.push_back(nyquist * i / kSteps);
        if (is_band_type(spec.PassType))
            for (const double f : {cutoff - bandwidth * x, cutoff + bandwidth * x})
                if (f > 0 && f < nyquist) grid.push_back(f);
    }
    std::ranges::sort(grid);
    return grid;
}

// Halfway to Nyquist when twice the cut-off lies beyond it.
double octave_above(double cutoff, double nyquist) {
    return 2 * cutoff < nyquist ? 2 * cutoff : 0.5 * (cutoff + nyquist);
}

struct Edges {
    std::vector<Band> pass, stop;
};

// An octave to either side of the cut-off; band types: a quarter of the bandwidth around a band-pass, a twentieth around
// a notch, and what lies two bandwidths and more off the centre.
Edges band_edges(const IIRDesignSpec &spec, double rate) {
    const double nyquist = 0.5 * rate, cutoff = spec.NormCutoff * nyquist, width = spec.NormBandwidth * nyquist;
    const Band below{0, 0.5 * cutoff}, above{octave_above(cutoff, nyquist), nyquist};
    const auto around = [cutoff, nyquist](double reach) {
        return Band{std::max(cutoff - reach, 0.0), std::min(cutoff + reach, nyquist)};
    };
    std::vector<Band> away;
    if (cutoff - 2 * width > 0) away.push_back({0, cutoff - 2 * width});
    if (cutoff + 2 * width < nyquist) away.push_back({cutoff + 2 * width, nyquist});
    switch (spec.PassType) {
        case ptLowPass: return {{below}, {above}};
        case ptHighPass: return {{above}, {below}};
        case ptBandPass: return {{around(0.25 * width)}, away};
        case ptNotch: return {away, {around(0.05 * width)}};
        default: return {{{0, nyquist}}, {}};
    }
}

class Measurement {
  public:
    Measurement(const IIRCoeffs &cascade, const IIRDesignSpec &spec, double rate)
        : cascade_(cascade), rate_(rate), grid_(frequency_grid(spec, rate)) {
        const double nyquist = 0.5 * rate;
        reference_ = magnitude(spec.PassType == ptHighPass   ? nyquist
                               : spec.PassType == ptBandPass ? spec.NormCutoff * nyquist
                                                             : 0.0);
    }

    double reference() const { return reference_; }
    double level(double f) const { return decibels(magnitude(f) / reference_); }

    std::vector<double> half_power_points() const {
        std::vector<double> points;
        for (std::size_t i = 1; i < grid_.size(); ++i)
            if (passes(grid_[i - 1]) != passes(grid_[i])) points.push_back(crossing(grid_[i - 1], grid_[i]));
        return points;
    }

    void measure(Band &band) const {
        band.lowest = band.highest = level(band.from);
        const auto include = [this, &band](double f) {
            band.lowest = std::min(band.lowest, level(f));
            band.highest = std::max(band.highest, level(f));
        };
        include(band.to);
        for (const double f : grid_)
            if (f > band.from && f < band.to) include(f);
    }

  private:
    double magnitude(double f) const { return std::abs(response_at(cascade_, f, rate_)); }
    bool passes(double f) const { return magnitude(f) >= kHalfPower * reference_; }

    double crossing(double low, double high) const {
        const bool at_low = passes(low);
        for (int i = 0; i < 60; ++i) {
            const double middle = 0.5 * (low + high);
            (passes(middle) == at_low ? low : high) = middle;
        }
        return 0.5 * (low + high);
    }

    const IIRCoeffs &cascade_;
    double rate_, reference_;
    std::vector<double> grid_;
};

// tau(0) of c0 + c1 z^-1 + c2 z^-2 is (c1 + 2 c2) / (c0 + c1 + c2); a factor 1 - z^-1, which makes that 0 / 0, delays by
// half a sample at every frequency.
double delay_at_dc(std::vector<double> c) {
    double delay = 0;
    for (;;) {
        double sum = 0, moment = 0, size = 0;
        for (std::size_t k = 0; k < c.size(); ++k) {
            sum += c[k];
            moment += static_cast<double>(k) * c[k];
            size += std::abs(c[k]);
        }
        if (std::abs(sum) > 1e-9 * size || c.size() == 1) return delay + moment / sum;
        delay += 0.5;
        for (std::size_t k = 1; k < c.size(); ++k) c[k] += c[k - 1];  // divides by 1 - z^-1
        c.pop_back();
    }
}

// The larger root of z^2 + a1 z + a2.
double pole_radius(double a1, double a2) {
    const std::complex<double> root = std::sqrt(std::complex<double>(0.25 * a1 * a1 - a2));
    return std::max(std::abs(-0.5 * a1 + root), std::abs(-0.5 * a1 - root));
}

}  // namespace

double decibels(double magnitude) { return 20 * std::log10(magnitude); }

int sections_that_run(const IIRCoeffs &cascade) { return std::clamp(cascade.NumSections, 1, int{MAX_IIR_SECTIONS}); }

std::complex<double> response_at(const IIRCoeffs &c, double f, double rate) {
    const std::complex<double> z1 = std::polar(1.0, -2 * pi * f / rate);
    std::complex<double> h = 1;
    for (int k = 0; k < sections_that_run(c); ++k)
        h *= c.a0[k] * (c.b0[k] + z1 * (c.b1[k] + z1 * c.b2[k])) / (1.0 + z1 * (c.a1[k] + z1 * c.a2[k]));
    return h;
}

Achieved analyse(const IIRCoeffs &c, const IIRDesignSpec &spec, double rate) {
    Achieved achieved;
    const Measurement measured(c, spec, rate);
    achieved.asked_db = spec.GainDb;
    achieved.reference_db = decibels(measured.reference());
    achieved.at_cutoff_db = measured.level(0.5 * spec.NormCutoff * rate);
    achieved.half_power = measured.half_power_points();
    auto [pass, stop] = band_edges(spec, rate);
    for (Band &band : pass) measured.measure(band);
    for (Band &band : stop) measured.measure(band);
    achieved.pass = std::move(pass);
    achieved.stop = std::move(stop);
    for (int k = 0; k < sections_that_run(c); ++k) {
        achieved.delay_at_dc += delay_at_dc({c.b0[k], c.b1[k], c.b2[k]}) - delay_at_dc({1, c.a1[k], c.a2[k]});
        achieved.pole_radius = std::max(achieved.pole_radius, pole_radius(c.a1[k], c.a2[k]));
        achieved.all_zero = achieved.all_zero || (c.b0[k] == 0 && c.b1[k] == 0 && c.b2[k] == 0);
        for (const double x : {c.a0[k], c.a1[k], c.a2[k], c.b0[k], c.b1[k], c.b2[k]})
            achieved.finite = achieved.finite && std::isfinite(x);
    }
    return achieved;
}

std::vector<std::string> warnings_about(const Achieved &achieved) {
    if (!achieved.finite) return {"unusable: coefficients are not finite"};
    if (achieved.all_zero) return {"unusable: a section is all zero, so the output is always 0"};
    std::vector<std::string> warnings;
    if (!(achieved.pole_radius < 1))
        warnings.push_back(fmt::format("unstable: the largest pole radius is {:.6g}", achieved.pole_radius));
    for (const Band &band : achieved.stop)
        if (band.highest > 0.01)  // dB: more than rounding
            warnings.push_back(fmt::format("unusable: gains up to {:.1f} dB in its stop band, {:.6g} Hz to {:.6g} Hz",
                                           band.highest, band.from, band.to));
    if (!(std::abs(achieved.reference_db - achieved.asked_db) < 0.1))
        warnings.push_back(
            fmt::format("unusable: its gain is {:.3g} dB instead of {:.3g} dB; the coefficients have lost "
                        "their digits, as with a cut-off far below the sampling rate",
                        achieved.reference_db, achieved.asked_db));
    return warnings;
}

}  // namespace tools
