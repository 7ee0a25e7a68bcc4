#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>
#include <vector>

#include "cli/app/diagnostics.h"
#include "cli/files/temporary.h"
#include "cli/sound/sound.h"
#include "cli/sound/sound_format.h"

namespace cli {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t kBlock = 1 << 16;
constexpr std::uint64_t kLongest = 0xFFF00000;  // bytes of sound where lengths have 32 bits, leaving room for titles

bool is_file(int descriptor) {
    struct stat status = {};
    return fstat(descriptor, &status) != 0 || S_ISREG(status.st_mode);
}

bool lengths_have_32_bits(int format) {
    const int container = format & SF_FORMAT_TYPEMASK;
    return container == SF_FORMAT_WAV || container == SF_FORMAT_WAVEX || container == SF_FORMAT_AIFF ||
           container == SF_FORMAT_AU;
}

// Rounds to the nearest integer, halves to even, as long as |x| < 2^51.
double rounded(double x) {
    constexpr double kUnitsInLastPlace = 0x1.8p52;
    return (x + kUnitsInLastPlace) - kUnitsInLastPlace;
}

// Integers from -scale to scale - 1, which the samples are limited to; what is not a number becomes -scale.  Neither
// this loop nor the next has branches or counts doubles, so that the compiler vectorises them.
void convert(std::span<const double> samples, double scale, double to_32_bits, int *to) {
    for (std::size_t i = 0; i < samples.size(); ++i)
        to[i] = static_cast<int>(rounded(std::min(std::max(-scale, samples[i] * scale), scale - 1)) * to_32_bits);
}

bool has_either(std::span<const int> integers, int one, int other) {
    int found = 0;
    for (const int integer : integers) found |= static_cast<int>(integer == one) | static_cast<int>(integer == other);
    return found != 0;
}

// libsndfile looks these codes up in tables, and reads beyond them for samples beyond full scale.
bool is_looked_up(int format) {
    const int kind = format & SF_FORMAT_SUBMASK;
    return kind == SF_FORMAT_ALAW || kind == SF_FORMAT_ULAW;
}

}  // namespace

// What libsndfile writes into a file that is not there: first the header, which it may still change, then samples.
struct SoundWriter::Stream {
    std::string bytes;  // not handed on yet
    sf_count_t position = 0, size = 0;
    bool in_header = true;
    bool fills_up = false;  // with a byte after an odd number of them
    bool closed = false;

    sf_count_t take(const void *from, sf_count_t count) {
        try {
            const auto at = static_cast<std::size_t>(position);
            const std::string_view block(static_cast<const char *>(from), static_cast<std::size_t>(count));
            if (in_header && at <= bytes.size()) bytes.replace(at, block.size(), block);
            if (!in_header && !closed && position == size) bytes.append(block);
        } catch (const std::bad_alloc &) {  // must not pass through libsndfile, which is C
            return 0;
        }
        position += count;
        size = std::max(size, position);
        return count;
    }

    static SF_VIRTUAL_IO access() {
        SF_VIRTUAL_IO access = {};
        access.get_filelen = [](void *data) { return static_cast<Stream *>(data)->size; };
        access.seek = [](sf_count_t offset, int whence, void *data) {
            auto &stream = *static_cast<Stream *>(data);
            const sf_count_t from = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? stream.position : stream.size;
            return stream.position = from + offset;
        };
        access.write = [](const void *from, sf_count_t count, void *data) {
            return static_cast<Stream *>(data)->take(from, count);
        };
        access.tell = [](void *data) { return static_cast<Stream *>(data)->position; };
        return access;
    }

    // Where the i-th byte of a length lies, from its lowest on.
    std::size_t place(std::size_t at, unsigned i) const { return at + (bytes.starts_with("RIFX") ? 3 - i : i); }

    void set_length(std::size_t at, std::uint64_t value) {
        for (unsigned i = 0; i < 4; ++i) bytes[place(at, i)] = static_cast<char>(value >> 8 * i & 0xFF);
    }
    std::size_t length_at(std::size_t at) const {
        std::size_t value = 0;
        for (unsigned i = 0; i < 4; ++i) value |= std::size_t{static_cast<unsigned char>(bytes[place(at, i)])} << 8 * i;
        return value;
    }

    // Where the header's chunk "fact" begins, or where that of the samples does.  A title may hold the word too.
    std::size_t fact() const {
        std::size_t at = 12;
        while (at + 8 < bytes.size() && bytes.compare(at, 4, "fact") != 0) at += 8 + (length_at(at + 4) + 1) / 2 * 2;
        return at;
    }

    // Ends the header: with the length of so many frames of so many bytes, or with 0xFFFFFFFF, which sox and ffmpeg
    // take for "to the end".
    void end_header(std::optional<std::uint64_t> frames, std::size_t frame) {
        constexpr std::uint64_t kUnknown = 0xFFFFFFFF;
        const std::size_t begin = bytes.size(), chunk = fact();
        const std::uint64_t length = frames.value_or(0) * frame, whole = begin - 8 + length + length % 2;
        const bool known = frames && whole < kUnknown;
        set_length(4, known ? whole : kUnknown);
        set_length(begin - 4, known ? length : kUnknown);
        if (chunk < begin - 12) set_length(chunk + 8, known ? *frames : kUnknown);
        in_header = false;
        fills_up = known;
    }
};

