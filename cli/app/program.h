// The program as a whole: its commands, and one run of it.
#pragma once

#include "cli/app/command_line.h"

namespace cli {

// Adds every command and the options of the program itself.
void describe(CLI::App &program);

// Parses the call and runs the command that it names; returns the exit status.  A command's Failure passes through.
int run(CLI::App &program, int argc, char **argv);

// Describes the program and runs it; failures are reported on stderr.
int run_and_report(int argc, char **argv);

}  // namespace cli
