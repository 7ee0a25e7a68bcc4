// Second-order sections in a file.
#pragma once

#include <string>

#include "cli/app/sections.h"

namespace cli {

// The lines of a table of six columns, b0 b1 b2 a0 a1 a2, with or without a header; a0 must be 1.
Sections read_sections(const std::string &file);

}  // namespace cli
