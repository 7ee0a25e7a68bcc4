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

template <class Table, class Name>
Words words_of(const Table &table, Name name) {
    Words words;
    for (const auto &row : table) words.emplace_back(std::invoke(name, row));
    return words;
}

// An option, or an argument, whose value is the name of one of the table's rows; `take` gets the row.  In the help the
// names stand in the place of {}.
template <class Table, class Name, class Take>
Option add_choice(const Command &app, const std::string &option, const Table &table, Name name, Take take,
                  const std::string &help) {
    const auto take_name = [option, &table, name, take](const std::string &text) {
        take(row_named(option, text, table, name));
    };
    return app.add_option(option, take_name, fmt::format(fmt::runtime(help), joined(table, name, " or ")))
        .words(words_of(table, name));
}

}  // namespace cli
