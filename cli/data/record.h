// A whole record in memory: the columns of a CSV or the channels of a WAV, evenly sampled.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/data/source.h"
#include "cli/data/wav.h"
#include "cli/files/output.h"

namespace cli {

struct Channel {
    std::string name = {};
    std::vector<double> samples = {};  // a missing one is replaced by the one before it, or by the first
    std::size_t missing = 0;

    bool has_numbers() const { return missing < samples.size(); }  // else a column of text, or an empty one
};

struct Record {
    std::string name = {};  // of its file
    std::vector<Channel> channels = {};
    double rate = 0;                        // Hz, 0: not known
    std::shared_ptr<WavReader> wav = {};    // null for a CSV
    std::string text = {};                  // of a CSV
    std::vector<std::string> columns = {};  // as chosen on the command line

    std::size_t length() const { return channels.front().samples.size(); }
};

// `columns` as in TableReader; `rate` from the command line, else it comes from the WAV or from the column of times.
Record read_record(Source &source, const std::vector<std::string> &columns, std::optional<double> rate);

// The rate; where it is not known, refuses the record with the option that gives it.
double rate_of(const Record &record);

// Says on stderr how many cells of each channel were missing.
void remark_missing(const Record &record);

// The columns of numbers or the channels of a file, of which the rate must be known.
Record read_signals(const std::string &file, const std::vector<std::string> &columns, std::optional<double> rate);

// The table with the record's samples in the place of its numbers, or the WAV with them; `every`: each such row or frame,
// beginning with the first, the rate of a WAV being lower by that.
void write_record(const Record &record, Output &out, std::size_t every = 1);

}  // namespace cli
