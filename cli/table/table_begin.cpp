// The first lines of a table: its header, units, columns and dialect.
#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <string>

#include "cli/app/diagnostics.h"
#include "cli/app/number.h"
#include "cli/table/cells.h"
#include "cli/table/dialect.h"
#include "cli/table/table.h"
#include "cli/times/time_names.h"

namespace cli {

// Of a line before the first row.
LineKind TableReader::kind_of_line() {
    if (width_ == 0) return kind_of_first_line();
    const bool below_header = !names_.empty() && line_.number == width_line_ + 1;
    if (!below_header || cells_.size() != width_ || !are_units(cells_)) return LineKind::Data;
    for (const std::string_view cell : cells_) units_.push_back(unit_in_cell(cell));
    return LineKind::Units;
}

LineKind TableReader::kind_of_first_line() {
    if (looks_like_header()) {
        for (const std::string_view cell : cells_) names_.push_back(name_in(cell));
    } else if (is_torn()) {
        separator_ = '\0';
        return LineKind::Other;
    }
    width_ = cells_.size();
    width_line_ = line_.number;
    return names_.empty() ? LineKind::Data : LineKind::Header;
}

bool TableReader::is_number(std::string_view cell) const {
    if (decimal_ != '\0') return number_in(cell, decimal_).has_value();
    return number_in(cell, '.') || (separator_ != ',' && number_in(cell, ','));
}

// Text and not a single number.
bool TableReader::looks_like_header() const {
    return std::ranges::none_of(cells_, [this](std::string_view cell) { return is_number(cell); }) &&
           !std::ranges::all_of(cells_, is_missing);
}

// Whoever listens to a logger that runs may get the end of a row first: fewer cells than the next row has.
bool TableReader::is_torn() {
    if (faults_ == Faults::Refuse || !lines_.next_is_received()) return false;
    const std::string_view received = lines_.received(), line = received.substr(0, received.find('\n'));
    std::vector<std::string_view> cells;
    if (is_remark(line) || !split(line, separator_in(line, decimal_), cells) || cells.size() <= cells_.size())
        return false;
    fault(wrong_width(cells_.size(), cells.size(), line_.number + 1), bad_rows_);
    return true;
}

// The first number that shows the decimal mark settles it, be it in a line to come that has been received.
void TableReader::settle_decimal() {
    if (separator_ == ',') {
        decimal_ = '.';
        return;
    }
    decimal_ = decimal_mark_in(cells_);
    if (rows_ == 0 && decimal_ == '\0') decimal_ = decimal_mark_in(lines_.received(), separator_, width_);
    if (rows_ > 0 && decimal_ == ',')
        remark("{}:{}: the first number with a decimal comma; --decimal , tells so from the first row on",
               lines_.name(), line_.number);
}

void TableReader::begin_rows() {
    if (separator_ == ' ' && names_.size() > 1 && cells_.size() == 1) {  // one column, whose name has blanks in it
        std::string name;
        for (const std::string &word : names_) name += (name.empty() ? "" : " ") + word;
        names_ = {name};
        width_ = 1;
    }
    if (cells_.size() == width_) begin_columns();
}

// The first row was the end of one, which the second shows.
void TableReader::widen() {
    fault(fmt::format("{}has {} cells, line {} has {}: that was the end of a row", place(width_), cells_.size(),
                      width_line_, width_),
          bad_rows_);
    width_ = cells_.size();
    width_line_ = line_.number;
    columns_.clear();
    time_ = {};
    begin_columns();
}

void TableReader::begin_columns() {
    addresses_ = addresses_of(names_);
    find_time();
    for (const std::string &wanted : input_.columns) {
        const std::size_t index = index_of(wanted);
        if (std::ranges::find(columns_, index, &Column::index) == columns_.end())
            columns_.push_back({.index = index, .chosen = true});
    }
    for (std::size_t i = 0; i < width_ && input_.columns.empty(); ++i)
        if (!is_left_alone(i)) columns_.push_back({.index = i});
    if (columns_.empty()) reject("{}:{}: the only column is the time", lines_.name(), line_.number);
    column_of_cell_.assign(width_, kNone);
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        Column &column = columns_[i];
        column.name = name_of(column.index);
        if (column.index < units_.size()) column.unit = units_[column.index];
        column_of_cell_[column.index] = i;
    }
    values_.resize(columns_.size());
}

void TableReader::find_time() {
    if (!input_.time.empty()) {
        const std::size_t index = index_of(input_.time);
        if (!take_time(index))
            reject("{}--time {}: no time of a form that is known{}{}", place(index), input_.time,
                   time_doubt_.empty() ? "" : "; ", time_doubt_);
        return;
    }
    for (const std::size_t index : time_columns(names_))
        if (take_time(index)) return;
}

// A column called like a time is one if its first cell is.
bool TableReader::take_time(std::size_t index) {
    TimeName name = index < names_.size() ? cli::time_name(names_[index]).value_or(TimeName{}) : TimeName{};
    if (name.unit == 0 && index < units_.size()) name.unit = time_unit(units_[index]);
    TimeCells cells(name, input_.decimal);
    const std::string_view cell = content(cells_[index]);
    if (!is_missing(cell) && !cells.parse(cell)) {
        if (!cells.doubt().empty() && time_doubt_.empty()) time_doubt_ = place(index) + cells.doubt();
        return false;
    }
    time_ = {index, cells};
    time_doubt_.clear();
    return true;
}

// Times are no data unless they are asked for.
bool TableReader::is_left_alone(std::size_t index) const {
    return index == time_.index || (index < names_.size() && cli::time_name(names_[index]));
}

std::string TableReader::name_of(std::size_t index) const {
    return index < names_.size() && !names_[index].empty() ? addresses_[index] : fmt::format("column {}", index + 1);
}

std::string TableReader::time_name() const { return name_of(time_.index); }

std::size_t TableReader::index_of(const std::string &wanted) const {
    const auto index = static_cast<std::size_t>(std::ranges::find(addresses_, wanted) - addresses_.begin());
    if (index < addresses_.size()) return index;
    const std::optional<double> number = parse_number(wanted);
    const bool whole = number && *number >= 1 && *number <= static_cast<double>(width_) &&
                       *number == static_cast<double>(static_cast<std::size_t>(*number));
    if (!whole) {
        std::string names;
        for (const std::string &name : addresses_) names += (names.empty() ? ": " : ", ") + name;
        reject("{}: no column \"{}\"; it has the columns 1 to {}{}", lines_.name(), wanted, width_, names);
    }
    return static_cast<std::size_t>(*number) - 1;
}

}  // namespace cli
