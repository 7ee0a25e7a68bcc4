#include "cli/commands/spectrum_label.h"

#include <fmt/format.h>

#include <cstddef>
#include <string_view>

#include "cli/table/units.h"

namespace cli {

namespace {

// "mV^2", "(m/s)^2"
std::string squared(const std::string &unit) {
    return unit.find_first_of("/*^ ") == std::string::npos ? unit + "^2" : fmt::format("({})^2", unit);
}

// "current" of "current [A]"; other names stay.
std::string_view without_brackets(std::string_view name, std::string_view unit) {
    if (unit.empty() || !(name.ends_with(']') || name.ends_with(')'))) return name;
    const std::string_view rest = name.substr(0, name.size() - unit.size() - 2);
    return rest.substr(0, rest.find_last_not_of(' ') + 1);
}

}  // namespace

std::string scale_label(const std::string &name, Scale scale) {
    const std::string_view given = unit_in(name), what = without_brackets(name, given);
    const std::string unit(given.empty() ? "unit" : given), reference = given == kFullScale ? unit : "1 " + unit;
    switch (scale) {
        case Scale::Amplitude: break;
        case Scale::Power: return fmt::format("{}, mean square [{}]", what, squared(unit));
        case Scale::Density: return fmt::format("{}, density [{}/Hz]", what, squared(unit));
        case Scale::Decibel: return fmt::format("{} [dB re {}]", what, reference);
        case Scale::DensityDecibel: return fmt::format("{}, density [dB re 1 {}/Hz]", what, squared(unit));
    }
    return name;
}

}  // namespace cli
