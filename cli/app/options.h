// Options that several commands share: the input, the choice of its columns, where the results go.
#pragma once

#include <string>
#include <vector>

#include "cli/app/command_line.h"
#include "cli/plot/options.h"

namespace cli {

struct Files {
    std::string input, output;
    std::vector<std::string> columns;
    PlotOptions plot;
};

void add_files(const Command &app, Files &files);
void add_columns(const Command &app, std::vector<std::string> &columns);
void add_output(const Command &app, std::string &output);

}  // namespace cli
