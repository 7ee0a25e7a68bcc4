// A filter as it is asked for on the command line.
#pragma once

#include <mensura/iir.h>

#include <optional>

#include "cli/app/command_line.h"

namespace cli {

struct FilterRequest {
    int pass_type = ptLowPass, family = pfButterworth, poles = 6;
    std::optional<double> cutoff, rate, bandwidth;  // Hz
    double ripple = 0.1, stop_band = 60, gain = 0;  // dB
    double gamma = 0;
};

// TYPE and the options of a design.
void add_filter_request(const Command &app, FilterRequest &request);

bool is_band_type(int pass_type);
const char *pass_type_name(int pass_type);
const char *family_name(int family);
inline constexpr int kFamilyCount = 8;  // codes 0 .. 7

// Refuses frequencies outside 0 .. rate / 2.
void check_frequencies(const FilterRequest &request, double rate);

// The request as the library takes it.
IIRDesignSpec design_spec(const FilterRequest &request, double rate);
// In Hz; the default is the library's, 0.1 of the Nyquist frequency.
double bandwidth_of(const FilterRequest &request, double rate);

// With the settings that the library takes instead of those outside the range of their family.
ProtoSpec clamped(ProtoSpec spec);
// Names each of them on stderr.
void report_clamps(const ProtoSpec &spec);

}  // namespace cli
