// The options of spectra and data windows.
#pragma once

#include "cli/app/command_line.h"
#include "cli/data/spectrum.h"
#include "cli/data/window.h"

namespace cli {

void add_window_shape(const Command &app, Window &window);  // --alpha and --beta
void add_spectrum_options(const Command &app, SpectrumOptions &options);

}  // namespace cli
