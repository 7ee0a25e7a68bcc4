// mensura average: the moving average of every column.
#include <mensura/online.h>

#include <memory>

#include "cli/app/commands.h"
#include "cli/app/diagnostics.h"
#include "cli/app/options.h"
#include "cli/app/quantity.h"
#include "cli/data/stream.h"
#include "cli/input/source.h"
#include "cli/sound/sound.h"

namespace cli {

namespace {

constexpr const char *kExamples =
    "  mensura average --length 16 room.csv > calm.csv\n"
    "  logger | mensura average --length 50 --column 2 | viewer\n";

constexpr int kLongest = MOVING_AVERAGE_CAPACITY;

struct Options {
    Files files;
    int length = 0;
};

void run(const Options &options) {
    const int length = options.length;
    if (length < 1 || length > kLongest) reject("--length {} is not from 1 to {}", length, kLongest);
    Source source(options.files.input.file);
    refuse_sound(source);
    const MakeFilter make = [length]() -> ChannelFilter {
        const auto filter = std::make_shared<MovingAverageOnline>();
        init_move_average_filter_online(filter.get(), length);
        return [filter](double x) { return move_average_filter_online(filter.get(), x); };
    };
    ChannelByChannel filter(make);
    stream_table(source, options.files, filter, fmt::format("average of {} samples", length));
}

}  // namespace

void add_average(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app = program.add_command(
        "average", "replace each sample of a table's columns by the mean of the last ones", kExamples);
    add_count(app, "--length", options->length,
              fmt::format("samples in the mean, 1 to {}; the first means are of all samples so far", kLongest))
        .required();
    add_files(app, options->files);
    app.callback([options] { run(*options); });
}

}  // namespace cli
