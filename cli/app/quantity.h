// Numbers with units on the command line: 40Hz, 2kHz, 3dB.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "cli/app/command_line.h"

namespace cli {

struct Unit {
    std::string_view name;
    double factor;
    bool named = true;  // in help and messages; the rest are other spellings
};

// The unit that a bare number has comes first.
inline constexpr Unit kHertz[] = {{"Hz", 1},        {"kHz", 1e3},        {"MHz", 1e6},       {"mHz", 1e-3},
                                  {"hz", 1, false}, {"khz", 1e3, false}, {"KHz", 1e3, false}};
inline constexpr Unit kDecibel[] = {{"dB", 1}, {"db", 1, false}};
inline constexpr std::span<const Unit> kPlain;

// A finite number and its unit, with or without a blank between them.  If there is none, `error` says why.
std::optional<double> parse_quantity(std::string_view text, std::span<const Unit> units, std::string &error);

// An option that takes such a number.
Option add_quantity(const Command &app, const std::string &name, std::function<void(double)> take,
                    std::span<const Unit> units, const std::string &help);

template <class Value>  // double or std::optional<double>
Option add_quantity(const Command &app, const std::string &name, Value &value, std::span<const Unit> units,
                    const std::string &help) {
    return add_quantity(app, name, std::function<void(double)>([&value](double x) { value = x; }), units, help);
}

// The sampling rate, above 0.
Option add_rate(const Command &app, std::optional<double> &rate,
                const std::string &help = "sampling rate in Hz; default from the column of times or the sound");

// A whole number.
Option add_count(const Command &app, const std::string &name, std::function<void(int)> take, const std::string &help);

template <class Value>  // int or std::optional<int>
Option add_count(const Command &app, const std::string &name, Value &value, const std::string &help) {
    return add_count(app, name, std::function<void(int)>([&value](int n) { value = n; }), help);
}

}  // namespace cli
