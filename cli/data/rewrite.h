// Whole records, changed channel by channel.
#pragma once

#include <functional>
#include <string>

#include "cli/app/options.h"
#include "cli/data/record.h"

namespace cli {

// Changes the samples of every channel that has numbers in place, writes the record and draws it before and after.
using Change = std::function<void(Channel &channel)>;
void rewrite_record(Record &record, const Files &files, const Change &change, const std::string &title);

}  // namespace cli
