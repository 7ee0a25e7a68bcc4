// mensura: measurement data filtered, transformed and looked at from the command line.
//
// Exit status: 0 done, 1 the work failed, 2 the call or the input is wrong.
#include "io/output.h"
#include "program.h"

int main(int argc, char **argv) {
    tools::open_standard_descriptors();
    tools::remove_temporary_on_signals();
    return tools::run_and_complain(argc, argv);
}
