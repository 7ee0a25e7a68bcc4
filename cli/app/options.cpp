#include "cli/app/options.h"

namespace cli {

void add_columns(const Command &app, std::vector<std::string> &columns) {
    app.add_option("--column", columns, "column by name or number from 1; repeatable; default every column of numbers")
        .type_name("NAME|N")
        .one_at_a_time();
}

void add_output(const Command &app, std::string &output) {
    app.add_option("-o,--output", output, "write to this file instead of standard output").type_name("FILE");
}

void add_files(const Command &app, Files &files) {
    app.add_option("FILE", files.input, "input; - or none is standard input");
    add_columns(app, files.columns);
    add_output(app, files.output);
    add_plot_options(app, files.plot);
}

}  // namespace cli
