// Tables and sounds filtered while they are read: a row in, a row out; of sounds a block.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "cli/app/diagnostics.h"
#include "cli/app/options.h"
#include "cli/data/frame_filter.h"
#include "cli/files/output.h"
#include "cli/input/source.h"
#include "cli/sound/sound.h"
#include "cli/table/table.h"
#include "cli/times/row_gaps.h"

namespace cli {

// Puts the value before it in its channel into the place of each sample that is missing.
class Gaps {
  public:
    void fill(std::span<double> frames, std::size_t channels);
    // The last values; NaN where there is none yet.
    const std::vector<double> &last() const { return last_; }
    void forget(std::size_t channel) { last_[channel] = kMissing; }

  private:
    std::vector<double> last_;
};

// Feeds the rows of a table to a filter, and takes what is missing between and in them as --gaps says: the last values
// are filtered in its place, or the filter starts anew.
class RowFilter {
  public:
    RowFilter(TableReader &table, const InputOptions &input, const std::string &file, FrameFilter &filter)
        : table_(table), policy_(input.gaps), holes_(table, input, file), filter_(filter) {}

    // Filters the values of the table's row.  Returns the row, valid until the next call.
    const std::vector<double> &run();
    // The rows that are missing before the last one.
    const Hole &hole() const { return hole_; }
    // Where in time the row lies, in samples from the first.
    std::size_t place() const { return next_ - 1; }
    double rate() const { return holes_.rate(); }
    void finish();

  private:
    struct Run {
        std::size_t cells = 0, line = 0;
    };

    void pass_hole();
    void restart(std::size_t channel);
    void count_missing(std::size_t channel);

    TableReader &table_;
    GapPolicy policy_;
    RowGaps holes_;
    FrameFilter &filter_;
    Gaps gaps_;
    Hole hole_;
    std::size_t next_ = 0;
    std::vector<Run> missing_;  // the cells of each column that are missing up to this row
    std::vector<double> row_, virtual_;
};

void stream_table(Source &source, const Files &files, FrameFilter &filter, const std::string &title);
void stream_sound(SoundReader &sound, const Files &files, FrameFilter &filter, const std::string &title);

// Reads a table to its end and calls answer() for each line.  Output is flushed before the program waits for the next
// line, so that a sender of single lines receives the result of each at once; and where one of its lines is refused,
// what came before is passed on.
template <class Answer>
void for_each_line(TableReader &table, Output &out, Answer answer) {
    try {
        for (;;) {
            if (out.full() || (table.rows() > 0 && !table.next_is_received())) out.flush();
            if (!table.next()) return;
            answer();
        }
    } catch (const Failure &) {
        if (table.is_live()) out.flush();
        throw;
    }
}

}  // namespace cli
