#include "cli/app/analysis.h"

#include <fmt/format.h>
#include <mensura/iir.h>
#include <mensura/sos.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace cli {

namespace {

const double kHalfPowerDb = 10 * std::log10(0.5);
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// The functions of mensura/sos.h on one filter.
class Meter {
  public:
    Meter(const Sections &sections, double rate) : sos_(data_of(sections)), count_(count_of(sections)), rate_(rate) {}

    double gain(double frequency) const {
        double re = 0, im = 0;
        checked(mensura_sos_response(sos_, count_, rate_, &frequency, &re, &im, 1));
        return 20 * std::log10(std::hypot(re, im));
    }
    double delay(double frequency) const {  // s
        double samples = 0;
        checked(mensura_sos_group_delay(sos_, count_, rate_, &frequency, &samples, 1));
        return samples / rate_;
    }
    std::vector<double> crossings(double level) const {
        std::vector<double> found(
            static_cast<std::size_t>(checked(mensura_sos_crossings(sos_, count_, rate_, level, nullptr, 0))));
        checked(mensura_sos_crossings(sos_, count_, rate_, level, found.data(), static_cast<int>(found.size())));
        return found;
    }
    Band extremes(double from, double to) const {
        Band band{.from = from, .to = to};
        checked(mensura_sos_extremes(sos_, count_, rate_, from, to, &band.lowest, &band.highest));
        return band;
    }

  private:
    const double *sos_;
    int count_;
    double rate_;
};

double reference_frequency(const Target &target) {
    if (target.pass_type == ptHighPass) return 0.5 * target.rate;
    return target.pass_type == ptBandPass ? target.centre : 0;
}

// Of bands whose levels are still absolute and of one pass.
double largest_gain(const std::vector<Band> &bands) { return std::ranges::max(bands, {}, &Band::highest).highest; }

void measure_levels(const Meter &meter, const Target &target, Achieved &achieved) {
    for (const Band &band : target.pass) achieved.pass.push_back(meter.extremes(band.from, band.to));
    for (const Band &band : target.stop) achieved.stop.push_back(meter.extremes(band.from, band.to));
    const double once = meter.gain(reference_frequency(target));
    const double reference = target.to_largest ? largest_gain(achieved.pass) : once;
    const auto relative = [&](double gain) { return target.passes * (gain - reference); };
    for (std::vector<Band> *const bands : {&achieved.pass, &achieved.stop})
        for (Band &band : *bands) {
            band.lowest = relative(band.lowest);
            band.highest = relative(band.highest);
        }
    for (const double edge : target.edges) achieved.edges.push_back({edge, relative(meter.gain(edge))});
    achieved.gain_db = target.passes * once;
    achieved.reference_db = target.passes * reference;
}

}  // namespace

Achieved soundness(const Sections &sections) {
    Achieved achieved;
    for (const Section &s : sections) {
        achieved.all_zero = achieved.all_zero || (s[0] == 0 && s[1] == 0 && s[2] == 0);
        achieved.finite = achieved.finite && std::ranges::all_of(s, [](double x) { return std::isfinite(x); });
    }
    achieved.pole_radius = kNaN;
    if (achieved.finite) checked(mensura_sos_pole_radius(data_of(sections), count_of(sections), &achieved.pole_radius));
    return achieved;
}

Achieved measure(const Sections &sections, const Target &target) {
    Achieved achieved = soundness(sections);
    achieved.asked_db = target.gain_db;
    if (!achieved.measurable()) return achieved;
    const Meter meter(sections, target.rate);
    measure_levels(meter, target, achieved);
    if (target.passes == 1) achieved.delay = meter.delay(reference_frequency(target));
    return achieved;
}

std::vector<double> half_power_of(const Sections &sections, double rate, int passes, double reference_db) {
    return Meter(sections, rate).crossings(reference_db / passes + kHalfPowerDb / passes);
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
    if (!(std::abs(achieved.gain_db - achieved.asked_db) < 0.1))
        warnings.push_back(
            fmt::format("unusable: its gain is {:.3g} dB instead of {:.3g} dB; the coefficients have lost "
                        "their digits, as with a cut-off far below the sampling rate",
                        achieved.gain_db, achieved.asked_db));
    return warnings;
}

}  // namespace cli
