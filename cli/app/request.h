// A filter as requested on the command line.
#pragma once

#include <mensura/iir.h>
#include <mensura/sos.h>

#include <optional>
#include <string>
#include <vector>

#include "cli/app/command_line.h"

namespace cli {

// What --pass and --stop ask for: so many dB of loss at a frequency, at most or at least.
struct Corner {
    double frequency, loss;  // Hz, dB
};

// What is empty was not given.
struct FilterRequest {
    int pass_type = ptLowPass;
    std::optional<double> rate = {}, cutoff = {}, bandwidth = {}, from = {}, to = {};  // Hz
    std::optional<double> level = {};                                                  // dB, --at
    std::vector<Corner> pass = {}, stop = {};
    std::optional<int> family = {}, poles = {};
    std::optional<double> ripple = {}, stop_band = {}, gain = {};  // dB
    std::optional<double> gamma = {};
    bool zero_phase = false;        // will run forwards and backwards
    bool leading_sections = false;  // as CalcIIRFilterCoeff designs and IIRFilter runs it
    bool force = false;             // use it even when it is unusable

    int passes() const { return zero_phase ? 2 : 1; }
    bool by_requirement() const { return !pass.empty() || !stop.empty(); }
};

// The argument TYPE.
Option add_pass_type(const Command &app, FilterRequest &request);

// All options of a design.
void add_filter_options(const Command &app, FilterRequest &request);

const char *pass_type_name(int pass_type);
const char *family_name(int family);
bool is_band_type(int pass_type);

// Refuses options that do not belong together, that are missing, and values that no sampling rate makes possible.
void check_request(const FilterRequest &request);

// Refuses frequencies outside 0 .. rate / 2.
void check_frequencies(const FilterRequest &request, double rate);

// The family that a request without --family has, unless it is chosen by a requirement.
inline constexpr int kDefaultFamily = pfButterworth;

// The request as mensura_sos_design takes it.  With --pass and --stop family and order are chosen.
mensura_sos_request sos_request(const FilterRequest &request, double rate);

// The request as CalcIIRFilterCoeff takes it.
IIRDesignSpec leading_spec(const FilterRequest &request, double rate);

// The order of a family that meets --pass and --stop; 0 where none does.
int least_order(const FilterRequest &request, double rate, int family);

// Ends the run with the reason for which the library refused a request.
[[noreturn]] void reject_request(int code, const mensura_sos_request &request);

}  // namespace cli
