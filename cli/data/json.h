// Reports as JSON.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "cli/files/output.h"

namespace cli {

// Indented, with a newline at its end.  Numbers read back as the same double; NaN and infinity, which JSON does not
// have, become null.  Text that is not UTF-8 is taken for Latin-1, as in pictures.
void write_json(nlohmann::ordered_json document, Output &out);

}  // namespace cli
