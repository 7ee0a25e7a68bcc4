// Tables and WAVs filtered while they are read: a row in, a row out.
#pragma once

#include <functional>
#include <string>

#include "cli/app/options.h"
#include "cli/data/source.h"
#include "cli/data/table.h"
#include "cli/data/wav.h"
#include "cli/files/output.h"

namespace cli {

// A filter of one channel: a sample in, a sample out.
using ChannelFilter = std::function<double(double)>;
using MakeFilter = std::function<ChannelFilter()>;

// Every channel has a filter of its own, which receives the value before a missing one in its place.  `rate` is for the
// picture.
void stream_table(Source &source, const Files &files, const MakeFilter &make, const std::string &title, double rate);
void stream_wav(WavReader &wav, const Files &files, const MakeFilter &make, const std::string &title);

// Reads a table to its end and calls answer() for each line.  Output is flushed before the program waits for the next
// line, so that a sender of single lines receives the result of each at once.
template <class Answer>
void for_each_line(TableReader &table, Output &out, Answer answer) {
    for (;;) {
        if (out.full() || (table.rows() > 0 && !table.next_is_received())) out.flush();
        if (!table.next()) return;
        answer();
    }
}

}  // namespace cli
