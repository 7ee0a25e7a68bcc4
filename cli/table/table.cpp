#include "cli/table/table.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "cli/app/diagnostics.h"
#include "cli/app/number.h"
#include "cli/table/cells.h"
#include "cli/table/csv.h"
#include "cli/table/dialect.h"

namespace cli {

namespace {

constexpr std::string_view kBom = "\xEF\xBB\xBF";
constexpr std::size_t kMostReported = 10;  // faults that get a line each

std::string counted(std::size_t count, const char *one, const char *many) {
    return fmt::format("{} {}", count, count == 1 ? one : many);
}

const char *after_spaces(const char *at, const char *end) {
    while (at != end && *at == ' ') ++at;
    return at;
}

// Where a cell of text ends; nullptr: there is a quote or a tab in it, which may belong to it or end it.
const char *end_of_text(const char *at, const char *end, char separator) {
    for (; at != end && *at != separator; ++at)
        if (*at == '"' || *at == '\t') return nullptr;
    return at;
}

}  // namespace

TableReader::TableReader(Source &source, InputOptions input, Faults faults)
    : lines_(source), input_(std::move(input)), faults_(input_.strict ? Faults::Refuse : faults) {
    decimal_ = input_.decimal;
}

bool TableReader::next() {
    if (!lines_.next(line_)) {
        if (line_.number == 0) reject("{}: is empty; expected rows of numbers", lines_.name());
        if (rows_ == 0) reject("{}: has no row of numbers", lines_.name());
        sum_up();
        return false;
    }
    text_ = line_.text;
    if (line_.number == 1 && text_.starts_with(kBom)) text_.remove_prefix(kBom.size());
    kind_ = LineKind::Other;
    if (names_separator() || is_remark(text_)) return true;
    if (read_plain_row()) {
        kind_ = LineKind::Data;
        ++rows_;
        return true;
    }
    if (!read_cells()) return true;
    kind_ = rows_ == 0 ? kind_of_line() : LineKind::Data;
    if (kind_ == LineKind::Data) read_data();
    return true;
}

// "sep=;", with which spreadsheets begin a file.
bool TableReader::names_separator() {
    if (line_.number != 1 || text_.size() != 5 || lower(text_.substr(0, 4)) != "sep=") return false;
    if (std::string_view(";,\t ").find(text_.back()) == std::string_view::npos) return false;
    separator_ = text_.back();
    return true;
}

// Reads a row as most are, where a number tells by itself where its cell ends: no search for separators and quotes
// comes first.  False: it is another one, for read_cells() and read_data().
bool TableReader::read_plain_row() {
    if (rows_ == 0 || decimal_ == '\0' || decimal_ == separator_) return false;
    const bool at_blanks = separator_ == ' ';
    const char *at = text_.data(), *const end = at + text_.size();
    cells_.clear();
    for (std::size_t i = 0; i < width_; ++i) {
        if (i > 0 && !at_blanks && (at == end || *at++ != separator_)) return false;
        const char *const first = after_spaces(at, end), *const stop = read_plain_cell(column_of_cell_[i], first, end);
        if (stop == nullptr) return false;
        if (at_blanks && (stop == first || (stop != end && *stop != ' '))) return false;
        const char *const next = after_spaces(stop, end);
        cells_.push_back(at_blanks ? std::string_view(first, stop) : std::string_view(at, next));
        at = next;
    }
    return at == end;
}

// Returns where the cell's content ends; nullptr: it is neither a number nor empty nor plain text.
const char *TableReader::read_plain_cell(std::size_t column, const char *first, const char *end) {
    if (column == kNone) return end_of_text(first, end, separator_);
    values_[column] = kMissing;
    if (columns_[column].kind == Column::Text) return end_of_text(first, end, separator_);
    if (first == end || *first == separator_) return first;
    return columns_[column].kind == Column::Numbers ? read_number(first, end, decimal_, values_[column]) : nullptr;
}

// False if there are none to be read.
bool TableReader::read_cells() {
    const bool begun = separator_ != '\0';
    if (!begun) separator_ = separator_in(text_, decimal_);
    if (split(text_, separator_, cells_)) return true;
    if (!begun) separator_ = '\0';
    fault(place(cells_.size()) + "a quote is not closed on its line", bad_rows_);
    if (rows_ > 0) pass_row();
    return false;
}

void TableReader::read_data() {
    if (rows_ == 0) begin_rows();
    if (rows_ == 1 && names_.empty() && cells_.size() > width_ && faults_ == Faults::Report) widen();
    if (cells_.size() == width_) {
        if (decimal_ == '\0') settle_decimal();
        read_values();
        ++rows_;
        return;
    }
    fault(wrong_width(cells_.size(), width_, width_line_), bad_rows_);
    if (rows_ > 0)
        pass_row();
    else
        kind_ = LineKind::Other;
}

// A row that stays as it is: all its cells are missing.
void TableReader::pass_row() {
    kind_ = LineKind::Data;
    ++rows_;
    cells_.clear();
    std::ranges::fill(values_, kMissing);
}

void TableReader::read_values() {
    const char mark = decimal_ == ',' ? ',' : '.';
    bool numbers = false;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        Column &column = columns_[i];
        values_[i] = kMissing;
        if (column.kind == Column::Text) continue;
        if (const std::optional<double> number = number_in(cells_[column.index], mark)) {
            values_[i] = *number;
            column.kind = Column::Numbers;
            numbers = true;
        } else if (read_other(column)) {
            numbers = true;
        }
    }
    if (!numbers) reject("{}", what_is_wrong_with(columns_.front().index));
}

