// Names on the command line: case and dashes do not count, so that low-pass, LowPass and lowpass are the same.
#pragma once

#include <fmt/format.h>

#include <cctype>
#include <string>

namespace cli {

inline std::string folded(const std::string &name) {
    std::string result;
    for (const char c : name)
        if (c != '-' && c != '_') result += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return result;
}

// The entry of a table that has this name; a name that there is not is refused with the list of those there are.
template <class Table>
const auto &entry_called(const std::string &option, const std::string &text, const Table &table) {
    std::string names;
    for (const auto &entry : table) {
        if (folded(entry.name) == folded(text)) return entry;
        names += (names.empty() ? "" : ", ") + std::string(entry.name);
    }
    reject_option(option, fmt::format("\"{}\" is none of {}", text, names));
}

}  // namespace cli
