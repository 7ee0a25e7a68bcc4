#include "cli/table/units.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <string>

namespace cli {

namespace {

constexpr std::string_view kPrefixes[] = {"", "k", "M", "G", "h", "d", "c", "m", "u", "\u00B5", "\u03BC", "n", "p"};
constexpr std::string_view kUnits[] = {
    "m",   "g",    "A",    "V",      "K",       "N",       "Nm", "Pa", "bar", "J",   "W",   "Wh",     "Hz",     "T",
    "F",   "H",    "C",    "L",      "l",       "mol",     "lx", "lm", "cd",  "Ohm", "ohm", "\u2126", "\u03A9", "rad",
    "deg", "degC", "degF", "\u00B0", "\u00B0C", "\u00B0F", "%",  "dB", "rpm", "ppm", "psi", "mmHg"};

struct Brackets {
    char opening, closing;
    bool any_text;
};
constexpr Brackets kBrackets[] = {{'[', ']', true}, {'(', ')', false}};

}  // namespace

bool is_unit(std::string_view text) {
    text = text.substr(0, text.find_first_of("/*^"));
    return std::ranges::any_of(kPrefixes, [text](std::string_view prefix) {
        return text.starts_with(prefix) &&
               std::ranges::find(kUnits, text.substr(prefix.size())) != std::ranges::end(kUnits);
    });
}

std::string unit_per_second(std::string_view unit) {
    if (unit.empty() || unit == "-" || unit == "1") return "1/s";
    const std::size_t slash = unit.rfind("/s");
    const std::string_view power = slash == std::string_view::npos ? "none" : unit.substr(slash + 2);
    if (power.empty()) return std::string(unit) + "^2";
    const std::size_t digit = power.starts_with('^') ? 1 : 0;
    if (power.size() != digit + 1 || power[digit] < '2' || power[digit] > '8') return std::string(unit) + "/s";
    std::string result(unit);
    ++result.back();
    return result;
}

std::string_view unit_in(std::string_view name) {
    for (const auto &[opening, closing, any_text] : kBrackets) {
        const std::size_t from = name.rfind(opening);
        if (from == std::string_view::npos || !name.ends_with(closing)) continue;
        const std::string_view unit = name.substr(from + 1, name.size() - from - 2);
        if (any_text || is_unit(unit)) return unit;
    }
    const std::string_view last = name.substr(name.rfind('_') + 1);
    return last.size() < name.size() && is_unit(last) ? last : std::string_view();
}

std::string derivative_name(std::string_view name) {
    const std::string_view unit = unit_in(name);
    if (unit.data() == nullptr) return fmt::format("d({})/dt", name);
    const auto begin = static_cast<std::size_t>(unit.data() - name.data());
    return fmt::format("{}{}{}", name.substr(0, begin), unit_per_second(unit), name.substr(begin + unit.size()));
}

}  // namespace cli
