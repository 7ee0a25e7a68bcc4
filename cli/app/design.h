// A requested filter, designed and measured.
#pragma once

#include <mensura/iir.h>
#include <mensura/sos.h>

#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "cli/app/analysis.h"
#include "cli/app/request.h"
#include "cli/app/time_response.h"

namespace cli {

// What CalcIIRFilterCoeff was given, and what it made.
struct LeadingSections {
    IIRDesignSpec spec;
    IIRCoeffs cascade;
};

struct Design {
    double rate = 0;  // Hz
    FilterRequest request;
    mensura_sos_request made = {};           // what mensura_sos_design was given; with leading sections its counterpart
    std::optional<LeadingSections> leading;  // with --leading-sections
    Sections sections;
    Achieved achieved;
    std::optional<StepFigures> step;  // when it has been measured
    std::string summary;              // "lowpass, butterworth, 4 poles, zero phase, -3 dB at 6 Hz"

    const double *sos() const { return data_of(sections); }
    double gain() const { return std::pow(10, made.gain_db / 20); }  // requested, of all passes
    int count() const { return count_of(sections); }
};

Design design_for(const FilterRequest &request, double rate);

// Apart from the rest, because reports alone need them: where its half-power points are, which costs as much as all
// the rest (with leading sections they are measured at once),
void measure_half_power(Design &design);
// and the response to a step, which takes a second for slow filters.
void measure_step(Design &design);

// Reports on stderr which settings were clamped (leading sections), and why the design should not be used, after
// `prefix`.
void remark_on(const Design &design, const std::string &prefix = "");

// Ends the run for a design that should not be used, unless it is forced; then it is a remark.
void refuse_unusable(const Design &design, bool force);

// The sections of a record as IIRFilter runs them.
Sections sections_of(const IIRCoeffs &cascade);

// "-3 dB at 6 Hz"
std::string edges_text(const Design &design);

}  // namespace cli
