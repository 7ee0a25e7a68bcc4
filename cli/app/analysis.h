// What a cascade achieves, measured from its coefficients.
#pragma once

#include <mensura/iir.h>

#include <string>
#include <vector>

namespace cli {

struct Band {
    double from = 0, to = 0;         // Hz
    double lowest = 0, highest = 0;  // dB, relative to the reference
};

struct Achieved {
    double asked_db = 0;      // requested gain
    double reference_db = 0;  // gain at DC (low-pass, notch, all-pass), Nyquist (high-pass), the centre (band-pass)
    double at_cutoff_db = 0;  // relative to the reference
    std::vector<double> half_power;  // Hz: where the gain passes -3.01 dB below the reference
    std::vector<Band> pass, stop;
    double delay_at_dc = 0;  // samples
    double pole_radius = 0;  // the largest; 1 or more is unstable
    bool all_zero = false, finite = true;
};

Achieved analyse(const IIRCoeffs &cascade, const IIRDesignSpec &spec, double rate);

// The reasons why the design should not be used; empty if there are none.
std::vector<std::string> warnings_about(const Achieved &achieved);

}  // namespace cli
