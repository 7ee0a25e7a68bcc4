// Runs gnuplot, another program.
#pragma once

#include <string>

#include "cli/files/output.h"

namespace cli {

// Draws what the script says into `picture`.  Fails with gnuplot's reason, or if it is not installed.
void run_gnuplot(const std::string &script, Output &picture);

}  // namespace cli
