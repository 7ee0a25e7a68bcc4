#include "cli/data/times.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <iterator>
#include <string_view>

#include "cli/app/diagnostics.h"
#include "cli/app/number.h"

namespace cli {

double unit_of_time(const std::string &name) {
    struct Unit {
        std::string_view name;
        double seconds;
    };
    constexpr Unit kUnits[] = {{"", 1},           {"s", 1},         {"sec", 1},   {"seconds", 1}, {"stamp", 1},
                               {"min", 60},       {"h", 3600},      {"ms", 1e-3}, {"us", 1e-6},   {"ns", 1e-9},
                               {"\u00B5s", 1e-6}, {"\u03BCs", 1e-6}};  // the micro sign, the Greek letter
    const std::string text = lower(name);
    const std::size_t start = text.starts_with("time") ? 4 : text.starts_with("t") ? 1 : 0;
    if (start == 0 || name == "T") return 0;
    if (start == 1 && text.size() > 1 && std::isalpha(static_cast<unsigned char>(text[1])) != 0) return 0;
    std::string unit;
    for (const char c : text.substr(start))
        if (std::string_view(" _-./()[],").find(c) == std::string_view::npos) unit += c;
    const auto *const known = std::ranges::find(kUnits, unit, &Unit::name);
    return known == std::end(kUnits) ? 0 : known->seconds;
}

void EvenTimes::add(double time, std::size_t line, std::size_t column) {
    column_ = column;
    if (count_ > 0 && !(time > last_)) reject("{}:{}:{}: the time does not increase", file_, line, column);
    const Step step{time - last_, line};
    if (count_ == 0) first_ = time;
    if (count_ == 1) shortest_ = longest_ = step;
    if (count_ > 1 && step.length < shortest_.length) shortest_ = step;
    if (count_ > 1 && step.length > longest_.length) longest_ = step;
    last_ = time;
    ++count_;
}

void EvenTimes::refuse_if_uneven(const Step &step, double rate) const {
    constexpr double kMostOff = 0.5 - 1e-9;  // in mean steps: passes times rounded to milliseconds, but no lost sample
    if (std::abs(step.length * rate - 1) > kMostOff)
        reject("{}:{}:{}: the times are not evenly spaced here; give --rate to take the rows as even", file_, step.line,
               column_);
}

double EvenTimes::rate() const {
    if (count_ < 2) reject("{}: a single row has no sampling rate; give --rate", file_);
    const double rate = static_cast<double>(count_ - 1) / (last_ - first_);
    refuse_if_uneven(longest_, rate);
    refuse_if_uneven(shortest_, rate);
    const double whole = std::round(rate);
    return std::abs(rate - whole) <= 1e-5 * whole ? whole : rate;
}

}  // namespace cli
