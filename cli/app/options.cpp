#include "cli/app/options.h"

namespace cli {

void add_reading(const Command &app, InputOptions &input) {
    app.add_option("--column", input.columns,
                   "column by name or number from 1; repeatable; default every column of numbers")
        .type_name("NAME|N")
        .one_at_a_time();
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
