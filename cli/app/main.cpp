// mensura: measurement data filtered, transformed and looked at from the command line.
//
// Exit status: 0 done, 1 the work failed, 2 the call or the input is wrong.
#include "cli/app/program.h"
#include "cli/files/output.h"

int main(int argc, char **argv) {
    cli::open_standard_descriptors();
    cli::remove_temporary_on_signals();
    return cli::run_and_complain(argc, argv);
}
