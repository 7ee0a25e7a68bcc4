// What the axes of spectra show.
#pragma once

#include <string>

#include "cli/spectra/spectrum.h"

namespace cli {

// "ecg_mV, density [mV^2/Hz]", of a column's name and a scale; "unit" stands for one that the name does not have.
std::string scale_label(const std::string &name, Scale scale);

}  // namespace cli
