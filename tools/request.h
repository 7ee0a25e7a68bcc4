// A filter as it is asked for on the command line.
#pragma once

#include <mensura/iir.h>

#include <optional>
#include <string>
#include <vector>

#include "command_line.h"

namespace tools {

struct FilterRequest {
    int pass_type = ptLowPass, family = pfButterworth, poles = 6;
    std::optional<double> cutoff, rate, bandwidth;  // Hz
    double ripple = 0.1, stop_band = 60, gain = 0;  // dB
    double gamma = 0;
};

// TYPE and the options of a design.
void add_filter_request(CLI::App &app, FilterRequest &request);

bool is_band_type(int pass_type);
const char *pass_type_name(int pass_type);
const char *family_name(int family);
inline constexpr int kFamilyCount = 8;  // codes 0 .. 7

// Refuses frequencies outside 0 .. rate / 2.
void check_frequencies(const FilterRequest &request, double rate);

// The request as the library takes it.
IIRDesignSpec design_spec(const FilterRequest &request, double rate);
// Half the bandwidth's default is the library's: 0.1 of the Nyquist frequency.
double bandwidth_of(const FilterRequest &request, double rate);

// A setting outside the range of its family, and what the library takes instead.
struct Clamp {
    std::string setting;
    double asked, taken;
};
std::vector<Clamp> clamps_of(const ProtoSpec &spec);
ProtoSpec clamped(ProtoSpec spec);
void report_clamps(const ProtoSpec &spec);

}  // namespace tools
