// The program as a whole: its commands, and one run of it.
#pragma once

#include <string_view>

#include "cli/app/command_line.h"

namespace cli {

// Adds the options of the program itself and its commands: only the one that is named, if it can do without the others,
// because setting up all of them takes longer than a small job.
void describe(CLI::App &program, std::string_view command = "");

// Parses the call and runs the command that it names; returns the exit status.  A command's Failure passes through.
int run(CLI::App &program, int argc, char **argv);

// Describes the program and runs it; failures are reported on stderr.
int run_and_report(int argc, char **argv);

}  // namespace cli
