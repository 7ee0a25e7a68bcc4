// Missing rows, found by the column of times while rows come in.
#pragma once

#include <cstddef>
#include <string>

#include "cli/input/input.h"
#include "cli/table/table.h"
#include "cli/times/even_times.h"
#include "cli/times/gap_report.h"

namespace cli {

// What is missing before a row.
struct Hole {
    std::size_t rows = 0;
    bool is_long = false;  // longer than short_hole()
};

// Needs the same memory for any number of rows.  Learns the usual step from the first rows: a hole before the second is
// not seen.  Reports on stderr.
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

// Whether more than a twentieth of the steps are half of the usual one or less.
bool too_uneven(std::size_t short_steps, const TimeSteps &steps);

// Lines for stderr.  Of a rate on the command line that differs from that of the times by more than 1 %, else empty:
std::string rates_differ(const std::string &file, const std::string &column, double given, double found);
// of times that fall more often than in a tenth of the rows,
std::string does_not_increase(const std::string &file, const std::string &column);
// of uneven ones,
std::string not_even(const std::string &file, const std::string &column);
// of rows that have the same time, else empty.
std::string repeats(const std::string &file, const TimeSteps &steps, double rate);

}  // namespace cli
