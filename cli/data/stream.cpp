#include "cli/data/stream.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "cli/files/output.h"
#include "cli/plot/comparison.h"

namespace cli {

namespace {

// Runs the filters over rows.  A channel's filter starts with its first number.
class Channels {
  public:
    Channels(const MakeFilter &make, Comparison &comparison) : make_(make), comparison_(comparison) {}

    const std::vector<double> &run(const std::vector<double> &row) {
        while (filters_.size() < row.size()) {
            filters_.push_back(make_());
            held_.push_back(kMissing);
        }
        result_.resize(row.size());
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (!std::isnan(row[i])) held_[i] = row[i];
            result_[i] = std::isnan(held_[i]) ? kMissing : filters_[i](held_[i]);
            comparison_.add(i, row[i], result_[i]);
        }
        return result_;
    }

  private:
    const MakeFilter &make_;
    Comparison &comparison_;
    std::vector<ChannelFilter> filters_;
    std::vector<double> held_, result_;
};

std::vector<std::string> names_of(const TableReader &table) {
    std::vector<std::string> names;
    for (const Column &column : table.columns()) names.push_back(column.name);
    return names;
}

}  // namespace

void stream_table(Source &source, const Files &files, const MakeFilter &make, const std::string &title, double rate) {
    TableReader table(source, files.columns);
    Output out(data_file(files.plot, files.output));
    Comparison comparison(files.plot);
    Channels channels(make, comparison);
    for_each_line(table, out, [&] {
        if (table.kind() == LineKind::Data)
            table.write_row(out, channels.run(table.values()));
        else
            table.write_line(out);
    });
    out.commit();
    comparison.draw(title, names_of(table), rate);
}

void stream_wav(WavReader &wav, const Files &files, const MakeFilter &make, const std::string &title) {
    Output out(data_file(files.plot, files.output));
    WavWriter result(out, wav);
    Comparison comparison(files.plot);
    Channels channels(make, comparison);
    std::vector<double> frames(kWavFrames * wav.channels()), row(wav.channels());
    while (const std::size_t count = wav.read(frames)) {
        for (std::size_t i = 0; i < count; i += row.size()) {
            std::copy_n(frames.data() + i, row.size(), row.data());
            std::ranges::copy(channels.run(row), frames.data() + i);
        }
        result.write({frames.data(), count});
    }
    result.finish();
    std::vector<std::string> names;
    for (std::size_t i = 0; i < wav.channels(); ++i) names.push_back(wav.channel_name(i));
    out.commit();
    comparison.draw(title, names, wav.rate());
}

}  // namespace cli
