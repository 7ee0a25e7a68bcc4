// Names in a table may be in Latin-1; pictures and JSON hold UTF-8 alone.
#pragma once

#include <string>

namespace cli {

// Text that is not UTF-8 is taken for Latin-1, whose bytes are the first 256 code points.
std::string as_utf8(const std::string &text);

}  // namespace cli
