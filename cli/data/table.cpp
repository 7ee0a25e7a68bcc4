#include "cli/data/table.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "cli/app/diagnostics.h"
#include "cli/app/number.h"
#include "cli/data/csv.h"
#include "cli/data/time_names.h"

namespace cli {

namespace {

constexpr std::string_view kBom = "\xEF\xBB\xBF";

// A cell's content: without blanks and without the quotes around it.
std::string_view content(std::string_view cell) {
    cell = trimmed(cell);
    if (cell.size() >= 2 && cell.front() == '"' && cell.back() == '"') cell = trimmed(cell.substr(1, cell.size() - 2));
    return cell;
}

bool is_missing(std::string_view cell) {
    const std::string text = lower(content(cell).substr(0, 5));
    return text.empty() || text == "nan" || text == "-nan" || text == "+nan" || text == "na" || text == "n/a";
}

// The name in a cell; in a quoted cell, two quotes stand for one.
std::string name_in(std::string_view cell) {
    std::string name(content(cell));
    if (trimmed(cell).starts_with('"'))
        for (std::size_t at = 0; (at = name.find("\"\"", at)) != std::string::npos; ++at) name.erase(at, 1);
    return name;
}

bool has_decimal_comma(std::string_view cell) {
    std::string text(content(cell));
    std::ranges::replace(text, ',', '.');
    return text != content(cell) && parse_number(text);
}

}  // namespace

TableReader::TableReader(Source &source, InputOptions input) : lines_(source), input_(std::move(input)) {}

bool TableReader::next() {
    if (!lines_.next(line_)) {
        if (line_.number == 0) reject("{}: is empty; expected rows of numbers", lines_.name());
        if (rows_ == 0) reject("{}: has no row of numbers", lines_.name());
        return false;
    }
    std::string_view text = line_.text;
    if (line_.number == 1 && text.starts_with(kBom)) text.remove_prefix(kBom.size());
    if (trimmed(text).empty() || text.front() == '#') {
        kind_ = LineKind::Other;
        return true;
    }
    if (separator_ == '\0') find_separator();
    split();
    const bool first = width_ == 0;
    if (first) {
        width_ = cells_.size();
        width_line_ = line_.number;
        kind_ = looks_like_header() ? LineKind::Header : LineKind::Data;
        if (kind_ == LineKind::Header) read_header();
    } else {
        kind_ = LineKind::Data;
    }
    if (kind_ == LineKind::Data) {
        if (rows_ == 0) begin_rows();
        read_row();
    }
    return true;
}

// The first of tab, semicolon and comma that the first line holds outside of quotes; else blanks.
void TableReader::find_separator() {
    std::string plain;
    bool quoted = false;
    for (const char c : line_.text) {
        quoted = quoted != (c == '"');
        if (!quoted) plain += c;
    }
    separator_ = ' ';
    for (const char candidate : {'\t', ';', ','})
        if (plain.find(candidate) != std::string::npos) {
            separator_ = candidate;
            return;
        }
}

void TableReader::split() {
    cells_.clear();
    std::string_view rest = line_.text;
    if (line_.number == 1 && rest.starts_with(kBom)) rest.remove_prefix(kBom.size());
    for (bool more = true; more;) {
        if (separator_ == ' ') {
            const std::size_t start = rest.find_first_not_of(" \t");
            if (start == std::string_view::npos) break;
            rest.remove_prefix(start);
        }
        std::size_t from = 0;
        const std::size_t quote = rest.find_first_not_of(" \t");
        if (quote != std::string_view::npos && rest[quote] == '"') {
            from = rest.find('"', quote + 1);
            while (from != std::string_view::npos && from + 1 < rest.size() && rest[from + 1] == '"')
                from = rest.find('"', from + 2);  // a doubled quote stands for one
            if (from == std::string_view::npos)
                reject("{}:{}:{}: a quote is not closed on its line", lines_.name(), line_.number, cells_.size() + 1);
        }
        const std::size_t length = separator_ == ' ' ? rest.find_first_of(" \t", from) : rest.find(separator_, from);
        cells_.push_back(rest.substr(0, length));
        more = length != std::string_view::npos;
        if (more) rest.remove_prefix(length + 1);
    }
}

// Text and not a single number.
bool TableReader::looks_like_header() const {
    bool text = false;
    for (const std::string_view cell : cells_) {
        if (parse_number(content(cell))) return false;
        text = text || !is_missing(cell);
    }
    return text;
}

void TableReader::read_header() {
    for (const std::string_view cell : cells_) names_.push_back(name_in(cell));
}

void TableReader::begin_rows() {
    if (separator_ == ' ' && names_.size() > 1 && cells_.size() == 1) {  // one column, whose name has blanks in it
        std::string name;
        for (const std::string &word : names_) name += (name.empty() ? "" : " ") + word;
        names_ = {name};
        width_ = 1;
    }
    check_width();
    find_time();
    choose_columns();
}

void TableReader::find_time() {
    if (!input_.time.empty()) {
        const std::size_t index = index_of(input_.time);
        if (!take_time(index))
            reject("{}:{}:{}: --time {}: no time of a form that is known{}{}", lines_.name(), line_.number, index + 1,
                   input_.time, time_doubt_.empty() ? "" : "; ", time_doubt_);
        return;
    }
    for (const std::size_t index : time_columns(names_))
        if (take_time(index)) return;
}

// A column called like a time is one if its first cell is.
bool TableReader::take_time(std::size_t index) {
    const TimeName name = index < names_.size() ? cli::time_name(names_[index]).value_or(TimeName{}) : TimeName{};
    TimeCells cells(name, input_.decimal);
    const std::string_view cell = content(cells_[index]);
    if (!is_missing(cell) && !cells.parse(cell)) {
        if (!cells.doubt().empty() && time_doubt_.empty())
            time_doubt_ = fmt::format("{}:{}:{}: {}", lines_.name(), line_.number, index + 1, cells.doubt());
        return false;
    }
    time_ = {index, cells};
    time_doubt_.clear();
    return true;
}

// Times, and the dates beside them, are no data unless they are asked for.
bool TableReader::is_left_alone(std::size_t index) const {
    if (index == time_.index || !has_time() || index >= names_.size()) return index == time_.index;
    const std::optional<TimeName> name = cli::time_name(names_[index]);
    return name && name->date;
}

std::string TableReader::name_of(std::size_t index) const {
    return index < names_.size() && !names_[index].empty() ? names_[index] : fmt::format("column {}", index + 1);
}

std::string TableReader::time_name() const { return name_of(time_.index); }

void TableReader::choose_columns() {
    for (const std::string &wanted : input_.columns) choose(wanted);
    for (std::size_t i = 0; i < width_ && input_.columns.empty(); ++i)
        if (!is_left_alone(i)) columns_.push_back({.index = i});
    for (Column &column : columns_) column.name = name_of(column.index);
    if (columns_.empty()) reject("{}:{}: the only column is the time", lines_.name(), line_.number);
    column_of_cell_.assign(width_, kNone);
    for (std::size_t i = 0; i < columns_.size(); ++i) column_of_cell_[columns_[i].index] = i;
    values_.resize(columns_.size());
}

std::size_t TableReader::index_of(const std::string &wanted) const {
    const auto index = static_cast<std::size_t>(std::ranges::find(names_, wanted) - names_.begin());
    if (index < names_.size()) return index;
    const std::optional<double> number = parse_number(wanted);
    const bool whole = number && *number >= 1 && *number <= static_cast<double>(width_) &&
                       *number == static_cast<double>(static_cast<std::size_t>(*number));
    if (!whole) {
        std::string names;
        for (const std::string &name : names_) names += (names.empty() ? ": " : ", ") + name;
        reject("{}: no column \"{}\"; it has the columns 1 to {}{}", lines_.name(), wanted, width_, names);
    }
    return static_cast<std::size_t>(*number) - 1;
}

void TableReader::choose(const std::string &wanted) {
    const std::size_t index = index_of(wanted);
    const auto same = [index](const Column &column) { return column.index == index; };
    if (std::ranges::none_of(columns_, same)) columns_.push_back({.index = index, .chosen = true});
}

void TableReader::check_width() const {
    if (cells_.size() != width_)
        reject("{}:{}:{}: has {} cells; expected {} as in line {}", lines_.name(), line_.number,
               std::min(cells_.size(), width_) + 1, cells_.size(), width_, width_line_);
}

void TableReader::read_row() {
    check_width();
    bool numbers = false;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        Column &column = columns_[i];
        const std::string_view cell = cells_[column.index];
        values_[i] = kMissing;
        if (column.kind == Column::Text) continue;
        if (const std::optional<double> number = parse_number(content(cell))) {
            values_[i] = *number;
            column.kind = Column::Numbers;
        } else if (!is_missing(cell)) {
            if (column.kind == Column::Numbers || column.chosen || has_decimal_comma(cell)) reject_cell(column.index);
            column.kind = Column::Text;
        }
        numbers = numbers || column.kind != Column::Text;
    }
    if (!numbers) reject_cell(columns_.front().index);
    ++rows_;
}

