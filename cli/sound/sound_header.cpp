#include "cli/sound/sound_header.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace cli {

namespace {

using namespace std::string_view_literals;

// How a file is divided into chunks: an identifier, a length, and what they are of.
struct Layout {
    std::string_view magic;
    std::size_t first;         // where the chunks begin
    std::size_t id, size;      // bytes of the identifier and of the length
    bool big_endian;           // the length
    std::uint64_t own, align;  // what the length counts of identifier and length; what the next chunk is aligned to
    std::string_view samples;  // identifier
    std::uint64_t unknown;     // such a length or a greater one stands for an unknown one
};

// sox writes 0x7FFFF000 into a WAV, 0x7F000008 into an AIFF, ffmpeg 0xFFFFFFFF, arecord 0x80000000, some round these
// down to whole frames; into a CAF -1.
constexpr std::uint64_t kNever = std::uint64_t{1} << 62;
constexpr Layout kLayouts[] = {
    {"RIFF"sv, 12, 4, 4, false, 0, 2, "data"sv, 0x7FFFF000},
    {"RIFX"sv, 12, 4, 4, true, 0, 2, "data"sv, 0x7FFFF000},
    {"RF64"sv, 12, 4, 4, false, 0, 2, "data"sv, 0x7FFFF000},
    {"FORM"sv, 12, 4, 4, true, 0, 2, "SSND"sv, 0x7F000000},
    {"caff"sv, 8, 4, 8, true, 0, 1, "data"sv, kNever},
    {"riff"sv, 40, 16, 8, false, 24, 8, "data\xF3\xAC\xD3\x11\x8C\xD1\0\xC0\x4F\x8E\xDB\x8A"sv, kNever}};

constexpr int kMostChunks = 10000;

using Bytes = std::span<const unsigned char>;

std::uint64_t number_in(Bytes bytes, bool big_endian) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) value = value << 8 | bytes[big_endian ? i : bytes.size() - 1 - i];
    return value;
}

bool equal(Bytes bytes, std::string_view text) {
    return bytes.size() >= text.size() && std::memcmp(bytes.data(), text.data(), text.size()) == 0;
}

// The length that an RF64 has in its chunk ds64, the third of three of 8 bytes being the number of frames.
std::optional<std::uint64_t> long_length(const ReadAt &read, std::uint64_t at) {
    std::array<unsigned char, 16> lengths;
    if (!read(at, lengths)) return {};
    return number_in(Bytes(lengths).last(8), false);
}

// The first number of a WAV's chunk fmt.
int coding_of(const ReadAt &read, const Layout &layout, std::uint64_t at) {
    std::array<unsigned char, 2> code;
    return read(at, code) ? static_cast<int>(number_in(code, layout.big_endian)) : 0;
}

// A length that counts as unknown may be a true one: then the whole file is said to go on behind the samples.
bool chunks_follow(const ReadAt &read, const Layout &layout, const SampleBytes &samples) {
    constexpr std::uint64_t kUnknownWhole = 0xFFFFF000;
    std::array<unsigned char, 4> size;
    if (layout.first != 12 || !read(4, size)) return false;
    const std::uint64_t whole = number_in(size, layout.big_endian);
    return whole < kUnknownWhole && samples.begin + samples.length + 8 <= whole + 8;
}

SampleBytes samples_of(const ReadAt &read, const Layout &layout, std::uint64_t begin, std::uint64_t length) {
    SampleBytes samples{.begin = begin, .length = length, .big_endian = layout.big_endian};
    samples.open_ended = (length == 0 || length >= layout.unknown) && !chunks_follow(read, layout, samples);
    return samples;
}

// An AU has no chunks: where its samples begin and how many bytes they are stands at its front.
Header au_header(const ReadAt &read) {
    std::array<unsigned char, 8> numbers;
    if (!read(4, numbers)) return {true, {}};
    SampleBytes samples{.begin = number_in(Bytes(numbers).first(4), true), .big_endian = true};
    samples.length = number_in(Bytes(numbers).last(4), true);
    samples.open_ended = samples.length == 0 || samples.length >= 0x7F000000;
    return {true, samples};
}

}  // namespace

Header read_header(const ReadAt &read) {
    std::array<unsigned char, 24> head;
    if (!read(0, std::span(head).first(4))) return {};
    if (equal(head, ".snd")) return au_header(read);
    const auto *const layout =
        std::ranges::find_if(kLayouts, [&head](const Layout &row) { return equal(head, row.magic); });
    if (layout == std::end(kLayouts)) return {};
    const std::span chunk = std::span(head).first(layout->id + layout->size);
    std::optional<std::uint64_t> longer;
    int coding = 0;
    std::uint64_t at = layout->first;
    for (int i = 0; i < kMostChunks && read(at, chunk); ++i) {
        std::uint64_t length = number_in(chunk.last(layout->size), layout->big_endian);
        length -= std::min(length, layout->own);
        at += chunk.size();
        if (equal(chunk, layout->samples)) {
            SampleBytes samples = samples_of(read, *layout, at, length);
            samples.coding = coding;
            if (layout->magic == "RF64" && length == 0xFFFFFFFF && longer) {
                samples.length = *longer;
                samples.open_ended = *longer == 0 || *longer >= kNever;
            }
            return {true, samples};
        }
        if (equal(chunk, "fmt ")) coding = coding_of(read, *layout, at);
        if (layout->magic == "RF64" && equal(chunk, "ds64")) longer = long_length(read, at);
        if (length >= kNever) break;
        at += (length + layout->align - 1) / layout->align * layout->align;
    }
    return {true, {}};
}

}  // namespace cli
