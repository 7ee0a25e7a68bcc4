#include "cli/table/cells.h"

#include <algorithm>
#include <cstddef>

#include "cli/app/number.h"

namespace cli {

namespace {

constexpr auto kNowhere = std::string_view::npos;

// Where the quoted content of a cell ends: at its last quote.  A doubled quote stands for one.
std::size_t closing_quote(std::string_view text, std::size_t opening) {
    std::size_t at = text.find('"', opening + 1);
    while (at != kNowhere && at + 1 < text.size() && text[at + 1] == '"') at = text.find('"', at + 2);
    return at;
}

void split_at_blanks(std::string_view line, std::vector<std::string_view> &cells) {
    for (std::size_t at = 0;;) {
        while (at < line.size() && is_blank(line[at])) ++at;
        if (at == line.size()) return;
        const std::size_t start = at;
        while (at < line.size() && !is_blank(line[at])) ++at;
        cells.push_back(line.substr(start, at - start));
    }
}

void split_at(char separator, std::string_view line, std::vector<std::string_view> &cells) {
    for (std::size_t end = 0; (end = line.find(separator)) != kNowhere; line.remove_prefix(end + 1))
        cells.push_back(line.substr(0, end));
    cells.push_back(line);
}

bool split_quoted(std::string_view line, char separator, std::vector<std::string_view> &cells) {
    for (bool more = true; more;) {
        const std::size_t start = line.find_first_not_of(" \t");
        if (separator == ' ') {
            if (start == kNowhere) break;
            line.remove_prefix(start);
        }
        const std::size_t first = separator == ' ' ? 0 : start;
        std::size_t from = 0;
        if (first != kNowhere && line[first] == '"') from = closing_quote(line, first);
        if (from == kNowhere) return false;
        const std::size_t length = separator == ' ' ? line.find_first_of(" \t", from) : line.find(separator, from);
        cells.push_back(line.substr(0, length));
        more = length != kNowhere;
        if (more) line.remove_prefix(length + 1);
    }
    return true;
}

}  // namespace

bool split(std::string_view line, char separator, std::vector<std::string_view> &cells) {
    cells.clear();
    if (line.find('"') != kNowhere) return split_quoted(line, separator, cells);
    if (separator == ' ')
        split_at_blanks(line, cells);
    else
        split_at(separator, line, cells);
    return true;
}

std::string_view content(std::string_view cell) {
    cell = trimmed(cell);
    if (cell.size() >= 2 && cell.front() == '"' && cell.back() == '"') cell = trimmed(cell.substr(1, cell.size() - 2));
    return cell;
}

bool is_missing(std::string_view cell) {
    constexpr std::string_view kWords[] = {"nan", "-nan", "+nan", "na", "n/a"};
    cell = content(cell);
    return cell.empty() || (cell.size() <= 4 && std::ranges::find(kWords, lower(cell)) != std::ranges::end(kWords));
}

std::string name_in(std::string_view cell) {
    std::string name(content(cell));
    if (trimmed(cell).starts_with('"'))
        for (std::size_t at = 0; (at = name.find("\"\"", at)) != std::string::npos; ++at) name.erase(at, 1);
    return name;
}

}  // namespace cli
