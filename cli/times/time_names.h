// Names of columns that hold times, and the units in them.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

// What a name says of the times below it.
struct TimeName {
    enum Shape { Any, HoursMinutes, MinutesSeconds };

    double unit = 0;    // of plain numbers, s; 0: not stated
    Shape shape = Any;  // of cells such as 10:30
    bool date = false;  // the name of a date, without a time of day
};

// "time", "t", "Zeit", "timestamp", "date" and the like in any case, also with a unit, as in "time_ms" or "Time [s]",
// but not T, a temperature.
std::optional<TimeName> time_name(std::string_view name);

// The seconds of "ms", "[s]" or "(µs)"; 0 for what is no unit of time.
double time_unit(std::string_view text);

// The columns with such names, those of dates last.
std::vector<std::size_t> time_columns(const std::vector<std::string> &names);

}  // namespace cli
