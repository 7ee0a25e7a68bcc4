// The companion's reader of sounds: any bytes, and what it read written and read again.
#include <sys/mman.h>
#include <unistd.h>

#include "cli/app/diagnostics.h"
#include "cli/data/sound.h"
#include "input.h"

using namespace fuzz;

static Doubles samples_of(cli::SoundReader &wav) {
    check(wav.channels() >= 1);
    Doubles all, block(cli::kSoundFrames * wav.channels());
    while (const std::size_t count = wav.read(block)) {
        check(count <= block.size() && count % wav.channels() == 0);
        all.insert(all.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(count));
    }
    return all;
}

void fuzz::test(Input &input) {
    const auto bytes = input.ConsumeRemainingBytes<char>();
    const int file = memfd_create("sound", 0);
    check(write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    cli::Output out("/tmp/never_committed");
    try {
        cli::Source source(fmt::format("/proc/self/fd/{}", file));
        cli::SoundReader wav(source);
        const Doubles samples = samples_of(wav);
        cli::SoundWriter writer(out, wav);
        writer.write(samples);
        writer.finish();
        cli::Source written(fmt::format("/proc/self/fd/{}", out.descriptor()));
        cli::SoundReader again(written);
        check(again.channels() == wav.channels() && samples_of(again).size() == samples.size());
    } catch (const cli::Failure &) {  // tells of bad input
    }
    close(file);
}
