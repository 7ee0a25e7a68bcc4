// The companion's reader of sounds: any bytes, and what it read written and read again.
#include <sys/mman.h>
#include <unistd.h>

#include "../../tools/failure.h"
#include "../../tools/io/wav.h"
#include "input.h"

using namespace fuzz;

static Doubles samples_of(tools::WavReader &wav) {
    law(wav.channels() >= 1);
    Doubles all, block(tools::kWavFrames * wav.channels());
    while (const std::size_t count = wav.read(block)) {
        law(count <= block.size() && count % wav.channels() == 0);
        all.insert(all.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(count));
    }
    return all;
}

void fuzz::test(Input &input) {
    const auto bytes = input.ConsumeRemainingBytes<char>();
    const int file = memfd_create("sound", 0);
    law(write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    tools::Output out("/tmp/never_committed");
    try {
        tools::Source source(fmt::format("/proc/self/fd/{}", file));
        tools::WavReader wav(source);
        const Doubles samples = samples_of(wav);
        tools::WavWriter writer(out, wav);
        writer.write(samples);
        writer.finish();
        tools::Source written(fmt::format("/proc/self/fd/{}", out.descriptor()));
        tools::WavReader again(written);
        law(again.channels() == wav.channels() && samples_of(again).size() == samples.size());
    } catch (const tools::Failure &) {  // tells of bad input
    }
    close(file);
}
