// Tables of numbers as text (CSV).  Cells are found and read in place, so that all other text can be passed on unchanged.
#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "cli/data/input.h"
#include "cli/data/lines.h"
#include "cli/data/source.h"
#include "cli/data/time_cells.h"
#include "cli/data/units.h"
#include "cli/files/output.h"

namespace cli {

inline constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();
inline constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

// A column.  Its first cell that is not missing decides whether it holds numbers or text.
struct Column {
    std::size_t index = 0;  // from 0
    std::string name = {};  // from the header, or "column 3"
    enum Kind { Undecided, Numbers, Text } kind = Undecided;
    bool chosen = false;  // on the command line: then text is an error
};

enum class LineKind { Other, Header, Data };  // Other: comments and blank lines

class TableReader {
  public:
    TableReader(Source &source, InputOptions input);

    // Reads a line; false at the end, where a table without a row is refused.
    bool next();
    bool next_is_received() const { return lines_.next_is_received(); }

    LineKind kind() const { return kind_; }
    const Line &line() const { return line_; }
    std::size_t rows() const { return rows_; }
    char separator() const { return separator_; }
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

    // The row with new numbers in its cells; missing cells and text stay.
    void write_row(Output &out, const std::vector<double> &numbers) const;
    void write_line(Output &out) const;
    // The header with new names for these columns, of a table with `width` columns.
    void write_header(Output &out, const std::vector<std::size_t> &columns, std::size_t width,
                      const Rename &rename) const;
    [[noreturn]] void reject_cell(std::size_t index) const;

  private:
    struct Time {
        std::size_t index = kNone;
        TimeCells cells{{}, '.'};
    };

    void find_separator();
    void begin_rows();
    void split();
    bool looks_like_header() const;
    void read_header();
    void choose_columns();
    void choose(const std::string &wanted);
    std::size_t index_of(const std::string &wanted) const;
    std::string name_of(std::size_t index) const;
    void find_time();
    bool take_time(std::size_t index);
    bool is_left_alone(std::size_t index) const;
    void check_width() const;
    void read_row();

    LineReader lines_;
    Line line_;
    InputOptions input_;
    std::vector<std::string> names_;
    LineKind kind_ = LineKind::Other;
    char separator_ = '\0';  // '\0': not yet known, ' ': blanks
    std::size_t rows_ = 0, width_ = 0, width_line_ = 0;
    std::vector<std::string_view> cells_;
    std::vector<Column> columns_;
    std::vector<std::size_t> column_of_cell_;  // kNone: the cell is left alone
    std::vector<double> values_;
    Time time_;
    std::string time_doubt_;
};

}  // namespace cli
