// A table that comes back with the estimates appended to each row.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "cli/commands/track_axis.h"
#include "cli/files/output.h"
#include "cli/table/columns.h"
#include "cli/table/table.h"

namespace cli {

// The estimates of a row, one for each column that is tracked.
using RowOfEstimates = std::vector<Estimate>;

// Refuses more columns than there is memory for.
void check_tracked_columns(std::size_t columns);

class EstimatesWriter {
  public:
    // `sigma`: the standard deviation of the position is written, too.
    EstimatesWriter(TableReader &table, const std::string &file, bool sigma)
        : table_(table), sigma_(sigma), out_(file) {}

    // `estimates` gives those of the row that was read last, in these columns of the table.
    using Estimates = std::function<const RowOfEstimates &(const std::vector<std::size_t> &columns)>;
    void run(const Estimates &estimates);

  private:
    void add_leading_line();
    void begin();
    std::string new_cell(std::size_t column, const char *suffix, std::size_t derivative) const;
    std::string new_unit(std::size_t column, std::size_t derivative) const;
    void write_row(const RowOfEstimates &row);
    void write_number(double value);

    TableReader &table_;
    bool sigma_, begun_ = false;
    Output out_;
    std::string leading_;
    std::size_t end_of_header_ = kNone, end_of_units_ = kNone;
    std::vector<std::size_t> tracked_;  // columns of numbers
};

}  // namespace cli
