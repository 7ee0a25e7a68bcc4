// What a filter achieves, measured from its sections.
#pragma once

#include <string>
#include <vector>

#include "cli/app/sections.h"

namespace cli {

struct Band {
    double from = 0, to = 0;         // Hz
    double lowest = 0, highest = 0;  // dB, relative to the reference
};

struct Level {
    double frequency, db;  // Hz, dB relative to the reference
};

// Where a filter is measured.
struct Target {
    int pass_type, passes;
    double rate, gain_db;
    double centre;              // Hz, of band types
    std::vector<double> edges;  // Hz
    std::vector<Band> pass, stop;
    bool to_largest;  // levels are relative to the largest gain of the pass bands, else to Achieved::gain_db
};

// When the filter will run both ways, all is that of both passes together.
struct Achieved {
    double asked_db = 0;             // requested gain
    double gain_db = 0;              // at DC, at Nyquist (high-pass), at the centre (band-pass)
    double reference_db = 0;         // what levels are relative to
    std::vector<Level> edges;        // none for an all-pass
    std::vector<double> half_power;  // Hz: where the gain passes -3.01 dB below the reference; measured apart
    std::vector<Band> pass, stop;
    double delay = 0;        // s: group delay where gain_db is measured
    double pole_radius = 0;  // the largest; 1 or more is unstable
    bool all_zero = false, finite = true;

    bool measurable() const { return finite && !all_zero; }
};

// All but the half-power points.
Achieved measure(const Sections &sections, const Target &target);

// The frequencies, in Hz, where the gain of all passes together is -3.01 dB below the reference.
std::vector<double> half_power_of(const Sections &sections, double rate, int passes, double reference_db);

// Only whether the coefficients are finite, a section is all zero and the poles lie inside the unit circle.
Achieved soundness(const Sections &sections);

// The reasons why the filter should not be used; empty if there are none.
std::vector<std::string> warnings_about(const Achieved &achieved);

}  // namespace cli