// The header is completed at the end, for which the output must be able to seek, or be a stream.
SoundWriter::SoundWriter(Output &out, const SoundReader &like, int rate, std::optional<std::uint64_t> frames)
    : out_(out) {
    if (isatty(out.descriptor()) != 0) reject("a sound is not for a terminal; name a file with --output, or redirect");
    SF_INFO format = written_format(like.format(), like.name(), out.name());
    format.samplerate = rate;
    format_ = format.format;
    if (is_wav(format_) && sample_bytes(format_) > 0 && !is_file(out.descriptor()))
        open_stream(format);
    else
        open_file(format);
    if (!file_) fail("{}: {}", out.name(), sf_strerror(nullptr));
    sf_command(file_.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
    sf_command(file_.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);  // it holds the time of writing
    for (const auto &[kind, text] : like.texts()) sf_set_string(file_.get(), kind, text.c_str());
    if (!stream_) return;
    sf_command(file_.get(), SFC_UPDATE_HEADER_NOW, nullptr, 0);
    stream_->end_header(frames, sample_bytes(format_) * like.channels());
}

SoundWriter::~SoundWriter() = default;

void SoundWriter::open_file(SF_INFO format) {
    const bool direct = lseek(out_.descriptor(), 0, SEEK_CUR) == 0 && out_.descriptor() != STDOUT_FILENO;
    descriptor_.set(direct ? dup(out_.descriptor()) : nameless_file());
    file_.reset(sf_open_fd(descriptor_.get(), SFM_WRITE, &format, SF_FALSE));
}

void SoundWriter::open_stream(SF_INFO format) {
    stream_ = std::make_unique<Stream>();
    if ((format.format & SF_FORMAT_TYPEMASK) == SF_FORMAT_RF64)  // whose length would have to be known
        format.format = SF_FORMAT_WAV | (format.format & SF_FORMAT_SUBMASK);
    SF_VIRTUAL_IO access = Stream::access();
    file_.reset(sf_open_virtual(&access, SFM_WRITE, &format, stream_.get()));
}

// Rounded to the nearest integer here: libsndfile would round down, and scale by 2^15 - 1 what it has divided by 2^15.
void SoundWriter::write_integers(std::span<const double> samples) {
    const int bits = sample_bits(format_);
    const double scale = std::ldexp(1.0, bits - 1), to_32_bits = std::ldexp(1.0, 32 - bits);
    integers_.resize(samples.size());
    convert(samples, scale, to_32_bits, integers_.data());
    const int lowest = static_cast<int>(-scale * to_32_bits), highest = static_cast<int>((scale - 1) * to_32_bits);
    const bool may_be_clipped = has_either(integers_, lowest, highest);
    for (std::size_t i = 0; may_be_clipped && i < samples.size(); ++i) {
        const double wanted = samples[i] * scale;
        clipped_ += wanted >= -scale - 0.5 && wanted < scale - 0.5 ? 0U : 1U;
        if (std::isnan(wanted)) integers_[i] = 0;
    }
    if (sf_write_int(file_.get(), integers_.data(), static_cast<sf_count_t>(samples.size())) !=
        static_cast<sf_count_t>(samples.size()))
        fail("{}: {}", out_.name(), sf_strerror(file_.get()));
}

void SoundWriter::write_doubles(std::span<const double> samples) {
    std::vector<double> limited;
    if (is_looked_up(format_)) {
        limited.assign(samples.begin(), samples.end());
        for (double &sample : limited) {
            clipped_ += std::abs(sample) <= 1 ? 0U : 1U;
            sample = std::isnan(sample) ? 0 : std::clamp(sample, -1.0, 1.0);
        }
        samples = limited;
    }
    if (sf_write_double(file_.get(), samples.data(), static_cast<sf_count_t>(samples.size())) !=
        static_cast<sf_count_t>(samples.size()))
        fail("{}: {}", out_.name(), sf_strerror(file_.get()));
}

void SoundWriter::refuse_too_long(std::size_t samples) {
    samples_written_ += samples;
    if (!stream_ && lengths_have_32_bits(format_) &&
        samples_written_ > kLongest / std::max<std::size_t>(sample_bytes(format_), 1))
        fail("{}: {} holds less than 4 GiB; a file with the ending .rf64, .w64 or .caf holds more", out_.name(),
             container_name(format_));
}

void SoundWriter::write(std::span<const double> samples) {
    refuse_too_long(samples.size());
    if (sample_bits(format_) > 0)
        write_integers(samples);
    else
        write_doubles(samples);
    if (stream_ && stream_->bytes.size() >= kBlock) flush();
}

void SoundWriter::flush() {
    if (!stream_) return;
    out_.write(stream_->bytes);
    out_.flush();
    stream_->bytes.clear();
}

void SoundWriter::finish() {
    if (stream_) stream_->closed = !stream_->fills_up;
    const int failed = sf_close(file_.release());
    if (failed != 0) fail("{}: {}", out_.name(), sf_error_number(failed));
    flush();
    if (!stream_ && (out_.descriptor() == STDOUT_FILENO || lseek(out_.descriptor(), 0, SEEK_CUR) < 0))
        copy_contents(descriptor_.get(), out_);
    if (clipped_ == 1) remark("1 sample exceeded full scale and was clipped");
    if (clipped_ > 1) remark("{} samples exceeded full scale and were clipped", clipped_);
}

}  // namespace cli
