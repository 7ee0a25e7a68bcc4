// Whole records, changed channel by channel.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>

#include "cli/app/options.h"
#include "cli/data/record.h"

namespace cli {

// Changes every piece of every channel in place, writes the record and draws it before and after.  Pieces of less than
// `shortest` samples stay as they are, which is reported.
using Change = std::function<void(const Channel &channel, std::span<double> piece)>;
// `rename` gives the name of what a column then holds; it is drawn apart from the column, because its unit differs.
void rewrite_record(Record &record, const Files &files, const Change &change, const std::string &title,
                    std::size_t shortest = 0, const Rename &rename = {});

}  // namespace cli
