// Names on the command line, from the tables that define them.  Case, dashes and underscores do not count: low-pass,
// LowPass and lowpass are the same.
#pragma once

#include <fmt/format.h>

#include <cctype>
#include <functional>
#include <iterator>
#include <string>
#include <string_view>

#include "cli/app/command_line.h"

namespace cli {

inline std::string folded(std::string_view name) {
    std::string result;
    for (const char c : name)
        if (c != '-' && c != '_') result += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return result;
}

// The names of a table's rows, for messages and help: "a, b, c", or with " or " as the last separator "a, b or c".
template <class Table, class Name>
std::string joined(const Table &table, Name name, std::string_view last_separator = ", ") {
    std::string text;
    const std::size_t count = std::size(table);
    for (std::size_t i = 0; i < count; ++i)
        text += fmt::format("{}{}", i == 0 ? "" : i + 1 == count ? last_separator : ", ", std::invoke(name, table[i]));
    return text;
}

// The row that has this name; any other name is refused with the list of all.
template <class Table, class Name>
const auto &row_named(const std::string &option, const std::string &text, const Table &table, Name name) {
    for (const auto &row : table)
        if (folded(std::invoke(name, row)) == folded(text)) return row;
    reject_option(option, fmt::format("\"{}\" is none of {}", text, joined(table, name)));
}

}  // namespace cli
