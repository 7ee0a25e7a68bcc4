// A filter as mensura/sos.h takes it.
#pragma once

#include <mensura/sos.h>

#include <array>
#include <vector>

namespace cli {

using Section = std::array<double, 6>;  // b0 b1 b2 1 a1 a2
using Sections = std::vector<Section>;

inline const double *data_of(const Sections &sections) { return sections.data()->data(); }
inline int count_of(const Sections &sections) { return static_cast<int>(sections.size()); }

// A result of mensura/sos.h; a negative code ends the program with its sentence.
int checked(int result);

// Designs the sections of a request; returns their number, or a negative code and no sections.
int design_sections(const mensura_sos_request &request, Sections &sections);

}  // namespace cli
