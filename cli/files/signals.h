// What the program sets up before it opens a file: standard descriptors and signals.
#pragma once

namespace cli {

// Opens those of the first three descriptors that are closed: the next file would take their place, and receive
// messages.
void open_standard_descriptors();

// From now on an interrupted run removes the temporary file that it is writing, and writing into a closed pipe is an
// error like any other.
void handle_signals();

}  // namespace cli
