#include "cli/app/quantity.h"

#include <fmt/format.h>

#include <cmath>
#include <limits>

#include "cli/app/number.h"

namespace cli {

namespace {

std::string expectation(std::span<const Unit> units) {
    std::string text = "expected a number";
    for (const char *separator = " in "; const Unit &unit : units) {
        if (!unit.named) continue;
        text += separator + std::string(unit.name);
        separator = ", ";
    }
    return text;
}

std::string argument_name(std::span<const Unit> units) {
    return units.empty() ? "X" : units.front().name == "Hz" ? "F" : std::string(units.front().name);
}

}  // namespace

std::optional<double> parse_quantity(std::string_view text, std::span<const Unit> units, std::string &error) {
    text = trimmed(text);
    const std::size_t last = text.find_last_of("0123456789.");
    const std::size_t length = last == std::string_view::npos ? 0 : last + 1;
    const std::string_view unit = trimmed(text.substr(length));
    const std::optional<double> number = parse_number(text.substr(0, length));
    if (!number) {
        error = fmt::format("\"{}\" is not a number; {}", text, expectation(units));
        return {};
    }
    if (unit.empty()) return *number + 0.0;  // no "-0"
    for (const Unit &known : units)
        if (known.name == unit && std::isfinite(*number * known.factor)) return *number * known.factor;
    error = fmt::format("unknown unit \"{}\" in \"{}\"; {}", unit, text, expectation(units));
    return {};
}

Option add_quantity(const Command &app, const std::string &name, std::function<void(double)> take,
                    std::span<const Unit> units, const std::string &help) {
    const auto parse = [name, take = std::move(take), units](const std::string &text) {
        std::string error;
        const std::optional<double> value = parse_quantity(text, units, error);
        if (!value) reject_option(name, error);
        take(*value);
    };
    return app.add_option(name, parse, help).type_name(argument_name(units));
}

Option add_rate(const Command &app, std::optional<double> &rate, const std::string &help) {
    const auto take = [&rate](double value) {
        if (value <= 0) reject_option("--rate", fmt::format("{} Hz is not above 0", value));
        rate = value;
    };
    return add_quantity(app, "--rate", std::function<void(double)>(take), kHertz, help);
}

Option add_count(const Command &app, const std::string &name, std::function<void(int)> take, const std::string &help) {
    const auto take_whole = [name, take = std::move(take)](double number) {
        if (number != std::floor(number)) reject_option(name, fmt::format("{} is not a whole number", number));
        if (std::abs(number) > std::numeric_limits<int>::max())
            reject_option(name, fmt::format("{} is too large", number));
        take(static_cast<int>(number));
    };
    return add_quantity(app, name, std::function<void(double)>(take_whole), kPlain, help).type_name("N");
}

}  // namespace cli
