// What ends a run: an exit status and the one line that says why.
#pragma once

#include <fmt/format.h>

#include <cstdio>
#include <stdexcept>
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

inline bool progress_is_shown = false;  // on the last line of the terminal

inline void erase_progress() {
    if (progress_is_shown) std::fputs("\r\033[K", stderr);
    progress_is_shown = false;
}

// Where nobody listens to messages, the work goes on all the same.
inline void to_stderr(const std::string &text) {
    erase_progress();
    std::fputs(text.c_str(), stderr);
}

// A remark on stderr; the work goes on.
template <class... Arguments>
void remark(fmt::format_string<Arguments...> text, Arguments &&...arguments) {
    to_stderr("mensura: " + fmt::format(text, std::forward<Arguments>(arguments)...) + "\n");
}

}  // namespace cli
