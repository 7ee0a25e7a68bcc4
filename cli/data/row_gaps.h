// Missing rows, found by the column of times while rows come in.
#pragma once

#include <cstddef>
#include <string>

#include "cli/data/even_times.h"
#include "cli/data/gap_report.h"
#include "cli/data/input.h"
#include "cli/data/table.h"

namespace cli {

// What is missing before a row.
struct Hole {
    std::size_t rows = 0;
    bool is_long = false;  // longer than short_hole()
};

// Needs the same memory for any number of rows.  Learns the usual step from the first rows: a hole before the second is not
// seen.  Reports on stderr.
class RowGaps {
  public:
    RowGaps(TableReader &table, const InputOptions &input, const std::string &file);

    // Call it once for each row of data.  Under --gaps error a hole is refused.
    Hole next();
    // Cells of a column are missing from a line on, as many as make a long hole.
    void cells_missing(std::size_t line, const std::string &column, std::size_t cells);
    void finish();

    // That of the times, as far as they have come, or that of --rate; 0: neither is known.
    double rate() const;

    GapReport &report() { return report_; }

  private:
    Hole hole_within(const TimeStep &step);
    void say();
    void compare_rates();
    bool is_even();

    TableReader &table_;
    const InputOptions &input_;
    std::string file_;
    GapReport report_;
    TimeSteps steps_;
    Spacing spacing_;
    Places places_;
    std::size_t short_steps_ = 0;
    bool looking_ = true, compared_ = false;
};

// Says on stderr that the rate on the command line is not that of the times, if they differ by more than 1 %.
std::string rates_differ(const std::string &file, const std::string &column, double given, double found);
// The times of more than a tenth of the rows lie before those of the row before.
std::string does_not_increase(const std::string &file, const std::string &column);
// More than a twentieth of the steps are half of the usual one or less.
bool too_uneven(std::size_t short_steps, const TimeSteps &steps);
std::string not_even(const std::string &file, const std::string &column);
// Several rows have the same time.
std::string repeats(const std::string &file, const TimeSteps &steps, double rate);

}  // namespace cli
