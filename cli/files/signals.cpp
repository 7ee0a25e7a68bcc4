#include "cli/files/signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

#include "cli/files/temporary.h"

namespace cli {

namespace {

bool broken_pipes_were_ignored = false;

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
    broken_pipes_were_ignored = std::signal(SIGPIPE, SIG_IGN) == SIG_IGN;
}

void end_by_broken_pipe() {
    if (broken_pipes_were_ignored) return;
    std::signal(SIGPIPE, SIG_DFL);
    std::raise(SIGPIPE);
}

}  // namespace cli
