#include "cli/times/time_cells.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>

#include "cli/app/number.h"

namespace cli {

namespace {

constexpr int kHour = 3600, kDay = 86400;  // s

struct Digits {
    std::int64_t value = 0;
    std::size_t count = 0;
};

// Takes a cell apart from left to right.
struct Scanner {
    std::string_view rest;

    bool take(std::string_view characters) {
        if (rest.empty() || characters.find(rest.front()) == std::string_view::npos) return false;
        rest.remove_prefix(1);
        return true;
    }
    std::optional<Digits> digits(std::size_t least, std::size_t most) {
        Digits digits;
        for (; digits.count < most && digits.count < rest.size() && is_digit(rest[digits.count]); ++digits.count)
            digits.value = digits.value * 10 + (rest[digits.count] - '0');
        if (digits.count < least) return {};
        rest.remove_prefix(digits.count);
        return digits;
    }
    // "am" and the like, in any case.
    bool take_word(std::string_view word) {
        if (lower(rest.substr(0, word.size())) != word) return false;
        rest.remove_prefix(word.size());
        return true;
    }
};

// The digits behind a point or comma.  More than 18 do not change a double.
std::optional<double> fraction(Scanner &scan) {
    constexpr std::size_t kMost = 18;
    if (!scan.take(".,")) return 0;
    const std::optional<Digits> digits = scan.digits(1, kMost);
    if (!digits) return {};
    while (!scan.rest.empty() && is_digit(scan.rest.front())) scan.rest.remove_prefix(1);
    double scale = 1;
    for (std::size_t i = 0; i < digits->count; ++i) scale *= 10;
    return static_cast<double>(digits->value) / scale;
}

struct Parts {
    std::array<Digits, 3> number;
    std::size_t count = 0;
    double fraction = 0;
    bool has_fraction = false;
};

// 12:00, 12:00:00 or 12:00:00.5
std::optional<Parts> clock_parts(Scanner &scan) {
    Parts parts;
    do {
        const std::optional<Digits> number = scan.digits(1, parts.count == 0 ? 6 : 2);
        if (!number || (parts.count > 0 && number->value > (parts.count == 2 ? 60 : 59)))
            return {};  // 60: a leap second
        parts.number.at(parts.count++) = *number;
    } while (parts.count < parts.number.size() && scan.take(":"));
    if (parts.count < 2) return {};
    const std::size_t before = scan.rest.size();
    const std::optional<double> rest = fraction(scan);
    if (!rest) return {};
    parts.fraction = *rest;
    parts.has_fraction = scan.rest.size() < before;
    return parts;
}

// The hour with "AM" or "PM" behind it; none if there is no such hour.
std::optional<std::int64_t> hour_of(std::int64_t hour, Scanner &scan) {
    while (scan.take(" ")) continue;
    const bool afternoon = scan.take_word("pm");
    if (!afternoon && !scan.take_word("am")) return hour;
    if (hour < 1 || hour > 12) return {};
    return hour % 12 + (afternoon ? 12 : 0);
}

// Z, +01:00, +0100 or +01, in seconds; 0 for nothing.
std::optional<std::int64_t> offset(Scanner &scan) {
    while (scan.take(" ")) continue;
    if (scan.rest.empty() || scan.take("Zz") || scan.take_word("utc")) return 0;
    const bool west = scan.rest.front() == '-';
    if (!scan.take("+-")) return {};
    const std::optional<Digits> hours = scan.digits(2, 2);
    if (!hours || hours->value > 14) return {};
    std::int64_t seconds = hours->value * kHour;
    if (!scan.rest.empty()) {
        scan.take(":");
        const std::optional<Digits> minutes = scan.digits(2, 2);
        if (!minutes || minutes->value > 59) return {};
        seconds += minutes->value * 60;
    }
    return west ? -seconds : seconds;
}

// Three numbers with the same mark between them.
std::optional<std::array<Digits, 3>> date_parts(Scanner &scan) {
    const std::optional<Digits> first = scan.digits(1, 4);
    if (!first || scan.rest.empty()) return {};
    const char mark = scan.rest.front();
    if (!scan.take("-/.")) return {};
    const std::optional<Digits> second = scan.digits(1, 2);
    if (!second || !scan.take({&mark, 1})) return {};
    const std::optional<Digits> third = scan.digits(1, 4);
    if (!third || (first->count == 4) == (third->count == 4)) return {};
    return std::array{*first, *second, *third};
}

// Days since 1970 of a date of the Gregorian calendar.
std::optional<std::int64_t> days_since_1970(const Digits &year, const Digits &month, const Digits &day) {
    using namespace std::chrono;
    if (year.count != 4 || month.count > 2 || day.count > 2) return {};
    const year_month_day date{std::chrono::year(static_cast<int>(year.value)),
                              std::chrono::month(static_cast<unsigned>(month.value)),
                              std::chrono::day(static_cast<unsigned>(day.value))};
    if (!date.ok()) return {};
    return sys_days(date).time_since_epoch().count();
}

using DateOrder = TimeCells::DateOrder;

// What follows a date: nothing, or a time of day behind T or a blank.
std::optional<Instant> time_of_day(Scanner &scan) {
    if (scan.rest.empty()) return Instant{};
    if (!scan.take("Tt ")) return {};
    while (scan.take(" ")) continue;
    const std::optional<Parts> parts = clock_parts(scan);
    if (!parts || parts->number[0].count > 2 || (parts->count == 2 && parts->has_fraction)) return {};
    const std::optional<std::int64_t> hour = hour_of(parts->number[0].value, scan), ahead = offset(scan);
    if (!hour || *hour > 23 || !ahead) return {};
    return Instant{*hour * kHour + parts->number[1].value * 60 + parts->number[2].value - *ahead, parts->fraction};
}

std::optional<std::int64_t> days_of(const std::array<Digits, 3> &parts, DateOrder order) {
    const auto &[first, second, third] = parts;
    if (order == DateOrder::YearFirst) return days_since_1970(first, second, third);
    if (order == DateOrder::DayFirst) return days_since_1970(third, second, first);
    return days_since_1970(third, first, second);
}

std::optional<Instant> date_time(std::string_view cell, DateOrder order) {
    Scanner scan{cell};
    const auto parts = date_parts(scan);
    if (!parts) return {};
    const std::optional<std::int64_t> days = days_of(*parts, order);
    const std::optional<Instant> time = time_of_day(scan);
    if (!days || !time || !scan.rest.empty()) return {};
    return Instant{*days * kDay + time->seconds, time->fraction};
}

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

// A plain number with this decimal mark, '\0': either; kNone where there is none.
double plain_number(std::string_view cell, char decimal) {
    const double number = decimal == ',' ? kNone : parse_number(cell).value_or(kNone);
    if (!std::isnan(number) || decimal == '.') return number;
    std::array<char, 64> text;
    if (cell.size() > text.size() || cell.find('.') != std::string_view::npos) return kNone;
    std::ranges::replace_copy(cell, text.begin(), ',', '.');
    return parse_number({text.data(), cell.size()}).value_or(kNone);
}

// A long number, split at its point.
std::optional<Instant> long_number(std::string_view cell) {
    constexpr std::int64_t kLargest = 4'000'000'000'000'000'000;  // the difference of two is no overflow
    Scanner scan{cell};
    const bool negative = cell.starts_with('-');
    if (!scan.take("-")) scan.take("+");
    const std::optional<Digits> whole = scan.digits(1, 18);
    if (!whole) return {};
    std::int64_t value = whole->value;
    if (!scan.rest.empty() && is_digit(scan.rest.front())) {
        if (value >= kLargest / 10) return {};
        value = value * 10 + (scan.rest.front() - '0');
        scan.rest.remove_prefix(1);
    }
    const std::optional<double> rest = fraction(scan);
    if (!rest || !scan.rest.empty()) return {};
    return negative ? Instant{-value, -*rest} : Instant{value, *rest};
}

// The unit of a number in a column whose name has none.  Seconds since 1970 have 10 digits before the point from 2001
// to 2286, milliseconds 13, microseconds 16, nanoseconds 19; spreadsheets count days since 1900.
double likely_unit(double number, bool date) {
    constexpr double kFirstDay = 20000, kLastDay = 80000;  // 1954, 2119
    const double size = std::abs(number);
    if (date && size >= kFirstDay && size < kLastDay) return kDay;
    if (size < 1e11) return 1;
    if (size < 1e14) return 1e-3;
    return size < 1e17 ? 1e-6 : 1e-9;
}

}  // namespace

std::optional<double> TimeCells::parse(std::string_view cell) {
    if (form_ == Form::Unknown && !begin_number(cell) && !begin_date(cell) && !begin_clock(cell)) return {};
    switch (form_) {
        case Form::Number: return number(cell);
        case Form::LongNumber: return since_first(long_number(cell), name_.unit);
        case Form::Date: return since_first(date_time(cell, order_), 1);
        default: return clock(cell);
    }
}

bool TimeCells::begin_number(std::string_view cell) {
    constexpr double kLong = 1e9;  // from here on rounding to doubles may show in the differences
    const double value = plain_number(cell, decimal_);
    if (std::isnan(value)) return false;
    if (name_.unit <= 0) name_.unit = likely_unit(value, name_.date);
    first_number_ = value * name_.unit;
    if (!std::isfinite(first_number_)) return false;
    form_ = Form::Number;
    const std::optional<Instant> exact = long_number(cell);
    if (std::abs(value) < kLong || !exact) return true;
    first_ = *exact;
    form_ = Form::LongNumber;
    return true;
}

bool TimeCells::begin_date(std::string_view cell) {
    constexpr int kMonths = 12;
    Scanner scan{cell};
    const auto parts = date_parts(scan);
    if (!parts) return false;
    const bool day_first = cell.find('.') < cell.find(':') && cell.find('.') < 3;
    const std::int64_t first = (*parts)[0].value, second = (*parts)[1].value;
    const bool in_doubt = (*parts)[0].count < 4 && !day_first && first <= kMonths && second <= kMonths;
    if ((*parts)[0].count < 4) order_ = day_first || second <= kMonths ? DateOrder::DayFirst : DateOrder::MonthFirst;
    const std::optional<Instant> instant = date_time(cell, order_);
    if (!instant) return false;
    if (in_doubt) return doubt(cell, "day or month first");
    first_ = *instant;
    form_ = Form::Date;
    return true;
}

bool TimeCells::begin_clock(std::string_view cell) {
    constexpr int kHours = 24;
    Scanner scan{cell};
    scan.take("-+");
    const std::optional<Parts> parts = clock_parts(scan);
    if (!parts) return false;
    if (parts->count == 2 && name_.shape == TimeName::Any) {
        if (!parts->has_fraction && parts->number[0].value < kHours)
            return doubt(cell, "hours and minutes, or minutes and seconds");
        name_.shape = TimeName::MinutesSeconds;
    }
    form_ = Form::Clock;
    const std::optional<double> first = clock(cell);
    if (first) first_number_ = *first;
    if (!first) form_ = Form::Unknown;
    return first.has_value();
}

bool TimeCells::doubt(std::string_view cell, std::string_view readings) {
    doubt_ = fmt::format("\"{}\" can be read in two ways, {}", cell, readings);
    return false;
}

std::optional<double> TimeCells::number(std::string_view cell) const {
    const double time = plain_number(cell, decimal_) * name_.unit - first_number_;
    if (!std::isfinite(time)) return {};
    return time;
}

std::optional<double> TimeCells::since_first(const std::optional<Instant> &instant, double unit) const {
    if (!instant) return {};
    return (static_cast<double>(instant->seconds - first_.seconds) + (instant->fraction - first_.fraction)) * unit;
}

// A time of day that falls by more than half a day belongs to the next one; minutes fall so at the full hour.
std::optional<double> TimeCells::clock(std::string_view cell) {
    Scanner scan{cell};
    const bool negative = scan.take("-");
    if (!negative) scan.take("+");
    const std::optional<Parts> parts = clock_parts(scan);
    if (!parts) return {};
    const bool minutes = parts->count == 2 && name_.shape != TimeName::HoursMinutes;
    if (parts->count == 2 && !minutes && parts->has_fraction) return {};
    const std::optional<std::int64_t> hour = minutes ? 0 : hour_of(parts->number[0].value, scan);
    if (!hour || !scan.rest.empty()) return {};
    const std::int64_t seconds = minutes ? parts->number[0].value * 60 + parts->number[1].value
                                         : *hour * kHour + parts->number[1].value * 60 + parts->number[2].value;
    const double time = (negative ? -1 : 1) * (static_cast<double>(seconds) + parts->fraction);
    const double period = minutes ? kHour : kDay;
    if (time >= 0 && time < period && time + turns_ < last_clock_ - 0.5 * period) turns_ += period;
    last_clock_ = time + turns_;
    return last_clock_ - first_number_;
}

}  // namespace cli
