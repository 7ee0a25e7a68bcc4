// What a user is told of missing rows and cells, and when they are too many.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/input/input.h"
#include "cli/times/even_times.h"

namespace cli {

constexpr std::size_t kMostHeld = 100000;  // samples that stand in for a hole: a filter has settled by then

// Samples that may be missing in a row without further ado: a tenth of a second or ten samples, whichever is more.  A
// rate of 0 is not known.
std::size_t short_hole(double rate);

// Refuses what is missing under --gaps error; else reports the first of the long holes, and counts the others.
class GapReport {
  public:
    GapReport(std::string file, const InputOptions &input)
        : file_(std::move(file)), policy_(input.gaps), stand_in_(input.stand_in) {}

    // Rows are missing within a step.
    void rows_missing(const TimeStep &step, std::size_t column, std::size_t rows, const Spacing &spacing, bool is_long);
    // The step is too short, or leads back.
    void short_step(const TimeStep &step, std::size_t column, const Spacing &spacing);
    void same_time(std::size_t line, std::size_t column);
    // Cells of a column are missing from a line on, which may be before its first number; a rate of 0 is not known.
    void cells_missing(std::size_t line, const std::string &column, std::size_t cells, double rate,
                       bool at_start = false);
    // Refuses a missing cell; nothing under other policies.
    void cell_missing(std::size_t line, std::size_t index, const std::string &column) const;

    // Adds what was counted only.
    void close();
    // What there is to say, which is said once.
    std::vector<std::string> take_lines();

  private:
    void add(std::size_t &count, const std::string &line);
    std::string remedy() const;

    std::string file_;
    GapPolicy policy_;
    std::string stand_in_;
    std::vector<std::string> lines_;
    std::size_t holes_ = 0, short_steps_ = 0, short_holes_ = 0, short_rows_ = 0;
};

}  // namespace cli
