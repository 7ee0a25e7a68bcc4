#include "cli/table/columns.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "cli/table/cells.h"
#include "cli/table/units.h"
#include "cli/times/time_names.h"

namespace cli {

namespace {

bool is_bracketed(std::string_view text) {
    return text.size() > 2 &&
           ((text.front() == '[' && text.back() == ']') || (text.front() == '(' && text.back() == ')'));
}

// "1/min" is a unit although it begins like a number.
bool begins_like_number(std::string_view text) {
    return !text.empty() && !text.starts_with("1/") &&
           std::string_view("0123456789+-.,").find(text.front()) != std::string_view::npos && text != "-";
}

}  // namespace

std::vector<std::string> addresses_of(const std::vector<std::string> &names) {
    std::unordered_set<std::string> taken(names.begin(), names.end());
    std::unordered_map<std::string, std::size_t> count;
    std::vector<std::string> addresses;
    for (const std::string &name : names) {
        std::size_t &number = ++count[name];
        std::string address = name;
        while (number > 1 && !taken.insert(address = fmt::format("{}#{}", name, number)).second) ++number;
        addresses.push_back(address);
    }
    return addresses;
}

std::string unit_in_cell(std::string_view cell) {
    cell = content(cell);
    if (is_bracketed(cell)) cell = content(cell.substr(1, cell.size() - 2));
    return cell == "-" ? "" : std::string(cell);
}

std::string derivative_unit(std::string_view cell) {
    if (!is_bracketed(cell)) return cell.empty() ? "" : unit_per_second(cell);
    return fmt::format("{}{}{}", cell.front(), unit_per_second(unit_in_cell(cell)), cell.back());
}

std::string labelled(const std::string &name, const std::string &unit) {
    return unit.empty() ? name : fmt::format("{} [{}]", name, unit);
}

bool are_units(const std::vector<std::string_view> &cells) {
    bool known = false;
    for (const std::string_view cell : cells) {
        const std::string_view text = content(cell);
        if (begins_like_number(text) || (!text.empty() && is_missing(text))) return false;
        known = known || is_bracketed(text) || is_unit(text) || time_unit(text) > 0;
    }
    return known;
}

}  // namespace cli
