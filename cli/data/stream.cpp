#include "cli/data/stream.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "cli/files/output.h"
#include "cli/plot/comparison.h"

namespace cli {

namespace {

std::vector<std::string> names_of(const TableReader &table) {
    std::vector<std::string> names;
    for (const Column &column : table.columns()) names.push_back(column.name);
    return names;
}

}  // namespace

void Gaps::fill(std::span<double> frames, std::size_t channels) {
    last_.resize(channels, kMissing);
    for (std::size_t i = 0; i < frames.size(); i += channels)
        for (std::size_t k = 0; k < channels; ++k) {
            double &sample = frames[i + k];
            if (std::isnan(sample)) sample = last_[k];
            last_[k] = sample;
        }
}

void stream_table(Source &source, const Files &files, FrameFilter &filter, const std::string &title, double rate) {
    TableReader table(source, files.input);
    Output out(data_file(files.plot, files.output));
    Comparison comparison(files.plot);
    Gaps gaps;
    std::vector<double> row;
    for_each_line(table, out, [&] {
        if (table.kind() != LineKind::Data) return table.write_line(out);
        row = table.values();
        gaps.fill(row, row.size());
        filter.run(row, row.size());
        comparison.add(table.values(), row, row.size());
        table.write_row(out, row);
    });
    out.commit();
    comparison.draw(title, names_of(table), rate);
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
    for (std::size_t i = 0; i < sound.channels(); ++i) names.push_back(sound.channel_name(i));
    out.commit();
    comparison.draw(title, names, sound.rate());
}

}  // namespace cli
