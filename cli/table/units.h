// Units in the names of columns.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace cli {

inline constexpr const char *kFullScale = "full scale";  // the unit of sounds

// Gives a column another name.
using Rename = std::function<std::string(std::string_view name)>;

// Whether this is a unit that is known here, or begins with one: "mV", "m/s".
bool is_unit(std::string_view text);

// The unit in a name: "m" of "x [m]", "mV" of "ecg_mV"; without data where there is none.  Brackets hold a unit
// whatever it is; parentheses, and what follows an underscore, where it is a known one.
std::string_view unit_in(std::string_view name);

// A unit divided by the second: "m" gives "m/s", "m/s" gives "m/s^2", none gives "1/s".
std::string unit_per_second(std::string_view unit);

// The name of a column's derivative over time: "x [m]" gives "x [m/s]", "ecg_mV" gives "ecg_mV/s"; a name without a
// unit, "speed", gives "d(speed)/dt".
std::string derivative_name(std::string_view name);

}  // namespace cli
