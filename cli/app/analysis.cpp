#include "cli/app/analysis.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

#include "sos/measure.h"

namespace cli {

namespace {

namespace sos = mensura::sos;

// The frequency at which the reference gain is measured: levels are relative to it.
double reference_frequency(const IIRDesignSpec &spec, double rate) {
    switch (spec.PassType) {
        case ptHighPass: return 0.5 * rate;
        case ptBandPass: return 0.5 * spec.NormCutoff * rate;
        default: return 0;
    }
}

// Halfway to Nyquist when twice the cut-off lies beyond it.
double octave_above(double cutoff, double nyquist) {
    return 2 * cutoff < nyquist ? 2 * cutoff : 0.5 * (cutoff + nyquist);
}

using Bands = std::vector<Band>;

// The pass bands and the stop bands.  Low-pass and high-pass: what lies an octave or more from the cut-off.  Band
// types: a quarter of the bandwidth to either side of the centre (a notch: a twentieth), and what lies two bandwidths
// or more from the centre.
std::pair<Bands, Bands> band_edges(const IIRDesignSpec &spec, double rate) {
    const double nyquist = 0.5 * rate, cutoff = spec.NormCutoff * nyquist, width = spec.NormBandwidth * nyquist;
    const Band below{0, 0.5 * cutoff}, above{octave_above(cutoff, nyquist), nyquist};
    const auto around = [cutoff, nyquist](double reach) {
        return Band{std::max(cutoff - reach, 0.0), std::min(cutoff + reach, nyquist)};
    };
    Bands away;
    if (cutoff - 2 * width > 0) away.push_back({0, cutoff - 2 * width});
    if (cutoff + 2 * width < nyquist) away.push_back({cutoff + 2 * width, nyquist});
    switch (spec.PassType) {
        case ptLowPass: return {Bands{below}, Bands{above}};
        case ptHighPass: return {Bands{above}, Bands{below}};
        case ptBandPass: return {Bands{around(0.25 * width)}, away};
        case ptNotch: return {away, Bands{around(0.05 * width)}};
        default: return {Bands{{0, nyquist}}, Bands{}};
    }
}

}  // namespace

Achieved analyse(const IIRCoeffs &c, const IIRDesignSpec &spec, double rate) {
    const sos::RecordSections sections(c);
    const sos::Cascade cascade = sections.cascade();
    const std::vector<double> grid = sos::frequency_grid(cascade, rate);
    const double cutoff = 0.5 * spec.NormCutoff * rate;
    const double reference = sos::magnitude(cascade, reference_frequency(spec, rate), rate);
    const auto level = [reference](double magnitude) { return sos::decibels(magnitude / reference); };

    Achieved achieved;
    achieved.asked_db = spec.GainDb;
    achieved.reference_db = sos::decibels(reference);
    achieved.at_cutoff_db = level(sos::magnitude(cascade, cutoff, rate));
    achieved.half_power = sos::crossings(cascade, rate, sos::kHalfPower * reference, grid);
    std::tie(achieved.pass, achieved.stop) = band_edges(spec, rate);
    for (std::vector<Band> *const bands : {&achieved.pass, &achieved.stop})
        for (Band &band : *bands) {
            const auto [lowest, highest] = sos::extremes(cascade, rate, band.from, band.to, grid);
            band.lowest = level(lowest);
            band.highest = level(highest);
        }
    achieved.delay_at_dc = sos::group_delay(cascade, 0, rate);
    achieved.pole_radius = sos::pole_radius(cascade);
    for (const sos::Section &s : cascade) {
        achieved.all_zero = achieved.all_zero || (s.b0 == 0 && s.b1 == 0 && s.b2 == 0);
        for (const double x : {s.b0, s.b1, s.b2, s.a1, s.a2}) achieved.finite = achieved.finite && std::isfinite(x);
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

}  // namespace cli
