#include "cli/plot/gnuplot.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "cli/app/diagnostics.h"
#include "cli/files/temporary.h"

namespace cli {

namespace {

constexpr int kNotFound = 127;  // the status with which a shell reports a program that is not there

int file_of(std::string_view text) {
    const int file = nameless_file();
    while (!text.empty()) {
        const ssize_t written = write(file, text.data(), text.size());
        if (written < 0) fail("the script for gnuplot: {}", std::strerror(errno));
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    lseek(file, 0, SEEK_SET);
    return file;
}

// gnuplot's last line gives the reason; the lines before it show the command and the place in it.
std::string last_line_of(int descriptor) {
    std::array<char, 4096> text;
    const off_t size = lseek(descriptor, 0, SEEK_END);
    const ssize_t got = pread(descriptor, text.data(), text.size(), std::max<off_t>(size - 4096, 0));
    std::string_view lines(text.data(), static_cast<std::size_t>(got > 0 ? got : 0));
    lines = lines.substr(0, lines.find_last_not_of(" \n") + 1);
    lines.remove_prefix(lines.find_last_of('\n') + 1);
    return std::string(lines.substr(std::min(lines.find_first_not_of(' '), lines.size())));
}

[[noreturn]] void become_gnuplot(int script, int picture, int messages) {
    dup2(script, STDIN_FILENO);
    dup2(picture, STDOUT_FILENO);
    dup2(messages, STDERR_FILENO);
    std::signal(SIGPIPE, SIG_DFL);
    unsetenv("GNUTERM");  // the script names its terminal, and gnuplot fails where it does not know this one
    execlp("gnuplot", "gnuplot", "--default-settings", "-", nullptr);
    _exit(kNotFound);
}

}  // namespace

// The picture comes through a pipe, because gnuplot does not report that it cannot write.
void run_gnuplot(const std::string &script, Output &picture) {
    std::array<int, 2> ends;
    const int commands = file_of(script), messages = nameless_file();
    if (pipe2(ends.data(), O_CLOEXEC) != 0) fail("gnuplot: {}", std::strerror(errno));
    const pid_t child = fork();
    if (child < 0) fail("gnuplot: {}", std::strerror(errno));
    if (child == 0) become_gnuplot(commands, ends[1], messages);
    close(commands);
    close(ends[1]);
    copy_rest(ends[0], picture);
    close(ends[0]);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    const std::string reason = last_line_of(messages);
    close(messages);
    if (WIFEXITED(status) && WEXITSTATUS(status) == kNotFound)
        fail("gnuplot, which draws the pictures, is not installed: apt-get install gnuplot-nox");
    if (status != 0) fail("gnuplot failed: {}", reason.empty() ? "no reason given" : reason);
}

}  // namespace cli
