// Tables of numbers as text (CSV).  Cells are found and read in place, so that all other text can be passed on
// unchanged.
#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "cli/files/output.h"
#include "cli/input/input.h"
#include "cli/input/lines.h"
#include "cli/input/source.h"
#include "cli/table/columns.h"
#include "cli/table/units.h"
#include "cli/times/time_cells.h"

namespace cli {

inline constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

enum class LineKind { Other, Header, Units, Data };  // Other: comments and blank lines

// What happens to a cell that is not a number, or to a row that has not as many cells as the others.
enum class Faults {
    Refuse,
    Report  // the cell, or all cells of the row, are missing; unless InputOptions::strict
};

class TableReader {
  public:
    TableReader(Source &source, InputOptions input, Faults faults = Faults::Refuse);

    // Reads a line; false at the end, where a table without a row is refused.
    bool next();
    bool next_is_received() { return lines_.next_is_received(); }
    // Whether rows come from standard input, where each may have had its answer already.
    bool is_live() const { return rows_ > 0 && is_standard_input(input_.file); }

    LineKind kind() const { return kind_; }
    const Line &line() const { return line_; }
    std::size_t rows() const { return rows_; }
    char separator() const { return separator_; }
    char decimal() const { return decimal_; }  // '\0': no number has shown it yet
    std::size_t width() const { return width_; }
    // Known once the first row has been read.
    const std::vector<Column> &columns() const { return columns_; }
    // The row's numbers in the order of columns(): NaN where a cell is missing or its column is text.
    const std::vector<double> &values() const { return values_; }
    bool has_time() const { return time_.index != kNone; }
    // The row's time in seconds since the first; NaN if it is missing or no time.  Call it once for each row, in order.
    double time();
    [[noreturn]] void reject_time() const;
    std::size_t time_column() const { return time_.index + 1; }  // from 1
    std::string time_name() const;
    // Why a column that is called like a time is not taken for one; empty: there is none.
    const std::string &time_doubt() const { return time_doubt_; }

    // A number with the table's decimal mark.
    void write_number(Output &out, double number) const;
    // The row with new numbers in its cells; missing cells and text stay.
    void write_row(Output &out, const std::vector<double> &numbers) const;
    void write_line(Output &out) const;
    // The header, or the row of units, with new names for these columns, of a table with `width` columns.
    void write_header(Output &out, const std::vector<std::size_t> &columns, std::size_t width,
                      const Rename &rename) const;

  private:
    struct Time {
        std::size_t index = kNone;
        TimeCells cells{{}, '.'};
    };

    // table.cpp: line by line
    bool names_separator();
    bool read_plain_row();
    const char *read_plain_cell(std::size_t column, const char *first, const char *end);
    bool read_cells();
    void read_data();
    void read_values();
    bool read_other(Column &column);
    void pass_row();
    void fault(const std::string &what, std::size_t &count);
    void sum_up() const;
    std::string place(std::size_t index) const;
    std::string what_is_wrong_with(std::size_t index) const;
    std::string what_is_wrong_with_time() const;
    std::string wrong_width(std::size_t cells, std::size_t expected, std::size_t line) const;

    // table_begin.cpp: the first lines
    LineKind kind_of_line();
    LineKind kind_of_first_line();
    bool is_number(std::string_view cell) const;
    bool looks_like_header() const;
    bool is_torn();
    void settle_decimal();
    void begin_rows();
    void widen();
    void begin_columns();
    void find_time();
    bool take_time(std::size_t index);
    bool is_left_alone(std::size_t index) const;
    std::size_t index_of(const std::string &wanted) const;
    std::string name_of(std::size_t index) const;

    LineReader lines_;
    Line line_;
    std::string_view text_;  // of the line, without a byte-order mark
    InputOptions input_;
    Faults faults_;
    std::vector<std::string> names_, addresses_, units_;
    LineKind kind_ = LineKind::Other;
    char separator_ = '\0';  // '\0': not yet known, ' ': blanks
    char decimal_ = '\0';    // '\0': no number has shown it yet
    std::size_t rows_ = 0, width_ = 0, width_line_ = 0;
    std::vector<std::string_view> cells_;
    std::vector<Column> columns_;
    std::vector<std::size_t> column_of_cell_;  // kNone: the cell is left alone
    std::vector<double> values_;
    Time time_;
    std::string time_doubt_;
    std::size_t bad_cells_ = 0, bad_rows_ = 0;
};

}  // namespace cli
