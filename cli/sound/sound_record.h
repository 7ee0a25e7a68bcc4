// Whole sounds in memory.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "cli/app/options.h"
#include "cli/data/record.h"
#include "cli/sound/sound.h"

namespace cli {

Record read_sound(Source &source, const InputOptions &input);

// The frames of a sound, to be changed all channels at once.
class WholeSound {
  public:
    using Change = std::function<void(std::span<double> frames, std::size_t channels)>;

    WholeSound(Source &source, const InputOptions &input);

    const SoundReader &sound() const { return sound_; }
    std::size_t length() const { return frames_.size() / sound_.channels(); }
    // Changes the frames and writes them, with a picture where one is wanted.
    void rewrite(const Files &files, const Change &change, const std::string &title);

  private:
    void fill_missing();
    void write(const std::string &file) const;

    SoundReader sound_;
    std::vector<double> frames_;
};

// Every such frame, beginning with the first; the rate is lower by that.
void write_sound(const Record &record, Output &out, std::size_t every);

}  // namespace cli
