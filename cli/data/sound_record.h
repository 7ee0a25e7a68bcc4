// Whole sounds in memory.
#pragma once

#include <cstddef>

#include "cli/data/record.h"

namespace cli {

Record read_sound(Source &source, const InputOptions &input);

// Every such frame, beginning with the first; the rate is lower by that.
void write_sound(const Record &record, Output &out, std::size_t every);

}  // namespace cli
