// A whole record in memory: the columns of a CSV or the channels of a sound, evenly sampled.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "cli/files/output.h"
#include "cli/input/input.h"
#include "cli/input/source.h"
#include "cli/sound/sound.h"
#include "cli/table/units.h"

namespace cli {

// A run of evenly spaced samples.
struct Piece {
    std::size_t begin = 0, end = 0;
};

// How many samples of holes are left out before a sample, in all.
struct LeftOut {
    std::size_t sample, count;
};

struct Channel {
    std::string name = {};
    std::string unit = {};  // from a row of units in a CSV
    // Missing ones are replaced by the one before, or by the first.
    std::vector<double> samples = {};
    std::size_t missing = 0;         // samples that no cell gives
    bool text = false;               // of a CSV: a column of text
    std::size_t column = 0;          // of a CSV: its index in the table
    std::vector<Piece> pieces = {};  // what holds numbers, in order: one unless the record is split at its holes

    bool has_numbers() const { return missing < samples.size(); }  // else a column of text, or an empty one
};

inline std::span<double> samples_of(Channel &channel, const Piece &piece) {
    return std::span(channel.samples).subspan(piece.begin, piece.end - piece.begin);
}
inline std::span<const double> samples_of(const Channel &channel, const Piece &piece) {
    return std::span(channel.samples).subspan(piece.begin, piece.end - piece.begin);
}

// The last number stands in for what is missing (NaN); before the first number, that one does.
void hold(std::span<double> samples);

struct Record {
    std::string name = {};  // of its file
    std::vector<Channel> channels = {};
    double rate = 0;                          // Hz, 0: not known
    std::shared_ptr<SoundReader> sound = {};  // null for a CSV
    std::string text = {};                    // of a CSV
    InputOptions input = {};                  // as it was read
    std::size_t width = 0;                    // of a CSV: the columns of its table
    Rename rename = {};                       // gives the columns of numbers new names in the header

    // Of a CSV with holes in its times: the sample that belongs to each row; empty: the row's number.
    std::vector<std::size_t> sample_of_row = {};
    std::size_t missing_rows = 0;  // samples that no row gives
    std::size_t cut_hole = 0;      // the row after the first hole that was too long to be filled; 0: there is none
    std::vector<LeftOut> left_out = {};  // in order: what a record that is split has less of its holes
    std::vector<std::string> remarks = {};
    std::string time_doubt = {};  // why a column is not taken for the times

    std::size_t length() const { return channels.front().samples.size(); }
    std::size_t sample_of(std::size_t row) const { return sample_of_row.empty() ? row : sample_of_row[row]; }
    // Where in time a sample lies, in samples from the first.
    std::size_t place_of(std::size_t sample) const;
};

enum class Missing {
    Fill,  // replaced as Channel::samples says
    Keep   // NaN
};

// The rate is that of `input`, else that of the sound or of the column of times.
Record read_record(Source &source, const InputOptions &input, Missing missing = Missing::Fill);

// The rate; where it is not known, refuses the record with the option that gives it.
double rate_of(const Record &record);

// Says on stderr what is missing, how it is taken, and what is wrong with the times.
void remark_missing(const Record &record);
// Of samples that are missing, those of whole rows are told apart.
void remark_missing(const std::string &file, const Channel &channel, std::size_t missing_rows = 0,
                    const std::string &stand_in = kLastValue);

// The columns of numbers or the channels of a file, of which the rate must be known.
Record read_signals(const InputOptions &input);
Record read_signals(Source &source, const InputOptions &input);

// The table with the record's samples in the place of its numbers, or the sound with them; `every`: each such row or
// frame, beginning with the first, the rate of a sound being lower by that.
void write_record(const Record &record, Output &out, std::size_t every = 1);

}  // namespace cli
