// Text from users and files, and the numbers in it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace cli {

// Reads the finite number with which the text from `from` to `end` begins, without blanks and a plus sign before it.
// Returns where it ends; nullptr: there is none.
const char *read_number(const char *from, const char *end, char decimal, double &value);

// The finite number that is the whole text, except for blanks around it; a plus sign may come first.
std::optional<double> parse_number(std::string_view text);

inline bool is_digit(char c) { return c >= '0' && c <= '9'; }
inline bool is_blank(char c) { return c == ' ' || c == '\t'; }

// ASCII letters in lower case.
std::string lower(std::string_view text);

// Without the blanks at both ends.
std::string_view trimmed(std::string_view text);

}  // namespace cli
