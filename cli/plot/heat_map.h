// Amplitudes over time and frequency as an image of bounded size.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/plot/figure.h"

namespace cli {

// Keeps the largest amplitude of each cell; cells grow as columns come.
class HeatMap {
  public:
    // `column` never decreases; `amplitudes` has the same length each time.
    void add(std::size_t column, const std::vector<double> &amplitudes);
    // In decibels, the lowest kDepth below the highest.  The widths are those of what add() is given.
    Image decibels(double x_from, double column_width, double y_from, double row_width, const std::string &label) const;

  private:
    static constexpr std::size_t kMostColumns = 800, kMostRows = 400;
    static constexpr double kDepth = 100;  // dB
    void merge_pairs();

    std::size_t stride_ = 1, group_ = 1, rows_ = 0;  // columns and rows in a cell; rows of cells
    std::vector<std::vector<double>> columns_;       // NaN: nothing was added there
};

}  // namespace cli
