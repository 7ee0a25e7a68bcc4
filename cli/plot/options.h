// --plot and --plot-script.
#pragma once

#include <cstddef>
#include <string>

#include "cli/app/command_line.h"

namespace cli {

struct PlotOptions {
    enum Kind { None, File, Terminal, Script } kind = None;
    std::string file = {};
    enum Axis { Automatic, Linear, Logarithmic } axis = Automatic;  // of frequencies

    bool wanted() const { return kind != None; }
    // The drawing takes the place of the data on standard output.
    bool on_standard_output() const { return kind == Terminal || kind == Script; }
    bool is_page() const;  // HTML, which can be zoomed
    bool logarithmic(bool otherwise) const { return axis == Automatic ? otherwise : axis == Logarithmic; }
    // Of a curve: a picture has half as many pixel columns; pages show more when they are zoomed.
    std::size_t columns() const { return is_page() ? 100'000 : 1600; }
};

inline constexpr const char *kPlotInTerminal = "terminal";  // what a plain --plot stands for

void add_plot_options(const Command &app, PlotOptions &plot);
void add_axis_option(const Command &app, PlotOptions &plot);  // --axis
void check_axis(const PlotOptions &plot);                     // refuses it where nothing is drawn

// Whether a file's name ends like a picture's.
bool is_picture(const std::string &file);

// The part of a file's name after its last dot, in lower case.
std::string suffix_of(const std::string &file);

// Where the data go: nowhere when the drawing takes their place.
std::string data_file(const PlotOptions &plot, const std::string &output);

}  // namespace cli
