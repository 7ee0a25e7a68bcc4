// mensura: filters, transforms and draws measurement data from the command line.
//
// Exit status: 0 done, 1 the work failed, 2 the call or the input is wrong; ended by SIGPIPE when the reader of
// standard output has gone.
#include "cli/app/program.h"
#include "cli/files/signals.h"

int main(int argc, char **argv) {
    cli::open_standard_descriptors();
    cli::handle_signals();
    return cli::run_and_report(argc, argv);
}
