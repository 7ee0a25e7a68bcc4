// Formats of sounds: how they are recognised, and which one a file is written in.
#pragma once

#include <sndfile.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "cli/input/source.h"

namespace cli {

// The name of the format that the input begins like ("WAV", "FLAC", ...), empty if it is no sound.  Waits for no more
// bytes than it takes to tell.
std::string_view sound_kind(Source &source);

// The name of the container of a format of libsndfile.
std::string container_name(int format);

// The bits of a sample of integers, 0 for other samples.
int sample_bits(int format);

// The bytes of a sample in a format that simply lists the samples, 0 for a compressed one.
std::size_t sample_bytes(int format);

// WAV in all its variants.
bool is_wav(int format);

// The format for a sound like that of `input` in a file of this name, whose ending may choose another container than
// the input's; the samples stay as they are where the container has them.
SF_INFO written_format(const SF_INFO &like, const std::string &input, const std::string &file);

}  // namespace cli
