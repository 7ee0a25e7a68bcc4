#include "cli/data/sound.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "cli/app/diagnostics.h"
#include "cli/files/temporary.h"

namespace cli {

namespace {

std::uint32_t little_endian(const unsigned char *bytes) {
    return bytes[0] | static_cast<std::uint32_t>(bytes[1]) << 8 | static_cast<std::uint32_t>(bytes[2]) << 16 |
           static_cast<std::uint32_t>(bytes[3]) << 24;
}

// libsndfile takes a file that ends early for a shorter one: compare what the header promises with what is there.  Sizes
// of 0 and 2^32 - 1 come from programs that wrote into a pipe, and mean "to the end".
void refuse_truncated(int descriptor, const std::string &name) {
    struct stat status = {};
    if (fstat(descriptor, &status) != 0) reject("{}: {}", name, std::strerror(errno));
    std::array<unsigned char, 12> head;
    if (pread(descriptor, head.data(), head.size(), 0) != 12 || std::memcmp(head.data(), "RIFF", 4) != 0) return;
    for (off_t at = 12; pread(descriptor, head.data(), 8, at) == 8;) {
        const off_t size = little_endian(head.data() + 4), there = status.st_size - at - 8;
        const bool open_ended = size == 0 || size == 0xFFFFFFFF;
        if (std::memcmp(head.data(), "data", 4) == 0) {
            if (!open_ended && there < size)
                reject("{}: is cut off: {} of {} bytes of sound are there", name, there, size);
            return;
        }
        at += 8 + size + size % 2;
    }
    reject("{}: is cut off before its sound begins", name);
}

// A descriptor at the start of the file that can seek: of the file itself, or of a copy of what comes through a pipe.
int seekable(Source &source) {
    const int own = source.descriptor();
    if (source.is_plain() && lseek(own, 0, SEEK_SET) == 0) return dup(own);
    const int copy = nameless_file();
    do {
        const std::string_view block = source.pending();
        if (write(copy, block.data(), block.size()) != static_cast<ssize_t>(block.size()))
            fail("a temporary copy of {}: {}", source.name(), std::strerror(errno));
        source.skip(block.size());
    } while (source.more());
    lseek(copy, 0, SEEK_SET);
    return copy;
}

int bits_of(const SF_INFO &format) {
    switch (format.format & SF_FORMAT_SUBMASK) {
        case SF_FORMAT_PCM_S8:
        case SF_FORMAT_PCM_U8: return 8;
        case SF_FORMAT_PCM_16: return 16;
        case SF_FORMAT_PCM_24: return 24;
        case SF_FORMAT_PCM_32: return 32;
        default: return 0;
    }
}

}  // namespace

bool is_sound(Source &source) {
    const auto begins_like = [&source](std::string_view magic) {
        return source.pending().substr(0, magic.size()) == magic.substr(0, source.pending().size());
    };
    while (source.pending().size() < 12 && (begins_like("RIF") || begins_like("RF64")) && source.more()) {
    }
    const std::string_view head = source.pending().substr(0, 12);
    return head.size() == 12 && head.substr(8) == "WAVE" &&
           (head.starts_with("RIFF") || head.starts_with("RIFX") || head.starts_with("RF64"));
}

void refuse_sound(Source &source) {
    if (is_sound(source)) reject("{}: is a WAV; this command reads tables (CSV)", source.name());
}

SoundReader::SoundReader(Source &source) : name_(source.name()), descriptor_(seekable(source)) {
    refuse_truncated(descriptor_, name_);
    lseek(descriptor_, 0, SEEK_SET);
    file_.reset(sf_open_fd(descriptor_, SFM_READ, &format_, SF_FALSE));
    if (!file_) reject("{}: {}", name_, sf_strerror(nullptr));
    if (format_.frames == 0) reject("{}: holds no sound", name_);
}

SoundReader::~SoundReader() {
    file_.reset();
    close(descriptor_);
}

std::string SoundReader::channel_name(std::size_t channel) const {
    return channels() == 1 ? "sound" : fmt::format("channel {}", channel + 1);
}

void SoundReader::check_request(const InputOptions &input) const {
    if (input.rate && *input.rate != rate())
        reject("{}: is sampled at {} Hz; leave --rate out, or give that", name_, rate());
    if (!input.columns.empty()) reject("{}: is a WAV, all of whose channels are taken; --column is for tables", name_);
}

std::size_t SoundReader::read(std::span<double> samples) {
    const auto count =
        static_cast<std::size_t>(sf_read_double(file_.get(), samples.data(), static_cast<sf_count_t>(samples.size())));
    if (count % channels() != 0) reject("{}: ends within a sample of its {} channels", name_, channels());
    return count;
}

std::vector<std::pair<int, std::string>> SoundReader::texts() const {
    std::vector<std::pair<int, std::string>> found;
    for (int kind = SF_STR_FIRST; kind <= SF_STR_LAST; ++kind)
        if (const char *const text = sf_get_string(file_.get(), kind)) found.emplace_back(kind, text);
    return found;
}

// The header is completed at the end, for which the output must be able to seek.
SoundWriter::SoundWriter(Output &out, const SoundReader &like, int rate) : out_(out), bits_(bits_of(like.format())) {
    if (isatty(out.descriptor()) != 0) reject("a WAV is not for a terminal; name a file with --output, or redirect");
    const bool direct = lseek(out.descriptor(), 0, SEEK_CUR) == 0 && out.descriptor() != STDOUT_FILENO;
    descriptor_ = direct ? dup(out.descriptor()) : nameless_file();
    SF_INFO format = like.format();
    format.samplerate = rate;
    file_.reset(sf_open_fd(descriptor_, SFM_WRITE, &format, SF_FALSE));
    if (!file_) fail("{}: {}", out.name(), sf_strerror(nullptr));
    sf_command(file_.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
    sf_command(file_.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);  // it holds the time of writing
    for (const auto &[kind, text] : like.texts()) sf_set_string(file_.get(), kind, text.c_str());
}

SoundWriter::~SoundWriter() {
    file_.reset();
    close(descriptor_);
}

// Rounded to the nearest integer here: libsndfile would round down, and scale by 2^15 - 1 what it has divided by 2^15.
void SoundWriter::write_integers(std::span<const double> samples) {
    const double scale = std::ldexp(1.0, bits_ - 1);
    integers_.resize(samples.size());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double wanted = std::nearbyint(samples[i] * scale), held = std::clamp(wanted, -scale, scale - 1);
        clipped_ += wanted != held;
        integers_[i] = static_cast<int>(std::isnan(held) ? 0.0 : std::ldexp(held, 32 - bits_));
    }
    if (sf_write_int(file_.get(), integers_.data(), static_cast<sf_count_t>(samples.size())) !=
        static_cast<sf_count_t>(samples.size()))
        fail("{}: {}", out_.name(), sf_strerror(file_.get()));
}

void SoundWriter::write(std::span<const double> samples) {
    if (bits_ > 0) return write_integers(samples);
    if (sf_write_double(file_.get(), samples.data(), static_cast<sf_count_t>(samples.size())) !=
        static_cast<sf_count_t>(samples.size()))
        fail("{}: {}", out_.name(), sf_strerror(file_.get()));
}

void SoundWriter::finish() {
    const int failed = sf_close(file_.release());
    if (failed != 0) fail("{}: {}", out_.name(), sf_error_number(failed));
    if (out_.descriptor() == STDOUT_FILENO || lseek(out_.descriptor(), 0, SEEK_CUR) < 0)
        copy_contents(descriptor_, out_);
    if (clipped_ > 0) remark("{} samples exceeded full scale and were clipped", clipped_);
}

}  // namespace cli
