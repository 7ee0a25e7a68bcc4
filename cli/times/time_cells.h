// Times as the cells of a table have them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "cli/times/time_names.h"

namespace cli {

// A time of any origin.  Both parts have the sign of the time.
struct Instant {
    std::int64_t seconds = 0;
    double fraction = 0;  // below 1 s
};

// Reads the cells of one column.  The first cell decides between plain numbers, ISO 8601 and other dates with or
// without a time of day, and times of day, which may cross midnight.
class TimeCells {
  public:
    // `decimal` is the mark in plain numbers, '\0': not known; in fractions of a second both are understood.
    TimeCells(const TimeName &name, char decimal) : name_(name), decimal_(decimal) {}

    // Seconds since the first cell that was a time; none for what is not a time of the same form.  The digits of long
    // numbers, such as nanoseconds since 1970, are kept.
    std::optional<double> parse(std::string_view cell);

    // Why the first cell is not taken for a time although it may be one: there are two ways to read it.
    const std::string &doubt() const { return doubt_; }

    enum class DateOrder { YearFirst, DayFirst, MonthFirst };

  private:
    enum class Form { Unknown, Number, LongNumber, Date, Clock };

    bool begin_number(std::string_view cell);
    bool begin_date(std::string_view cell);
    bool begin_clock(std::string_view cell);
    bool doubt(std::string_view cell, std::string_view readings);
    std::optional<double> number(std::string_view cell) const;
    std::optional<double> since_first(const std::optional<Instant> &instant, double unit) const;
    std::optional<double> clock(std::string_view cell);

    TimeName name_;
    char decimal_;
    Form form_ = Form::Unknown;
    DateOrder order_ = DateOrder::YearFirst;
    double first_number_ = 0;
    double last_clock_ = 0, turns_ = 0;  // turns_: midnights that were crossed, in seconds
    Instant first_;
    std::string doubt_;
};

}  // namespace cli
