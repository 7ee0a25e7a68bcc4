#include "cli/data/sound_record.h"

#include <sys/mman.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "cli/data/sound.h"

namespace cli {

namespace {

// Room for samples in pages of 2 MiB where the system has them: handing out memory in pages of 4 KiB takes longer than
// filtering it.
void reserve(std::vector<double> &samples, std::size_t count) {
    constexpr std::uintptr_t kPage = 1 << 21;
    samples.reserve(count);
    const auto begin = reinterpret_cast<std::uintptr_t>(samples.data()), end = begin + count * sizeof(double);
    const std::uintptr_t first = (begin + kPage - 1) / kPage * kPage;
    if (first < end) madvise(samples.data() + (first - begin) / sizeof(double), end - first, MADV_HUGEPAGE);
}

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

// A sample that is not a number counts as missing: the one before it stands in for it, or the first number.
void close(Channel &channel) {
    if (!channel.has_numbers()) return;
    channel.pieces = {{0, channel.samples.size()}};
    if (channel.missing == 0) return;
    double last = *std::ranges::find_if(channel.samples, [](double x) { return !std::isnan(x); });
    for (double &sample : channel.samples) last = sample = std::isnan(sample) ? last : sample;
}

}  // namespace

Record read_sound(Source &source, const InputOptions &input) {
    Record record{.name = source.name(), .sound = std::make_shared<SoundReader>(source)};
    SoundReader &sound = *record.sound;
    sound.check_request(input);
    record.rate = sound.rate();
    for (std::size_t i = 0; i < sound.channels(); ++i) {
        record.channels.push_back({.name = sound.channel_name(i)});
        reserve(record.channels[i].samples, sound.known_frames());
    }
    std::vector<double> frames(kSoundFrames * sound.channels());
    while (const std::size_t count = sound.read(frames))
        for (std::size_t k = 0; k < sound.channels(); ++k)
            append(record.channels[k], std::span(frames).first(count), k, sound.channels());
    for (Channel &channel : record.channels) close(channel);
    return record;
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