void TableReader::reject_cell(std::size_t index) const {
    const std::string_view cell = content(cells_[index]);
    const bool comma = separator_ != ',' && cell.find(',') != std::string_view::npos;
    reject("{}:{}:{}: \"{}\" is not a {}number{}; expected one{}, or an empty cell", lines_.name(), line_.number,
           index + 1, cell.substr(0, 40), lower(cell).find("inf") != std::string::npos ? "finite " : "",
           index < names_.size() ? fmt::format(" (column {})", names_[index]) : "",
           comma ? " with a decimal point" : "");
}

double TableReader::time() { return time_.cells.parse(content(cells_[time_.index])).value_or(kMissing); }

void TableReader::reject_time() const {
    const std::string_view cell = content(cells_[time_.index]);
    if (is_missing(cell)) reject("{}:{}:{}: the time is missing", lines_.name(), line_.number, time_column());
    reject("{}:{}:{}: \"{}\" is not a time like that of the first row (column {})", lines_.name(), line_.number,
           time_column(), cell.substr(0, 40), time_name());
}

void TableReader::write_row(Output &out, const std::vector<double> &numbers) const {
    const char *from = line_.text.data();
    for (std::size_t cell = 0; cell < cells_.size(); ++cell) {
        const std::size_t column = column_of_cell_[cell];
        if (column == kNone || std::isnan(values_[column])) continue;  // not chosen, missing, or text
        const std::string_view old = cells_[cell];
        out.write({from, static_cast<std::size_t>(old.data() - from)});
        out.number(numbers[column]);
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
