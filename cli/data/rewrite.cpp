#include "cli/data/rewrite.h"

#include <cstddef>
#include <span>
#include <vector>

#include "cli/app/diagnostics.h"
#include "cli/files/output.h"
#include "cli/plot/comparison.h"
#include "cli/table/columns.h"

namespace cli {

namespace {

// What no row gives, and what lies between the pieces, is not drawn.
void compare(const Record &record, std::size_t index, const std::vector<double> &before, Comparison &comparison) {
    const Channel &channel = record.channels[index];
    auto piece = channel.pieces.begin();
    for (std::size_t row = 0; row + record.missing_rows < record.length(); ++row) {
        const std::size_t sample = record.sample_of(row);
        while (piece != channel.pieces.end() && piece->end <= sample) ++piece;
        if (piece == channel.pieces.end()) return;
        if (sample >= piece->begin)
            comparison.add(record.place_of(sample), index, before[sample], channel.samples[sample]);
    }
}

}  // namespace

void rewrite_record(Record &record, const Files &files, const Change &change, const std::string &title,
                    std::size_t shortest, const Rename &rename) {
    remark_missing(record);
    Comparison comparison(files.plot);
    std::vector<std::string> names, new_names;
    std::size_t left = 0;
    for (std::size_t i = 0; i < record.channels.size(); ++i) {
        Channel &channel = record.channels[i];
        const std::vector<double> before = files.plot.wanted() ? channel.samples : std::vector<double>();
        for (const Piece &piece : channel.pieces) {
            const std::span<double> samples = samples_of(channel, piece);
            if (samples.size() >= shortest)
                change(channel, samples);
            else
                ++left;
        }
        if (files.plot.wanted()) compare(record, i, before, comparison);
        names.push_back(labelled(channel.name, channel.unit));
        if (rename) new_names.push_back(rename(names.back()));
    }
    if (left > 0)
        remark("{}: {} piece{} between holes {} shorter than {} samples: left as {}", record.name, left,
               left == 1 ? "" : "s", left == 1 ? "is" : "are", shortest, left == 1 ? "it is" : "they are");
    Output out(data_file(files.plot, files.output));
    record.rename = rename;
    write_record(record, out);
    out.commit();
    comparison.draw(title, names, record.rate, new_names);
}

}  // namespace cli
