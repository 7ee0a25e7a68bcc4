#include "cli/sound/sound_record.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>
#include <vector>

#include "cli/files/output.h"
#include "cli/plot/comparison.h"
#include "cli/plot/options.h"
#include "cli/sound/sound.h"
#include "cli/table/columns.h"

namespace cli {

namespace {

// Appends channel k of the frames.
void append(Channel &channel, std::span<const double> frames, std::size_t k, std::size_t channels) {
    const std::size_t had = channel.samples.size();
    channel.samples.resize(had + frames.size() / channels);
    double *to = channel.samples.data() + had;
    for (std::size_t i = k; i < frames.size(); i += channels, ++to) {
        *to = frames[i];
        channel.missing += std::isnan(*to) ? 1U : 0U;
    }
}

// A sample that is not a number counts as missing.
void close(Channel &channel) {
    if (!channel.has_numbers()) return;
    channel.pieces = {{0, channel.samples.size()}};
    if (channel.missing > 0) hold(channel.samples);
}

}  // namespace

Record read_sound(Source &source, const InputOptions &input) {
    Record record{.name = source.name(), .sound = std::make_shared<SoundReader>(source)};
    SoundReader &sound = *record.sound;
    sound.check_request(input);
    record.rate = sound.rate();
    for (std::size_t i = 0; i < sound.channels(); ++i) {
        record.channels.push_back({.name = sound.channel_name(i), .unit = kFullScale});
        record.channels[i].samples.reserve(sound.known_frames());
    }
    std::vector<double> frames(kSoundFrames * sound.channels());
    while (const std::size_t count = sound.read(frames))
        for (std::size_t k = 0; k < sound.channels(); ++k)
            append(record.channels[k], std::span(frames).first(count), k, sound.channels());
    for (Channel &channel : record.channels) close(channel);
    return record;
}

WholeSound::WholeSound(Source &source, const InputOptions &input) : sound_(source) {
    sound_.check_request(input);
    frames_.reserve(sound_.known_frames() * sound_.channels());
    std::vector<double> block(kSoundFrames * sound_.channels());
    bool missing = false;
    while (const std::size_t count = sound_.read(block)) {
        const std::span<const double> frames = std::span(block).first(count);
        missing = missing || std::ranges::any_of(frames, [](double x) { return std::isnan(x); });
        frames_.insert(frames_.end(), frames.begin(), frames.end());
    }
    if (missing) fill_missing();
}

void WholeSound::fill_missing() {
    for (std::size_t k = 0; k < sound_.channels(); ++k) {
        Channel channel{.name = sound_.channel_name(k)};
        append(channel, frames_, k, sound_.channels());
        close(channel);
        for (std::size_t i = 0; i < channel.samples.size(); ++i)
            frames_[i * sound_.channels() + k] = channel.samples[i];
        if (channel.missing > 0) remark_missing(sound_.name(), channel);
    }
}

void WholeSound::rewrite(const Files &files, const Change &change, const std::string &title) {
    const std::vector<double> before = files.plot.wanted() ? frames_ : std::vector<double>();
    change(frames_, sound_.channels());
    Comparison comparison(files.plot);
    comparison.add(before, frames_, sound_.channels());
    write(data_file(files.plot, files.output));
    std::vector<std::string> names;
    for (std::size_t i = 0; i < sound_.channels(); ++i) names.push_back(labelled(sound_.channel_name(i), kFullScale));
    comparison.draw(title, names, sound_.rate());
}

void WholeSound::write(const std::string &file) const {
    Output out(file);
    SoundWriter result(out, sound_, sound_.format().samplerate, length());
    for (std::span<const double> rest = frames_; !rest.empty();) {
        const std::size_t block = std::min(rest.size(), kSoundFrames * sound_.channels());
        result.write(rest.first(block));
        rest = rest.subspan(block);
    }
    result.finish();
    out.commit();
}

void write_sound(const Record &record, Output &out, std::size_t every) {
    const std::size_t channels = record.channels.size(), count = (record.length() + every - 1) / every;
    SoundWriter sound(out, *record.sound, record.sound->format().samplerate / static_cast<int>(every), count);
    std::vector<double> frames(std::min(kSoundFrames, count) * channels);
    for (std::size_t done = 0; done < count; done += kSoundFrames) {
        const std::size_t block = std::min(kSoundFrames, count - done);
        for (std::size_t k = 0; k < channels; ++k)
            for (std::size_t i = 0; i < block; ++i)
                frames[i * channels + k] = record.channels[k].samples[(done + i) * every];
        sound.write(std::span(frames).first(block * channels));
    }
    sound.finish();
}

}  // namespace cli
