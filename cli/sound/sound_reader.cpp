#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <string_view>

#include "cli/app/diagnostics.h"
#include "cli/files/temporary.h"
#include "cli/sound/sound.h"
#include "cli/sound/sound_format.h"
#include "cli/sound/sound_header.h"

namespace cli {

namespace {

constexpr std::size_t kMostHeader = 1 << 20;                // bytes before the samples of a stream
constexpr std::uint64_t kEndless = std::uint64_t{1} << 61;  // bytes

// A part of a file that is in memory, with a length that it claims, for libsndfile.
struct HeaderBytes {
    std::string bytes;
    sf_count_t length, position = 0;
};

sf_count_t moved(sf_count_t offset, int whence, sf_count_t position, sf_count_t length) {
    if (whence == SEEK_SET) return offset;
    return offset + (whence == SEEK_CUR ? position : length);
}

SF_VIRTUAL_IO header_access() {
    SF_VIRTUAL_IO access = {};
    access.get_filelen = [](void *data) { return static_cast<HeaderBytes *>(data)->length; };
    access.seek = [](sf_count_t offset, int whence, void *data) {
        auto &header = *static_cast<HeaderBytes *>(data);
        return header.position = moved(offset, whence, header.position, header.length);
    };
    access.read = [](void *to, sf_count_t count, void *data) {
        auto &header = *static_cast<HeaderBytes *>(data);
        const auto there = static_cast<sf_count_t>(header.bytes.size()) - header.position;
        if (header.position < 0 || there <= 0 || count <= 0) return sf_count_t{0};
        count = std::min(count, there);
        std::memcpy(to, header.bytes.data() + header.position, static_cast<std::size_t>(count));
        header.position += count;
        return count;
    };
    access.tell = [](void *data) { return static_cast<HeaderBytes *>(data)->position; };
    return access;
}

// The header of a WAV, as libsndfile accepts it without the samples: of RIFF or RIFX, with a plain length.
HeaderBytes plain_header(std::string bytes, const SampleBytes &samples) {
    constexpr std::uint32_t kClaimed = 1 << 16;
    if (bytes.starts_with("RF64")) bytes.replace(0, 4, "RIFF");
    for (unsigned i = 0; i < 4; ++i)
        bytes[samples.begin - (samples.big_endian ? 1 + i : 4 - i)] = static_cast<char>(kClaimed >> 8 * i & 0xFF);
    return {std::move(bytes), static_cast<sf_count_t>(samples.begin + kClaimed)};
}

// Integers, floating-point numbers, A-law, mu-law, and what is one of these in a longer header; not in blocks.
bool lists_samples(int coding) {
    constexpr int kCodings[] = {1, 3, 6, 7, 0xFFFE};
    return std::ranges::find(kCodings, coding) != std::end(kCodings);
}

Header header_of(Source &source) {
    return read_header([&source](std::uint64_t at, std::span<unsigned char> bytes) {
        if (at + bytes.size() > kMostHeader) return false;
        while (source.pending().size() < at + bytes.size())
            if (!source.more()) return false;
        std::memcpy(bytes.data(), source.pending().data() + at, bytes.size());
        return true;
    });
}

Header header_of(int descriptor) {
    return read_header([descriptor](std::uint64_t at, std::span<unsigned char> bytes) {
        return pread(descriptor, bytes.data(), bytes.size(), static_cast<off_t>(at)) ==
               static_cast<ssize_t>(bytes.size());
    });
}

// The size of a file that can be read anywhere; none of a pipe, and of bytes that are unpacked.
std::optional<std::uint64_t> size_of(int descriptor) {
    struct stat status = {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return {};
    return static_cast<std::uint64_t>(status.st_size);
}

// Whether a file says how long it is.  libsndfile takes one that ends early for a shorter one: such a one is refused.
bool has_length(int descriptor, const std::string &name) {
    const Header header = header_of(descriptor);
    if (!header.known) return true;
    if (!header.samples) reject("{}: is cut off before its sound begins", name);
    const SampleBytes &samples = *header.samples;
    const std::uint64_t size = size_of(descriptor).value_or(0), there = size - std::min(size, samples.begin);
    if (samples.length != 0 && samples.length <= there) return true;
    if (!samples.open_ended && samples.length > there)
        reject("{}: is cut off: {} of {} bytes of sound are there", name, there, samples.length);
    return !samples.open_ended;
}

void write_all(int descriptor, std::string_view bytes, const std::string &name) {
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) fail("a temporary copy of {}: {}", name, std::strerror(errno));
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

int stored(Source &source) {
    const int copy = nameless_file();
    do {
        write_all(copy, source.pending(), source.name());
        source.skip(source.pending().size());
    } while (source.more());
    return copy;
}

}  // namespace

// Samples that are read while they come.
struct SoundReader::Stream {
    Source &source;
    std::uint64_t length, left;  // bytes of samples
    bool open_ended;
    std::size_t frame;        // bytes
    sf_count_t position = 0;  // where libsndfile believes to be

