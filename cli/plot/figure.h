// What a picture shows, and the gnuplot program that draws it.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace cli {

struct Curve {
    std::string title = {};
    std::vector<double> x = {}, y = {};
    bool points = false;  // dots instead of a line
};

struct Panel {
    std::string title = {}, x_label = {}, y_label = {};
    std::vector<Curve> curves = {};
    std::vector<double> marks = {};  // dashed vertical lines at these x
    bool logarithmic = false;        // the x axis
    bool key_below = false;          // the key at the bottom left instead of the top right
    bool square = false;             // one unit has the same length on both axes
    std::optional<double> y_lowest = {}, x_lowest = {}, x_highest = {};
};

inline constexpr std::size_t kMostPanels = 6;  // that are still readable

struct Figure {
    std::string title = {};
    std::vector<Panel> panels = {};  // one below the other
};

// Without curves that have no point, and panels that have no curve: gnuplot takes them for errors.
Figure drawable(Figure figure);

// Commands and inline data; draws with whatever terminal is set before.
std::string gnuplot_script(const Figure &figure, bool grid);

// A long record as its minimum and maximum per pixel column, in bounded memory.
class Envelope {
  public:
    void add(double value);
    // A curve over time, or over the sample's number if the rate is 0.
    Curve curve(const std::string &title, double rate) const;

  private:
    struct Bucket {
        double low, high;
        bool low_first;
    };
    void merge_pairs();

    static constexpr std::size_t kCapacity = 1600;  // a picture has no more than half as many columns
    std::vector<Bucket> buckets_;
    std::size_t stride_ = 1, filled_ = 0;  // samples in a bucket, and in the last one
};

}  // namespace cli
