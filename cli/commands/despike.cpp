// mensura despike: replaces spikes in every column by the sample before them.
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
    "  mensura despike --limit 0.5 ecg.csv > clean.csv\n"
    "  logger | mensura despike --limit 20 --column pressure | mensura average --length 16 | viewer\n";

struct Options {
    Files files;
    double limit = 0;
};

void run(const Options &options) {
    const double limit = options.limit;
    if (limit <= 0) reject("--limit {} is not above 0", limit);
    Source source(options.files.input.file);
    refuse_sound(source);
    const MakeFilter make = [limit]() -> ChannelFilter {
        const auto filter = std::make_shared<AmplitudeLimitOnline>();
        init_amlitude_limit_filer_online(filter.get(), limit);
        return [filter](double x) { return amlitude_limit_filer_online(filter.get(), x); };
    };
    ChannelByChannel filter(make);
    stream_table(source, options.files, filter, fmt::format("spikes above {:.6g} rejected", limit));
}

}  // namespace

void add_despike(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app = program.add_command("despike",
                                            "replace spikes in the columns of a table by the sample before them; the "
                                            "first 6 samples pass, and a new level from its 19th sample on",
                                            kExamples);
    add_quantity(
        app, "--limit", options->limit, kPlain,
        "a sample that differs from the last one accepted by more than L, in the unit of the column, is a spike")
        .type_name("L")
        .required();
    add_files(app, options->files);
    app.callback([options] { run(*options); });
}

}  // namespace cli
