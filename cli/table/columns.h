// The columns of a table, their names and units.
#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

inline constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

// A column.  Its first cell that is not missing decides whether it holds numbers or text.
struct Column {
    std::size_t index = 0;  // from 0
    std::string name = {};  // from the header, "x", or "x#2" if it is the second of that name; or "column 3"
    std::string unit = {};  // from the row of units, without brackets
    enum Kind { Undecided, Numbers, Text } kind = Undecided;
    bool chosen = false;  // on the command line: then text is an error
};

// Names by which columns are addressed: the second of several called "x" is "x#2".
std::vector<std::string> addresses_of(const std::vector<std::string> &names);

// The unit in a cell of a row of units: "mV" of "mV", "[mV]" or "(mV)"; none of "-".
std::string unit_in_cell(std::string_view cell);

// Such a cell after a derivative over time: "[m]" gives "[m/s]"; what is not stated stays so.
std::string derivative_unit(std::string_view cell);

// The name with its unit, "x [m]".
std::string labelled(const std::string &name, const std::string &unit);

// Whether the cells of the line below the header are units: none begins like a number or a time, and one is
// in brackets or a known unit.
bool are_units(const std::vector<std::string_view> &cells);

}  // namespace cli