    std::size_t received() const {
        return static_cast<std::size_t>(std::min<std::uint64_t>(source.pending().size(), left));
    }

    // The frames that are there, 0 only at the end, when all that is left has been received.
    std::size_t wait() {
        while (received() < std::min<std::uint64_t>(frame, left) && source.more()) {
        }
        return received() / frame;
    }

    sf_count_t take(void *to, sf_count_t count) {
        const auto bytes =
            static_cast<std::size_t>(std::clamp<sf_count_t>(count, 0, static_cast<sf_count_t>(received())));
        std::memcpy(to, source.pending().data(), bytes);
        source.skip(bytes);
        left -= bytes;
        position += static_cast<sf_count_t>(bytes);
        return static_cast<sf_count_t>(bytes);
    }

    static SF_VIRTUAL_IO access() {
        SF_VIRTUAL_IO access = {};
        access.get_filelen = [](void *) { return static_cast<sf_count_t>(kEndless); };
        access.seek = [](sf_count_t offset, int whence, void *data) {
            auto &stream = *static_cast<Stream *>(data);
            return stream.position = moved(offset, whence, stream.position, kEndless);
        };
        access.read = [](void *to, sf_count_t count, void *data) {
            return static_cast<Stream *>(data)->take(to, count);
        };
        access.tell = [](void *data) { return static_cast<Stream *>(data)->position; };
        return access;
    }
};

Descriptor::~Descriptor() {
    if (descriptor_ >= 0) close(descriptor_);
}

bool is_sound(Source &source) { return !sound_kind(source).empty(); }

void refuse_sound(Source &source) {
    const std::string_view kind = sound_kind(source);
    if (!kind.empty()) reject("{}: is a sound ({}); this command reads tables (CSV)", source.name(), kind);
}

SoundReader::SoundReader(Source &source) : name_(source.name()) {
    is_sound(source);  // waits for the first bytes
    const bool seekable = source.is_plain() && size_of(source.descriptor());
    if (seekable && has_length(source.descriptor(), name_)) {
        open_file(dup(source.descriptor()));
    } else if (!open_stream(source)) {
        open_file(seekable ? dup(source.descriptor()) : stored(source));
    }
    if (format_.frames == 0) reject("{}: holds no sound", name_);
}

SoundReader::~SoundReader() = default;

void SoundReader::open_file(int descriptor) {
    descriptor_.set(descriptor);
    has_length(descriptor, name_);
    lseek(descriptor, 0, SEEK_SET);
    file_.reset(sf_open_fd(descriptor, SFM_READ, &format_, SF_FALSE));
    refuse_unread();
    take_texts();
    const std::size_t frame = sample_bytes(format_.format) * channels();
    const auto claimed = static_cast<std::uint64_t>(std::max<sf_count_t>(format_.frames, 0));
    if (frame > 0) known_frames_ = std::min(claimed, size_of(descriptor).value_or(0) / frame);
}

// libsndfile reads the header, and then the samples as if they had none.
bool SoundReader::open_stream(Source &source) {
    const bool rf64 = source.pending().starts_with("RF64");
    if (!rf64 && !source.pending().starts_with("RIF")) return false;
    const Header header = header_of(source);
    if (!header.samples || !lists_samples(header.samples->coding)) return false;
    const SampleBytes &samples = *header.samples;
    HeaderBytes bytes = plain_header(std::string(source.pending().substr(0, samples.begin)), samples);
    SF_VIRTUAL_IO access = header_access();
    file_.reset(sf_open_virtual(&access, SFM_READ, &format_, &bytes));
    refuse_unread();
    if (sample_bytes(format_.format) == 0) reject("{}: {}", name_, sf_error_number(SF_ERR_UNSUPPORTED_ENCODING));
    take_texts();

    source.skip(samples.begin);
    stream_ = std::make_unique<Stream>(Stream{source, samples.length, samples.open_ended ? kEndless : samples.length,
                                              samples.open_ended, sample_bytes(format_.format) * channels()});
    SF_INFO raw = format_;
    raw.format =
        SF_FORMAT_RAW | (format_.format & SF_FORMAT_SUBMASK) | (samples.big_endian ? SF_ENDIAN_BIG : SF_ENDIAN_LITTLE);
    access = Stream::access();
    file_.reset(sf_open_virtual(&access, SFM_READ, &raw, stream_.get()));
    refuse_unread();
    if (rf64) format_.format = SF_FORMAT_RF64 | (format_.format & SF_FORMAT_SUBMASK);
    format_.frames = static_cast<sf_count_t>(stream_->wait());
    return true;
}

void SoundReader::refuse_unread() const {
    if (!file_ && format_.channels > 0 && format_.samplerate < 1) reject("{}: has a sampling rate of 0", name_);
    if (!file_) reject("{}: {}", name_, sf_strerror(nullptr));
}

void SoundReader::take_texts() {
    for (int kind = SF_STR_FIRST; kind <= SF_STR_LAST; ++kind)
        if (const char *const text = sf_get_string(file_.get(), kind)) texts_.emplace_back(kind, text);
}

std::string SoundReader::channel_name(std::size_t channel) const {
    return channels() == 1 ? "sound" : fmt::format("channel {}", channel + 1);
}

void SoundReader::check_request(const InputOptions &input) const {
    if (input.rate && *input.rate != rate())
        reject("{}: is sampled at {} Hz; leave --rate out, or give that", name_, rate());
    const auto refuse = [this](const char *option) {
        reject("{}: is a sound, all of whose channels are taken; {} is for tables", name_, option);
    };
    if (!input.columns.empty()) refuse("--column");
    if (!input.time.empty()) refuse("--time");
    if (input.decimal != '\0') refuse("--decimal");
}

std::string SoundReader::too_few() const {
    return channels() == 1 ? "ends within a sample"
                           : fmt::format("ends within a sample of its {} channels", channels());
}

bool SoundReader::next_is_received() const { return !stream_ || stream_->received() >= stream_->frame; }

std::size_t SoundReader::read_stream(std::span<double> samples) {
    const std::size_t frames = std::min(stream_->wait(), samples.size() / channels());
    const auto count = static_cast<sf_count_t>(frames * channels());
    if (frames > 0 && sf_read_double(file_.get(), samples.data(), count) != count)
        fail("{}: {}", name_, sf_strerror(file_.get()));
    if (frames > 0) return frames * channels();
    const std::size_t rest = stream_->received();
    if (!stream_->open_ended && stream_->left > rest)
        reject("{}: is cut off: {} of {} bytes of sound are there", name_, stream_->length - stream_->left + rest,
               stream_->length);
    if (rest > 0 && !stream_->open_ended) reject("{}: {}", name_, too_few());
    if (rest > 0) remark("{}: {}; bytes left out: {}", name_, too_few(), rest);
    stream_->left = 0;
    return 0;
}

std::size_t SoundReader::read(std::span<double> samples) {
    if (stream_) return read_stream(samples);
    const auto count =
        static_cast<std::size_t>(sf_read_double(file_.get(), samples.data(), static_cast<sf_count_t>(samples.size())));
    if (count % channels() != 0) reject("{}: {}", name_, too_few());
    frames_read_ += count / channels();
    const auto promised = static_cast<std::uint64_t>(format_.frames);
    if (count == 0 && frames_read_ < promised && container_name(format_.format) == "FLAC" &&
        format_.frames != std::numeric_limits<sf_count_t>::max())
        reject("{}: is cut off: {} of {} frames are there", name_, frames_read_, promised);
    return count;
}

}  // namespace cli
