// Where the samples lie in the file of a sound, by the lengths in its header.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace cli {

struct SampleBytes {
    std::uint64_t begin = 0, length = 0;
    bool open_ended = false;  // written before the length was known: they go on to the end
    bool big_endian = false;  // the lengths in the header
    int coding = 0;           // of a WAV: the number that stands for the format of its samples, 0: not reached
};

// Fills the span with the bytes from `at` on; false if they are not there.
using ReadAt = std::function<bool(std::uint64_t at, std::span<unsigned char> bytes)>;

// Follows the chunks of WAV (RIFF, RIFX, RF64), AIFF, CAF and W64 up to the samples; AU has none.
struct Header {
    bool known = false;                  // one of these formats
    std::optional<SampleBytes> samples;  // none: they are not reached
};
Header read_header(const ReadAt &read);

}  // namespace cli
