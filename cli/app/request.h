// A filter as requested on the command line.
#pragma once

#include <mensura/iir.h>

#include <optional>

#include "cli/app/command_line.h"
#include "iir/default_request.h"

namespace cli {

struct FilterRequest {
    int pass_type = ptLowPass;
    std::optional<double> cutoff, rate, bandwidth;  // Hz
    double gain = 0;                                // dB
    ProtoSpec prototype = mensura::iir::kDefaultPrototype;
};

// TYPE and the options of a design.
void add_filter_request(const Command &app, FilterRequest &request);

const char *pass_type_name(int pass_type);
const char *family_name(int family);

// Refuses frequencies outside 0 .. rate / 2.
void check_frequencies(const FilterRequest &request, double rate);

// The request as the library takes it.
IIRDesignSpec design_spec(const FilterRequest &request, double rate);

// The requested bandwidth, or the default one, in Hz.
double bandwidth_of(const FilterRequest &request, double rate);

}  // namespace cli
