// The commands.  Each function adds one, with its options and its action, to the program; it is in commands/<name>.cpp.
#pragma once

#include "cli/app/command_line.h"

namespace cli {

void add_design(const Command &program);
void add_filter(const Command &program);
void add_decimate(const Command &program);
void add_spectrum(const Command &program);
void add_spectrogram(const Command &program);
void add_tone(const Command &program);
void add_stats(const Command &program);
void add_window(const Command &program);
void add_smooth(const Command &program);
void add_derive(const Command &program);
void add_despike(const Command &program);
void add_average(const Command &program);
void add_track(const Command &program);
void add_roots(const Command &program);
void add_demo(const Command &program);
void add_completion(const Command &program);

}  // namespace cli
