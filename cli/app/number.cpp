#include "cli/app/number.h"

#include <fast_float/fast_float.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <system_error>

namespace cli {

namespace {

constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
constexpr std::ptrdiff_t kMostDigits = std::ssize(kPowersOfTen) - 1;

std::uint64_t read_digits(const char *&at, const char *end, std::uint64_t before) {
    for (; at != end && is_digit(*at); ++at) before = 10 * before + static_cast<std::uint64_t>(*at - '0');
    return before;
}

// A decimal such as -12.345 with at most 15 digits: its digits and the power of ten are doubles without an error, so
// that their quotient is the nearest double to it.  nullptr: it is longer, or written in another way.
const char *read_short_decimal(const char *from, const char *end, char decimal, double &value) {
    const bool negative = from != end && *from == '-';
    const char *at = from + (negative ? 1 : 0), *point = at;
    std::uint64_t digits = read_digits(at, end, 0);
    const std::ptrdiff_t whole = at - point;
    point = at;
    if (at != end && *at == decimal) digits = read_digits(++at, end, digits);
    const std::ptrdiff_t fraction = at == point ? 0 : at - point - 1;
    const bool unusual = whole == 0 || (at != point && fraction == 0) || (at != end && (*at == 'e' || *at == 'E'));
    if (unusual || whole + fraction > kMostDigits) return nullptr;
    const double size = static_cast<double>(static_cast<std::int64_t>(digits)) / kPowersOfTen[fraction];
    value = std::copysign(size, negative ? -1.0 : 1.0);
    return at;
}

}  // namespace

const char *read_number(const char *from, const char *end, char decimal, double &value) {
    if (const char *const short_end = read_short_decimal(from, end, decimal, value)) return short_end;
    const fast_float::parse_options options(fast_float::chars_format::general, decimal);
    const auto result = fast_float::from_chars_advanced(from, end, value, options);
    return result.ec == std::errc() && std::isfinite(value) ? result.ptr : nullptr;
}

std::string lower(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
    while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
    return text;
}

std::optional<double> parse_number(std::string_view text) {
    text = trimmed(text);
    if (text.size() > 1 && text.front() == '+' && text[1] != '-') text.remove_prefix(1);
    double value = 0;
    const char *const end = text.data() + text.size(), *const rest = read_number(text.data(), end, '.', value);
    if (rest == nullptr || rest != end) return {};  // an empty text may end at nullptr
    return value;
}

}  // namespace cli
