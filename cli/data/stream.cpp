#include "cli/data/stream.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "cli/files/output.h"
#include "cli/plot/comparison.h"
#include "cli/table/columns.h"
#include "cli/table/units.h"

namespace cli {

namespace {

std::vector<std::string> names_of(const TableReader &table) {
    std::vector<std::string> names;
    for (const Column &column : table.columns()) names.push_back(labelled(column.name, column.unit));
    return names;
}

}  // namespace

void Gaps::fill(std::span<double> frames, std::size_t channels) {
    last_.resize(channels, kMissing);
    const auto is_missing = [](double sample) { return std::isnan(sample); };
    if (std::ranges::none_of(frames, is_missing)) {
        std::ranges::copy(frames.last(std::min(channels, frames.size())), last_.begin());
        return;
    }
    for (std::size_t i = 0; i < frames.size(); i += channels)
        for (std::size_t k = 0; k < channels; ++k) {
            double &sample = frames[i + k];
            if (std::isnan(sample)) sample = last_[k];
            last_[k] = sample;
        }
}

void RowFilter::restart(std::size_t channel) {
    filter_.restart(channel);
    if (!filter_.takes_missing()) gaps_.forget(channel);
}

void RowFilter::pass_hole() {
    const std::size_t channels = row_.size();
    if (policy_ == GapPolicy::Split && hole_.is_long) {
        for (std::size_t k = 0; k < channels; ++k) restart(k);
        return;
    }
    for (std::size_t i = 0; i < std::min(hole_.rows, kMostHeld); ++i) {
        virtual_ = filter_.takes_missing() ? std::vector<double>(channels, kMissing) : gaps_.last();
        filter_.run(virtual_, channels);
    }
}

// Of a column that holds numbers; a long hole ends at the next number.
void RowFilter::count_missing(std::size_t channel) {
    const Column &column = table_.columns()[channel];
    if (column.kind != Column::Numbers) return;
    Run &run = missing_[channel];
    const std::size_t line = table_.line().number;
    if (std::isnan(row_[channel])) {
        holes_.report().cell_missing(line, column.index, column.name);
        if (run.cells++ == 0) run.line = line;
        return;
    }
    if (run.cells == 0) return;
    const bool is_long = run.cells > short_hole(holes_.rate());
    if (is_long) holes_.cells_missing(run.line, column.name, run.cells);
    if (is_long && policy_ == GapPolicy::Split) restart(channel);
    run.cells = 0;
}

const std::vector<double> &RowFilter::run() {
    hole_ = holes_.next();
    next_ += hole_.rows + 1;
    row_ = table_.values();
    if (missing_.size() < row_.size())  // after a first row that was the end of one, the columns are others
        for (std::size_t k = 0; k < missing_.size(); ++k) restart(k);
    missing_.resize(row_.size());
    if (hole_.rows > 0) pass_hole();
    for (std::size_t k = 0; k < row_.size(); ++k) count_missing(k);
    if (!filter_.takes_missing()) gaps_.fill(row_, row_.size());
    filter_.run(row_, row_.size());
    return row_;
}

void RowFilter::finish() {
    for (std::size_t k = 0; k < missing_.size(); ++k)
        if (missing_[k].cells > short_hole(holes_.rate()))
            holes_.cells_missing(missing_[k].line, table_.columns()[k].name, missing_[k].cells);
    holes_.finish();
}

void stream_table(Source &source, const Files &files, FrameFilter &filter, const std::string &title) {
    TableReader table(source, files.input, Faults::Report);
    Output out(data_file(files.plot, files.output));
    Comparison comparison(files.plot);
    RowFilter rows(table, files.input, source.name(), filter);
    for_each_line(table, out, [&] {
        if (table.kind() != LineKind::Data) return table.write_line(out);
        const std::vector<double> &row = rows.run();
        if (files.plot.wanted())
            for (std::size_t k = 0; k < row.size(); ++k) comparison.add(rows.place(), k, table.values()[k], row[k]);
        table.write_row(out, row);
    });
    rows.finish();
    out.commit();
    comparison.draw(title, names_of(table), rows.rate());
}

void stream_sound(SoundReader &sound, const Files &files, FrameFilter &filter, const std::string &title) {
    Output out(data_file(files.plot, files.output));
    SoundWriter result(out, sound);
    Comparison comparison(files.plot);
    Gaps gaps;
    std::vector<double> frames(kSoundFrames * sound.channels()), before;
    while (const std::size_t count = sound.read(frames)) {
        const std::span<double> block(frames.data(), count);
        if (files.plot.wanted()) before = frames;
        gaps.fill(block, sound.channels());
        filter.run(block, sound.channels());
        comparison.add(before, block, sound.channels());
        result.write(block);
        if (!sound.next_is_received()) result.flush();
    }
    result.finish();
    std::vector<std::string> names;
    for (std::size_t i = 0; i < sound.channels(); ++i) names.push_back(labelled(sound.channel_name(i), kFullScale));
    out.commit();
    comparison.draw(title, names, sound.rate());
}

}  // namespace cli
