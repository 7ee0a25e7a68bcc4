// The column of times of a whole record: its rate and its holes.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/input/input.h"
#include "cli/table/table.h"
#include "cli/times/even_times.h"
#include "cli/times/gap_report.h"

namespace cli {

// Rows that are missing before a row (from 0).
struct MissingRows {
    std::size_t row = 0, count = 0;
};

class RecordTimes {
  public:
    RecordTimes(std::string file, const InputOptions &input) : file_(std::move(file)), input_(input) {}

    // Takes the time of each row of data.
    void add(TableReader &table);
    // Makes room for the times of so many rows, once the first has been taken.
    void reserve(std::size_t rows) { steps_.reserve(number_ == 0 ? 0 : rows); }
    // The sampling rate: that of --rate, else that of the times; 0: there is none, for which doubt() may have the
    // reason.
    double rate();
    const std::string &doubt() const { return doubt_; }
    // What is missing; says so in the report.
    std::vector<MissingRows> holes(GapReport &report, double rate) const;
    // What else there is to say of the times.
    const std::vector<std::string> &remarks() const { return remarks_; }

  private:
    double rate_of_times();
    std::string fault() const;

    std::string file_;
    const InputOptions &input_;
    std::string column_;
    std::size_t number_ = 0;  // of the column, from 1; 0: there is none
    TimeSteps maker_;
    std::vector<TimeStep> steps_;
    Spacing spacing_;
    bool used_ = false;
    std::string doubt_;
    std::vector<std::string> remarks_;
};

}  // namespace cli
