// Lines in a spectrum that a picture labels.
#pragma once

#include <cstddef>
#include <vector>

namespace cli {

// Of the bins that are lines, the highest first: 14 dB above what lies around them and between them and higher lines,
// which noise and leakage hardly ever are.  Levels are in dB.
std::vector<std::size_t> lines_in(const std::vector<double> &levels);

// The frequency at which the parabola through a bin and its neighbours is highest.
double summit(const std::vector<double> &levels, const std::vector<double> &frequencies, std::size_t bin);

}  // namespace cli
