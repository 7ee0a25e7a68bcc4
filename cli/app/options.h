// Options that several commands share: the input and how it is read, where the results go.
#pragma once

#include <string>

#include "cli/app/command_line.h"
#include "cli/input/input.h"
#include "cli/plot/options.h"

namespace cli {

struct Files {
    InputOptions input;
    std::string output;
    PlotOptions plot;
};

void add_files(const Command &app, Files &files);
// The argument FILE, and the options of add_reading().
void add_input(const Command &app, InputOptions &input);
// Which columns are read, and how.
void add_reading(const Command &app, InputOptions &input);
void add_output(const Command &app, std::string &output);

}  // namespace cli
