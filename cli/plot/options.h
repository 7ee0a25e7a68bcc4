// --plot and --plot-script.
#pragma once

#include <string>

#include "cli/app/command_line.h"

namespace cli {

struct PlotOptions {
    enum Kind { None, File, Terminal, Script } kind = None;
    std::string file = {};

    bool wanted() const { return kind != None; }
    // The drawing takes the place of the data on standard output.
    bool on_standard_output() const { return kind == Terminal || kind == Script; }
};

inline constexpr const char *kPlotInTerminal = "terminal";  // what a plain --plot stands for

void add_plot_options(const Command &app, PlotOptions &plot);

// Whether a file's name ends like a picture's.
bool is_picture(const std::string &file);

// The part of a file's name after its last dot, in lower case.
std::string suffix_of(const std::string &file);

// Where the data go: nowhere when the drawing takes their place.
std::string data_file(const PlotOptions &plot, const std::string &output);

}  // namespace cli
