// A requested filter, designed and measured.
#pragma once

#include <mensura/iir.h>

#include <string>

#include "cli/app/analysis.h"
#include "cli/app/request.h"

namespace cli {

struct Design {
    double rate, cutoff, bandwidth;  // Hz
    IIRDesignSpec spec;
    IIRCoeffs cascade;
    Achieved achieved;
};

Design design_for(const FilterRequest &request, double rate);

// Reports on stderr which settings were clamped, and why the design should not be used, after `prefix`.
void remark_on(const Design &design, const std::string &prefix = "");

}  // namespace cli
