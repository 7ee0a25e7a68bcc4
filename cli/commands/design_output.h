// The forms in which mensura design gives its result.
#pragma once

#include <string>
#include <vector>

#include "cli/app/design.h"
#include "cli/app/time_response.h"
#include "cli/files/output.h"
#include "cli/plot/figure.h"
#include "cli/plot/options.h"

namespace cli {

// What a family needs to meet --pass and --stop; no poles: it cannot.
struct FamilyOrder {
    int family, poles;
};
using FamilyOrders = std::vector<FamilyOrder>;

void print_text(Output &out, const Design &design, const FamilyOrders &orders);
void print_json(Output &out, const Design &design, const FamilyOrders &orders);
void print_families(Output &out, const std::vector<Design> &designs);  // a table, a line for each

void export_sections(Output &out, const Design &design);  // CSV
void export_c(Output &out, const Design &design);         // a header

// The response at `points` frequencies from 0 up: Hz, dB, degrees, s (CSV).
void print_response(Output &out, const Design &design, int points);

// The response to a step or an impulse: s, value (CSV).
void print_time_response(Output &out, const Design &design, Input input, int samples);

// Gain over frequency; of a single design its phase too, of several the surroundings of the edges.
Figure response_figure(const std::vector<Design> &designs, const PlotOptions &plot);
// Over so many samples; 0: until the slowest design has settled.
Figure time_figure(const std::vector<Design> &designs, Input input, std::size_t samples);
Figure root_figure(const Design &design);  // poles and zeros

}  // namespace cli
