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

// A dashed line across the panel, and what it means.
struct Mark {
    double at;
    std::string label = {};
    // Of a vertical line: to its left instead of its right, at the top instead of the bottom.
    bool label_before = false, label_on_top = false;
};

struct Label {
    double x, y;
    std::string text;  // above this point
};

// A shaded range of x, and what it means.
struct Shade {
    double from, to;
    std::string label;
};

// Values over a grid of equal cells, drawn in colours.
struct Image {
    std::size_t columns = 0, rows = 0;
    double x_from = 0, x_to = 1, y_from = 0, y_to = 1;  // the outer edges of the grid
    std::vector<double> values = {};                    // row by row, from the lowest y up
    std::string label = {};                             // what the colours mean
    std::optional<double> lowest = {}, highest = {};    // the ends of the colours; default: those of the values
};

struct Panel {
    std::string title = {}, x_label = {}, y_label = {};
    std::vector<Curve> curves = {};
    std::optional<Image> image = {};  // instead of curves
    std::vector<Mark> marks = {};     // vertical lines
    std::vector<Mark> levels = {};    // horizontal lines
    std::vector<Label> labels = {};
    std::vector<Shade> bands = {};
    bool logarithmic = false;    // the x axis
    bool y_logarithmic = false;  // what is not above 0 is not drawn
    bool no_key = false;         // the curves are those of the panel above
    bool key_below = false;      // the key at the bottom left instead of the top right
    bool square = false;         // one unit has the same length on both axes
    std::optional<double> y_lowest = {}, y_highest = {}, x_lowest = {}, x_highest = {};
    std::optional<double> y_step = {};  // between two labels
};

inline constexpr std::size_t kMostPanels = 6;  // more would be too small to read

struct Figure {
    std::string title = {};
    std::vector<Panel> panels = {};  // one below the other
};

}  // namespace cli
