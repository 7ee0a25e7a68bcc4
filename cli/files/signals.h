// What the program sets up before it opens a file: standard descriptors and signals.
#pragma once

namespace cli {

// Opens those of the first three descriptors that are closed: the next file would take their place, and receive
// messages.
void open_standard_descriptors();

// From now on an interrupted run removes the temporary file that it is writing, and writing into a closed pipe is an
// error like any other, so that the run can clean up.
void handle_signals();

// Ends the program by SIGPIPE, in silence, as writing into a closed pipe ends any other program.  Returns if this one
// was started with that signal ignored: then it must not end by it.
void end_by_broken_pipe();

}  // namespace cli
