// The forms in which mensura design gives its result.
#pragma once

#include <vector>

#include "cli/app/design.h"
#include "cli/files/output.h"
#include "cli/plot/figure.h"

namespace cli {

void print_text(Output &out, const Design &design);
void print_json(Output &out, const Design &design);
void print_families(Output &out, const std::vector<Design> &designs);  // a table, a line for each

// The response at `points` frequencies from 0 up: Hz, dB, degrees (CSV).
void print_response(Output &out, const Design &design, int points);

// Gain over frequency, and the phase of a single design.
Figure figure_of(const std::vector<Design> &designs);

}  // namespace cli
