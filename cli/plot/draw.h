// A figure as a picture, as a drawing in the terminal, or as the script that draws it.
#pragma once

#include "cli/plot/figure.h"
#include "cli/plot/options.h"

namespace cli {

// A picture's file appears when it is complete.
void draw(const Figure &figure, const PlotOptions &plot);

}  // namespace cli
