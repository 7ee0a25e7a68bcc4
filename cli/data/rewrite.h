// Commands that give a table or a WAV back with other numbers in it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "cli/app/command_line.h"
#include "cli/data/record.h"
#include "cli/data/source.h"
#include "cli/files/output.h"
#include "cli/plot/draw.h"

namespace cli {

// What these commands share on the command line.
struct Files {
    std::string input, output;
    std::vector<std::string> columns;
    PlotOptions plot;
};
void add_files(const Command &app, Files &files);
void add_columns(const Command &app, std::vector<std::string> &columns);
void add_output(const Command &app, std::string &output);

// A filter of one channel: a sample in, a sample out.
using Step = std::function<double(double)>;
using MakeStep = std::function<Step()>;

// Before and after, a panel for each channel.
class Comparison {
  public:
    explicit Comparison(const PlotOptions &plot) : plot_(plot) {}
    void add(std::size_t channel, double before, double after);
    void draw(const std::string &title, const std::vector<std::string> &names, double rate) const;

  private:
    const PlotOptions &plot_;
    std::vector<Envelope> before_, after_;
};

// A line in, a line out: each channel goes through a step of its own, which is given the value before a missing one in
// its place.  `rate` is for the picture.
void stream_table(Source &source, const Files &files, const MakeStep &make, const std::string &title, double rate);
void stream_wav(WavReader &wav, const Files &files, const MakeStep &make, const std::string &title);

// Whole records, changed channel by channel in place; those without numbers stay.
using Change = std::function<void(Channel &channel)>;
void rewrite_record(Record &record, const Files &files, const Change &change, const std::string &title);

// Refuses a WAV for commands that are about tables.
void expect_table(Source &source);

}  // namespace cli
