// Text from users and files, and the numbers in it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace cli {

// The finite number that is the whole text, except for blanks around it; a plus sign may come first.
std::optional<double> parse_number(std::string_view text);

inline bool is_digit(char c) { return c >= '0' && c <= '9'; }

// ASCII letters in lower case.
std::string lower(std::string_view text);

// Without the blanks at both ends.
std::string_view trimmed(std::string_view text);

}  // namespace cli
