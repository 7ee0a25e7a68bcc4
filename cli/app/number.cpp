#include "cli/app/number.h"

#include <fast_float/fast_float.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstddef>
#include <system_error>

namespace cli {

std::string lower(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::optional<double> parse_number(std::string_view text) {
    text = trimmed(text);
    if (text.size() > 1 && text.front() == '+' && text[1] != '-') text.remove_prefix(1);
    double value = 0;
    const auto result = fast_float::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() || !std::isfinite(value)) return {};
    return value;
}

}  // namespace cli
