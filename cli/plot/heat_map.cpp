#include "cli/plot/heat_map.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace cli {

namespace {

constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();

}  // namespace

void HeatMap::add(std::size_t column, const std::vector<double> &amplitudes) {
    group_ = (amplitudes.size() + kMostRows - 1) / kMostRows;
    rows_ = (amplitudes.size() + group_ - 1) / group_;
    while (column / stride_ >= kMostColumns) merge_pairs();
    if (columns_.size() <= column / stride_) columns_.resize(column / stride_ + 1, std::vector(rows_, kNothing));
    std::vector<double> &cells = columns_[column / stride_];
    for (std::size_t i = 0; i < amplitudes.size(); ++i) cells[i / group_] = std::fmax(cells[i / group_], amplitudes[i]);
}

void HeatMap::merge_pairs() {
    columns_.resize((columns_.size() + 1) / 2 * 2, std::vector(rows_, kNothing));
    for (std::size_t i = 0; i < columns_.size() / 2; ++i)
        for (std::size_t k = 0; k < rows_; ++k) columns_[i][k] = std::fmax(columns_[2 * i][k], columns_[2 * i + 1][k]);
    columns_.resize(columns_.size() / 2);
    stride_ *= 2;
}

Image HeatMap::decibels(double x_from, double column_width, double y_from, double row_width,
                        const std::string &label) const {
    Image image{.columns = columns_.size(), .rows = rows_, .x_from = x_from, .y_from = y_from, .label = label};
    image.x_to = x_from + column_width * static_cast<double>(stride_ * columns_.size());
    image.y_to = y_from + row_width * static_cast<double>(group_ * rows_);
    double highest = -std::numeric_limits<double>::infinity();
    for (std::size_t row = 0; row < rows_; ++row)
        for (const std::vector<double> &column : columns_) {
            image.values.push_back(20 * std::log10(column[row]));
            if (std::isfinite(image.values.back())) highest = std::max(highest, image.values.back());
        }
    if (!std::isfinite(highest)) highest = 0;  // silence
    image.lowest = highest - kDepth;
    image.highest = highest;
    for (double &value : image.values)
        if (value < *image.lowest) value = *image.lowest;
    return image;
}

}  // namespace cli
