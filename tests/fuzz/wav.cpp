// The companion's reader of sounds: any bytes, in a file and as they come through a pipe, and what it read written to a
// file and to a stream and read again.
#include <sys/mman.h>
#include <unistd.h>

#include "cli/app/diagnostics.h"
#include "cli/sound/sound.h"
#include "input.h"

using namespace fuzz;

static Doubles samples_of(cli::SoundReader &sound) {
    check(sound.channels() >= 1);
    Doubles all, block(cli::kSoundFrames * sound.channels());
    while (const std::size_t count = sound.read(block)) {
        check(count <= block.size() && count % sound.channels() == 0);
        all.insert(all.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(count));
        if (all.size() > 1 << 20) break;  // a few bytes of a compressed sound may stand for hours
    }
    return all;
}

static void written_and_read(cli::Source &source, const std::string &file) {
    cli::Output out(file);
    try {
        cli::SoundReader sound(source);
        const Doubles samples = samples_of(sound);
        cli::SoundWriter writer(out, sound);
        writer.write(samples);
        writer.finish();
        if (file == "/dev/null") return;
        cli::Source written(fmt::format("/proc/self/fd/{}", out.descriptor()));
        cli::SoundReader again(written);
        check(again.channels() == sound.channels() && samples_of(again).size() == samples.size());
    } catch (const cli::Failure &) {  // tells of bad input
    }
}

void fuzz::test(Input &input) {
    const std::string bytes = input.ConsumeRemainingBytesAsString();
    const int descriptor = memfd_create("sound", 0);
    check(write(descriptor, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    cli::Source file(fmt::format("/proc/self/fd/{}", descriptor)), stream("stream", bytes);
    written_and_read(file, "/tmp/never_committed");
    written_and_read(stream, "/dev/null");
    close(descriptor);
}
