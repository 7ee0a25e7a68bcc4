// Sound files (WAV): samples as doubles of which 1 is full scale, written back in the format they came in.
#pragma once

#include <sndfile.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "cli/data/input.h"
#include "cli/data/source.h"
#include "cli/files/output.h"

namespace cli {

// Whether the input begins like a WAV; waits for no more bytes than that takes.
bool is_sound(Source &source);

// Refuses a WAV, for commands that read tables only.
void refuse_sound(Source &source);

inline constexpr std::size_t kSoundFrames = 4096;  // to read and write at a time

using SoundFile = std::unique_ptr<SNDFILE, int (*)(SNDFILE *)>;

class SoundReader {
  public:
    explicit SoundReader(Source &source);
    ~SoundReader();
    SoundReader(const SoundReader &) = delete;
    SoundReader &operator=(const SoundReader &) = delete;

    const SF_INFO &format() const { return format_; }
    std::size_t channels() const { return static_cast<std::size_t>(format_.channels); }
    double rate() const { return format_.samplerate; }
    std::string channel_name(std::size_t channel) const;
    // Refuses another rate than the file's, and a choice of columns.
    void check_request(const InputOptions &input) const;
    // Fills whole frames (a sample of each channel); returns how many numbers were read, 0 at the end.
    std::size_t read(std::span<double> samples);
    std::vector<std::pair<int, std::string>> texts() const;  // title, artist, ...

  private:
    std::string name_;
    SF_INFO format_ = {};
    int descriptor_ = -1;
    SoundFile file_{nullptr, sf_close};
};

class SoundWriter {
  public:
    SoundWriter(Output &out, const SoundReader &like) : SoundWriter(out, like, like.format().samplerate) {}
    SoundWriter(Output &out, const SoundReader &like, int rate);
    ~SoundWriter();
    SoundWriter(const SoundWriter &) = delete;
    SoundWriter &operator=(const SoundWriter &) = delete;

    void write(std::span<const double> samples);
    // Completes the file and says how many samples had to be clipped.
    void finish();

  private:
    void write_integers(std::span<const double> samples);

    Output &out_;
    int descriptor_ = -1, bits_ = 0;  // bits 0: not a format of plain integers
    std::size_t clipped_ = 0;
    std::vector<int> integers_;
    SoundFile file_{nullptr, sf_close};
};

}  // namespace cli
