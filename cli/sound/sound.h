// Sound files (WAV, FLAC, AIFF, ...): samples as doubles of which 1 is full scale, written back in the format they came
// in or in one that the name of the output asks for.
#pragma once

#include <sndfile.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "cli/files/output.h"
#include "cli/input/input.h"
#include "cli/input/source.h"

namespace cli {

// Whether the input begins like a sound; waits for no more bytes than that takes.
bool is_sound(Source &source);

// Refuses a sound, for commands that read tables only.
void refuse_sound(Source &source);

inline constexpr std::size_t kSoundFrames = 4096;  // to read and write at a time

// Closed at the end.
class Descriptor {
  public:
    Descriptor() = default;
    ~Descriptor();
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    void set(int descriptor) { descriptor_ = descriptor; }
    int get() const { return descriptor_; }

  private:
    int descriptor_ = -1;
};

using SoundFile = std::unique_ptr<SNDFILE, int (*)(SNDFILE *)>;

// A WAV whose length is not known, or that comes through a pipe, is read while it comes.  Other sounds that come
// through a pipe are stored first in a file without a name, since their readers have to seek.
class SoundReader {
  public:
    explicit SoundReader(Source &source);
    ~SoundReader();
    SoundReader(const SoundReader &) = delete;
    SoundReader &operator=(const SoundReader &) = delete;

    const std::string &name() const { return name_; }
    const SF_INFO &format() const { return format_; }
    std::size_t channels() const { return static_cast<std::size_t>(format_.channels); }
    double rate() const { return format_.samplerate; }
    std::string channel_name(std::size_t channel) const;
    // The frames of an uncompressed file, 0 if that is not known.
    std::size_t known_frames() const { return known_frames_; }
    // Refuses another rate than the file's, and what is for tables.
    void check_request(const InputOptions &input) const;
    // Fills whole frames (a sample of each channel), at least one, as many as are there; returns how many numbers were
    // read, 0 at the end.  The source must still be there.
    std::size_t read(std::span<double> samples);
    // Whether the next read() gives frames without waiting for them.
    bool next_is_received() const;
    const std::vector<std::pair<int, std::string>> &texts() const { return texts_; }  // title, artist, ...

  private:
    struct Stream;

    bool open_stream(Source &source);
    void open_file(int descriptor);
    void refuse_unread() const;
    void take_texts();
    std::size_t read_stream(std::span<double> samples);
    std::string too_few() const;

    std::string name_;
    SF_INFO format_ = {};
    std::vector<std::pair<int, std::string>> texts_;
    Descriptor descriptor_;
    std::size_t known_frames_ = 0;
    std::uint64_t frames_read_ = 0;
    std::unique_ptr<Stream> stream_;
    SoundFile file_{nullptr, sf_close};
};

// A WAV that goes to a pipe is written as a stream; everything else is completed first.
class SoundWriter {
  public:
    SoundWriter(Output &out, const SoundReader &like) : SoundWriter(out, like, like.format().samplerate) {}
    // `frames`: how many will be written, if that is known.
    SoundWriter(Output &out, const SoundReader &like, int rate, std::optional<std::uint64_t> frames = {});
    ~SoundWriter();
    SoundWriter(const SoundWriter &) = delete;
    SoundWriter &operator=(const SoundWriter &) = delete;

    void write(std::span<const double> samples);
    // Hands on what a stream has written so far.
    void flush();
    // Completes the file and says how many samples had to be clipped.
    void finish();

  private:
    struct Stream;

    void open_file(SF_INFO format);
    void open_stream(SF_INFO format);
    void write_integers(std::span<const double> samples);
    void write_doubles(std::span<const double> samples);
    void refuse_too_long(std::size_t samples);

    Output &out_;
    Descriptor descriptor_;
    int format_ = 0;
    std::uint64_t samples_written_ = 0;
    std::size_t clipped_ = 0;
    std::vector<int> integers_;
    std::unique_ptr<Stream> stream_;
    SoundFile file_{nullptr, sf_close};
};

}  // namespace cli
