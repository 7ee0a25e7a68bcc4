// The commands, one a file in commands/: each adds itself, its options and what it does to the program.
#pragma once

#include <string>

#include "cli/app/command_line.h"

namespace cli {

void add_design(CLI::App &program);
void add_filter(CLI::App &program);
void add_spectrum(CLI::App &program);
void add_tone(CLI::App &program);
void add_window(CLI::App &program);
void add_smooth(CLI::App &program);
void add_derive(CLI::App &program);
void add_despike(CLI::App &program);
void add_average(CLI::App &program);
void add_track(CLI::App &program);
void add_roots(CLI::App &program);
void add_demo(CLI::App &program);

// A command with the line that describes it and the examples that its help begins with.
CLI::App *add_command(CLI::App &program, const std::string &name, const std::string &line, const std::string &examples);

}  // namespace cli
