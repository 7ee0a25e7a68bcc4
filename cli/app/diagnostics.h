// Failures, which end the run with an exit status and one line that gives the reason, and remarks, which do not end it.
#pragma once

#include <fmt/format.h>

#include <stdexcept>
#include <string>
#include <utility>

namespace cli {

enum class Status { Done = 0, Failed = 1, BadInput = 2 };

class Failure : public std::runtime_error {
  public:
    Failure(Status status, const std::string &line) : std::runtime_error(line), status_(status) {}
    Status status() const { return status_; }

  private:
    Status status_;
};

// The reader of standard output has gone, as `head` does when it has seen enough.
class ReaderGone : public Failure {
  public:
    ReaderGone() : Failure(Status::Failed, "standard output: the reader has closed the pipe") {}
};

// The work failed: the disk, a pipe, memory, another program.
template <class... Arguments>
[[noreturn]] void fail(fmt::format_string<Arguments...> text, Arguments &&...arguments) {
    throw Failure(Status::Failed, fmt::format(text, std::forward<Arguments>(arguments)...));
}

// The call or the input is wrong; the line says what would be right.
template <class... Arguments>
[[noreturn]] void reject(fmt::format_string<Arguments...> text, Arguments &&...arguments) {
    throw Failure(Status::BadInput, fmt::format(text, std::forward<Arguments>(arguments)...));
}

// Writes to stderr, in the place of a line of progress.  An error there is ignored: the data do not depend on it.
void to_stderr(const std::string &text);

// A line on stderr that begins with the program's name; control characters in it are replaced.
void report(const std::string &line);

// Reports what the user should know; the run goes on.
template <class... Arguments>
void remark(fmt::format_string<Arguments...> text, Arguments &&...arguments) {
    report(fmt::format(text, std::forward<Arguments>(arguments)...));
}

}  // namespace cli