// A cell that is not a number; returns whether its column may hold numbers.
bool TableReader::read_other(Column &column) {
    const std::string_view cell = cells_[column.index];
    if (is_missing(cell)) return true;
    const bool nearly = number_in(cell, ',') || number_in(cell, '.') || has_thousands(content(cell));
    if (column.kind != Column::Numbers && !column.chosen && !nearly) {
        column.kind = Column::Text;
        return false;
    }
    fault(what_is_wrong_with(column.index), bad_cells_);
    return true;
}

void TableReader::fault(const std::string &what, std::size_t &count) {
    if (faults_ == Faults::Refuse) reject("{}", what);
    if (bad_cells_ + bad_rows_ < kMostReported) remark("{}; counts as missing", what);
    ++count;
}

void TableReader::sum_up() const {
    if (bad_cells_ + bad_rows_ == 0) return;
    std::string what;
    if (bad_cells_ > 0) what = counted(bad_cells_, "cell", "cells");
    if (bad_rows_ > 0) what += (what.empty() ? "" : " and ") + counted(bad_rows_, "row", "rows");
    remark("{}: {} could not be read: taken as missing", lines_.name(), what);
}

std::string TableReader::place(std::size_t index) const {
    return fmt::format("{}:{}:{}: ", lines_.name(), line_.number, index + 1);
}

std::string TableReader::wrong_width(std::size_t cells, std::size_t expected, std::size_t line) const {
    return fmt::format("{}has {} cells; expected {} as in line {}", place(std::min(cells, expected)), cells, expected,
                       line);
}

std::string TableReader::what_is_wrong_with(std::size_t index) const {
    const std::string_view cell = content(cells_[index]);
    const std::string column = index < names_.size() ? fmt::format(" (column {})", name_of(index)) : "";
    std::string result = fmt::format("{}\"{}\" ", place(index), cell.substr(0, 40));
    if (has_thousands(cell) && !(separator_ != ',' && number_in(cell, ',')))
        return result + fmt::format("has a separator between thousands{}; expected a number without", column);
    const bool other = number_in(cell, ',') || number_in(cell, '.');
    return result + fmt::format("is not a {}number{}; expected one{}, or an empty cell",
                                lower(cell).find("inf") != std::string::npos ? "finite " : "", column,
                                !other            ? ""
                                : decimal_ == ',' ? " with a decimal comma (--decimal)"
                                                  : " with a decimal point (--decimal)");
}

double TableReader::time() {
    if (cells_.empty()) return kMissing;
    const std::string_view cell = content(cells_[time_.index]);
    const std::optional<double> time = time_.cells.parse(cell);
    if (!time && faults_ == Faults::Report && !is_missing(cell)) fault(what_is_wrong_with_time(), bad_cells_);
    return time.value_or(kMissing);
}

std::string TableReader::what_is_wrong_with_time() const {
    if (cells_.empty() || is_missing(cells_[time_.index])) return place(time_.index) + "the time is missing";
    return fmt::format("{}\"{}\" is not a time like that of the first row (column {})", place(time_.index),
                       content(cells_[time_.index]).substr(0, 40), time_name());
}

void TableReader::reject_time() const { reject("{}", what_is_wrong_with_time()); }

void TableReader::write_number(Output &out, double number) const {
    const bool quoted = decimal_ == ',' && separator_ == ',';
    if (quoted) out.write("\"");
    out.number(number, decimal_ == ',' ? ',' : '.');
    if (quoted) out.write("\"");
}

void TableReader::write_row(Output &out, const std::vector<double> &numbers) const {
    const char *from = line_.text.data();
    for (std::size_t cell = 0; cell < cells_.size(); ++cell) {
        const std::size_t column = column_of_cell_[cell];
        if (column == kNone || std::isnan(values_[column])) continue;  // not chosen, missing, or text
        const std::string_view old = cells_[cell];
        out.write({from, static_cast<std::size_t>(old.data() - from)});
        write_number(out, numbers[column]);
        from = old.data() + old.size();
    }
    out.write({from, static_cast<std::size_t>(line_.text.data() + line_.text.size() - from)});
    out.write(line_.end);
}

void TableReader::write_header(Output &out, const std::vector<std::size_t> &columns, std::size_t width,
                               const Rename &rename) const {
    const char *from = line_.text.data(), *const end = from + line_.text.size();
    std::vector<std::string_view> names = cells_;
    if (width == 1) names = {{cells_[0].data(), static_cast<std::size_t>(end - cells_[0].data())}};  // with its blanks
    for (const std::size_t column : columns) {
        const std::string_view name = trimmed(names.at(column));
        out.write({from, static_cast<std::size_t>(name.data() - from)});
        out.write(cell_text(rename(name_in(name)), width == 1 ? ',' : separator_));
        from = name.data() + name.size();
    }
    out.write({from, static_cast<std::size_t>(end - from)});
    out.write(line_.end);
}

void TableReader::write_line(Output &out) const {
    out.write(line_.text);
    out.write(line_.end);
}

}  // namespace cli
