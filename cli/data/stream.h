// Tables and WAVs filtered while they are read: a row in, a row out; of sounds a block.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "cli/app/options.h"
#include "cli/data/frame_filter.h"
#include "cli/data/sound.h"
#include "cli/data/source.h"
#include "cli/data/table.h"
#include "cli/files/output.h"

namespace cli {

// Puts the value before it in its channel into the place of each sample that is missing.
class Gaps {
  public:
    void fill(std::span<double> frames, std::size_t channels);

  private:
    std::vector<double> last_;
};

// `rate` is for the picture.
void stream_table(Source &source, const Files &files, FrameFilter &filter, const std::string &title, double rate);
void stream_sound(SoundReader &sound, const Files &files, FrameFilter &filter, const std::string &title);

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
