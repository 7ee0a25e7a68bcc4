// What a command reads, and how it is read.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace cli {

// What happens where rows or cells are missing.
enum class GapPolicy {
    Hold,   // the last value stands in for what is missing
    Split,  // after a long hole everything starts anew
    Error   // refused
};

inline constexpr const char *kLastValue = "the last value stands in";

struct InputOptions {
    std::string file = {};                  // "" or "-": standard input
    std::vector<std::string> columns = {};  // by name or by number from 1; none: all but the time
    std::string time = {};                  // the column of times, by name or number; empty: found by its name
    std::optional<double> rate = {};        // Hz
    GapPolicy gaps = GapPolicy::Hold;
    char decimal = '\0';  // '.' or ','; '\0': what the first lines show
    bool strict = false;  // a cell that is not a number ends a stream

    // Set by the command, for messages: what stands in for missing values.
    std::string stand_in = kLastValue;
};

}  // namespace cli
