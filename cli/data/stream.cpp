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

FrameFilter channel_by_channel(const MakeFilter &make) {
    return [make, filters = std::vector<ChannelFilter>()](std::span<double> frames, std::size_t channels) mutable {
        while (filters.size() < channels) filters.push_back(make());
        for (std::size_t i = 0; i < frames.size(); ++i)
            if (!std::isnan(frames[i])) frames[i] = filters[i % channels](frames[i]);
    };
}

void Gaps::fill(std::span<double> frames, std::size_t channels) {
    last_.resize(channels, kMissing);
    for (std::size_t i = 0; i < frames.size(); i += channels)
        for (std::size_t k = 0; k < channels; ++k) {
            double &sample = frames[i + k];
            if (std::isnan(sample)) sample = last_[k];
            last_[k] = sample;
        }
}

void stream_table(Source &source, const Files &files, const FrameFilter &filter, const std::string &title,
                  double rate) {
    TableReader table(source, files.columns);
    Output out(data_file(files.plot, files.output));
    Comparison comparison(files.plot);
    Gaps gaps;
    std::vector<double> row;
    for_each_line(table, out, [&] {
        if (table.kind() != LineKind::Data) return table.write_line(out);
        row = table.values();
        gaps.fill(row, row.size());
        filter(row, row.size());
        comparison.add(table.values(), row, row.size());
        table.write_row(out, row);
    });
    out.commit();
    comparison.draw(title, names_of(table), rate);
}

void stream_wav(WavReader &wav, const Files &files, const FrameFilter &filter, const std::string &title) {
    Output out(data_file(files.plot, files.output));
    WavWriter result(out, wav);
    Comparison comparison(files.plot);
    Gaps gaps;
    std::vector<double> frames(kWavFrames * wav.channels()), before;
    while (const std::size_t count = wav.read(frames)) {
        const std::span<double> block(frames.data(), count);
        if (files.plot.wanted()) before = frames;
        gaps.fill(block, wav.channels());
        filter(block, wav.channels());
        comparison.add(before, block, wav.channels());
        result.write(block);
    }
    result.finish();
    std::vector<std::string> names;
    for (std::size_t i = 0; i < wav.channels(); ++i) names.push_back(wav.channel_name(i));
    out.commit();
    comparison.draw(title, names, wav.rate());
}

}  // namespace cli
