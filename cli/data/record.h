// A whole record in memory: the columns of a CSV or the channels of a WAV, evenly sampled.
#pragma once

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
    std::vector<double> samples = {};  // in place of a missing one stands the last before it, or the first there is
    std::size_t missing = 0;

    bool has_numbers() const { return missing < samples.size(); }  // else a column of text, or of nothing
};

struct Record {
    std::string name = {};  // of its file
    std::vector<Channel> channels = {};
    double rate = 0;                        // Hz, 0: not known
    std::shared_ptr<WavReader> wav = {};    // null for a CSV
    std::string text = {};                  // of a CSV
    std::vector<std::string> columns = {};  // as they were asked for

    std::size_t length() const { return channels.front().samples.size(); }
};

// `columns` as in TableReader; `rate` as asked for, else it comes from the WAV or from the column of times.
Record read_record(Source &source, const std::vector<std::string> &columns, std::optional<double> rate);

// The rate, or a complaint that says how to give one.
double rate_of(const Record &record);

// Says on stderr how many cells of each channel were missing.
void remark_missing(const Record &record);

// The table with the record's samples in the place of its numbers, or the WAV with them.
void write_record(const Record &record, Output &out);

// The sampling rate of ascending times in seconds; whole hertz if it is within 10 ppm of them, better than a sampling
// clock keeps, because times are rounded.
class EvenTimes {
  public:
    explicit EvenTimes(const std::string &file) : file_(file) {}
    void add(double time, std::size_t line, std::size_t column);
    double rate() const;

  private:
    const std::string &file_;
    std::size_t column_ = 0;
    std::vector<double> times_;
    std::vector<std::size_t> lines_;
};

}  // namespace cli
