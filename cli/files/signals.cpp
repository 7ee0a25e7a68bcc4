#include "cli/files/signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

#include "cli/files/temporary.h"

namespace cli {

namespace {

extern "C" void stop(int signal_number) {
    remove_named_temporary();
    std::signal(signal_number, SIG_DFL);
    std::raise(signal_number);
}

}  // namespace

void open_standard_descriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(descriptor, F_GETFD) < 0) static_cast<void>(open("/dev/null", O_RDWR));
}

void handle_signals() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        if (std::signal(number, stop) == SIG_IGN) std::signal(number, SIG_IGN);  // as under nohup
    std::signal(SIGPIPE, SIG_IGN);
}

}  // namespace cli
