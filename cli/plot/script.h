// The gnuplot script that draws a figure.
#pragma once

#include <string>

#include "cli/plot/figure.h"

namespace cli {

// Without curves that have no point, and panels that have no curve: gnuplot takes them for errors.
Figure drawable(Figure figure);

bool has_image(const Figure &figure);

// Commands and inline data; draws with whatever terminal is set before.
std::string gnuplot_script(const Figure &figure, bool grid);

}  // namespace cli
