#include "cli/app/options.h"

#include "cli/app/names.h"

namespace cli {

namespace {

struct GapWord {
    const char *word;
    GapPolicy policy;
};
constexpr GapWord kGaps[] = {{"hold", GapPolicy::Hold}, {"split", GapPolicy::Split}, {"error", GapPolicy::Error}};

struct Mark {
    const char *word;
    char mark;
};
constexpr Mark kMarks[] = {{"point", '.'}, {"comma", ','}, {".", '.'}, {",", ','}};

}  // namespace

void add_reading(const Command &app, InputOptions &input) {
    app.add_option("--column", input.columns,
                   "column by name or number from 1; repeatable; default every column of numbers")
        .type_name("NAME|N")
        .one_at_a_time();
    app.add_option("--time", input.time,
                   "the column of times by name or number; default: the first that is called so, such as time, t, "
                   "timestamp, date")
        .type_name("NAME|N");
    add_choice(
        app, "--decimal", kMarks, &Mark::word, [&input](const Mark &mark) { input.decimal = mark.mark; },
        "the decimal mark of a table: {}; default: what its first numbers show")
        .type_name("MARK");
    app.add_flag("--strict", input.strict,
                 "refuse a table with a cell that is not a number; default: a stream goes on");
    add_choice(
        app, "--gaps", kGaps, &GapWord::word, [&input](const GapWord &gap) { input.gaps = gap.policy; },
        "where rows or cells are missing: {}; hold, the default, takes the last value (track: the model predicts), "
        "split starts anew after a long hole, error refuses")
        .type_name("HOW");
}

void add_input(const Command &app, InputOptions &input) {
    app.add_option("FILE", input.file, "input; - or none is standard input");
    add_reading(app, input);
}

void add_output(const Command &app, std::string &output) {
    app.add_option("-o,--output", output, "write to this file instead of standard output").type_name("FILE");
}

void add_files(const Command &app, Files &files) {
    add_input(app, files.input);
    add_output(app, files.output);
    add_plot_options(app, files.plot);
}

}  // namespace cli
