// What a picture shows.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace cli {

struct Curve {
    std::string title = {};
    std::vector<double> x = {}, y = {};
    bool points = false;   // circles instead of a line
    bool crosses = false;  // crosses instead of a line
};

struct Panel {
    std::string title = {}, x_label = {}, y_label = {};
    std::vector<Curve> curves = {};
    std::vector<double> marks = {};   // dashed vertical lines at these x
    std::vector<double> levels = {};  // dashed horizontal lines at these y
    bool logarithmic = false;         // the x axis
    bool key_below = false;           // the key at the bottom left instead of the top right
    bool square = false;              // one unit has the same length on both axes
    std::optional<double> y_lowest = {}, y_highest = {}, x_lowest = {}, x_highest = {};
    std::optional<double> y_step = {};  // between two labels
};

inline constexpr std::size_t kMostPanels = 6;  // more would be too small to read

struct Figure {
    std::string title = {};
    std::vector<Panel> panels = {};  // one below the other
};

}  // namespace cli
