// mensura derive: the derivative of every column.
#include <mensura/online.h>

#include <memory>
#include <span>
#include <vector>

#include "cli/app/commands.h"
#include "cli/app/diagnostics.h"
#include "cli/app/options.h"
#include "cli/app/quantity.h"
#include "cli/data/record.h"
#include "cli/data/rewrite.h"
#include "cli/input/source.h"
#include "cli/sound/sound.h"
#include "cli/table/units.h"

namespace cli {

namespace {

constexpr const char *kExamples =
    "  mensura derive drive.csv > speed.csv\n"
    "  mensura smooth --degree 3 --window 7 drive.csv | mensura derive --rate 100Hz --plot=speed.svg > speed.csv\n";

struct Options {
    Files files;
};

void run(const Options &options) {
    Source source(options.files.input.file);
    refuse_sound(source);
    Record record = read_record(source, options.files.input);
    if (record.length() < 2) reject("{}: a derivative needs 2 rows at least; there is 1", record.name);
    const double h = 1 / rate_of(record);
    const Change change = [h](const Channel &, std::span<double> piece) {
        const std::vector<double> x(piece.begin(), piece.end());
        central_difference(x.data(), piece.data(), static_cast<int>(x.size()), h);
    };
    rewrite_record(record, options.files, change, "derivative over time", 2, derivative_name);
}

}  // namespace

void add_derive(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app = program.add_command(
        "derive", "differentiate the columns of a table, in their unit per second, by central differences", kExamples);
    add_rate(app, options->files.input.rate);
    add_files(app, options->files);
    app.callback([options] { run(*options); });
}

}  // namespace cli
