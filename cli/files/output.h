// Where data go: standard output, or a file that appears only when it is complete.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "cli/files/temporary.h"

namespace cli {

class Output {
  public:
    // "" or "-" is standard output.  A regular file is replaced by commit(); a device or a pipe is written directly.
    explicit Output(const std::string &file);
    ~Output();  // without commit(): what has not been flushed is dropped, and the file does not appear
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    void write(std::string_view text) { buffer_.append(text); }
    // In the fewest digits that read back as the same number.
    void number(double value, char decimal = '.');
    bool full() const { return buffer_.size() >= kBlock; }
    void flush();
    void commit();

    const std::string &name() const { return name_; }
    int descriptor() const { return descriptor_; }

  private:
    static constexpr std::size_t kBlock = 1 << 16;

    std::string name_, buffer_;
    std::optional<Replacement> replacement_;
    int descriptor_ = -1;
};

// Copies a whole file of which only the descriptor is known.
void copy_contents(int from, Output &to);

// Copies what is left of a file or comes through a pipe.
void copy_rest(int from, Output &to);

}  // namespace cli
