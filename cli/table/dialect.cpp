#include "cli/table/dialect.h"

#include <algorithm>
#include <string>
#include <vector>

#include "cli/app/number.h"
#include "cli/table/cells.h"

namespace cli {

namespace {

constexpr auto kNowhere = std::string_view::npos;

bool all_numbers(std::string_view line, char separator, char decimal) {
    std::vector<std::string_view> cells;
    return split(line, separator, cells) && std::ranges::all_of(cells, [decimal](std::string_view cell) {
               return number_in(cell, decimal).has_value() || is_missing(cell);
           });
}

// Whether each cell between blanks that has a comma is a number.
bool commas_are_marks(std::string_view line) {
    std::vector<std::string_view> cells;
    return split(line, ' ', cells) && std::ranges::all_of(cells, [](std::string_view cell) {
               return cell.find(',') == kNowhere || number_in(cell, ',');
           });
}

std::string without_quoted(std::string_view line) {
    std::string plain;
    bool quoted = false;
    for (const char c : line) {
        quoted = quoted != (c == '"');
        if (!quoted) plain += c;
    }
    return plain;
}

// The length of what may stand between thousands: a point, a comma, an apostrophe, a blank; 0: none of them.
std::size_t thousands_mark(std::string_view text) {
    constexpr std::string_view kMarks[] = {".", ",", "'", " ", "\u2019", "\u00A0", "\u202F", "\u2009"};
    for (const std::string_view mark : kMarks)
        if (text.starts_with(mark)) return mark.size();
    return 0;
}

}  // namespace

char separator_in(std::string_view line, char decimal) {
    const std::string plain = without_quoted(line);
    for (const char candidate : {'\t', ';'})
        if (plain.find(candidate) != kNowhere) return candidate;
    if (plain.find(',') == kNowhere) return ' ';
    if (decimal == ',') return commas_are_marks(line) ? ' ' : ',';
    const bool may_be_mark = decimal == '\0' && !all_numbers(line, ',', '.');
    return may_be_mark && all_numbers(line, ' ', ',') ? ' ' : ',';
}

char decimal_mark_in(std::span<const std::string_view> cells) {
    const auto shows = [cells](char mark) {
        return std::ranges::any_of(
            cells, [mark](std::string_view cell) { return cell.find(mark) != kNowhere && number_in(cell, mark); });
    };
    if (shows('.')) return '.';
    return shows(',') ? ',' : '\0';
}

char decimal_mark_in(std::string_view text, char separator, std::size_t width) {
    if (text.find('.') == kNowhere && text.find(',') == kNowhere) return '\0';
    std::vector<std::string_view> cells;
    char mark = '\0';
    for (std::size_t end = 0; mark == '\0' && (end = text.find('\n')) != kNowhere; text.remove_prefix(end + 1))
        if (const std::string_view line = text.substr(0, end);
            !is_remark(line) && split(line, separator, cells) && cells.size() == width)
            mark = decimal_mark_in(cells);
    return mark;
}

std::optional<double> number_in(std::string_view cell, char decimal) {
    const bool plain = !cell.empty() && (is_digit(cell.front()) || cell.front() == '-');
    if (!plain) cell = content(cell);
    if (cell.size() > 1 && cell.front() == '+' && cell[1] != '-') cell.remove_prefix(1);
    const char *const end = cell.data() + cell.size();
    double value = 0;
    const char *const rest = read_number(cell.data(), end, decimal, value);
    if (rest == nullptr) return {};
    if (rest != end && !(plain && trimmed({rest, static_cast<std::size_t>(end - rest)}).empty())) return {};
    return value;
}

bool has_thousands(std::string_view text) {
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);
    std::size_t digits = 0, groups = 0;
    while (digits < text.size() && is_digit(text[digits])) ++digits;
    if (digits < 1 || digits > 3) return false;
    text.remove_prefix(digits);
    for (std::size_t mark = 0; (mark = thousands_mark(text)) > 0; ++groups) {
        const std::string_view group = text.substr(mark, 3);
        const bool whole = group.size() == 3 && std::ranges::all_of(group, is_digit);
        if (!whole || (text.size() > mark + 3 && is_digit(text[mark + 3]))) break;
        text.remove_prefix(mark + 3);
    }
    if (groups > 0 && !text.empty() && (text.front() == '.' || text.front() == ',')) text.remove_prefix(1);
    return groups > 0 && std::ranges::all_of(text, is_digit);
}

bool is_remark(std::string_view line) {
    if (line.empty() || line.front() == '#' || line.starts_with("//")) return true;
    if (line.front() == '%') return line.size() == 1 || line[1] == ' ' || line[1] == '%';
    return (line.front() == ' ' || line.front() == '\t') && trimmed(line).empty();
}

}  // namespace cli
