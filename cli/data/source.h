// Bytes from a file or from standard input, in the blocks in which they come.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "cli/app/progress.h"

namespace cli {

// Thrown when standard input is to be read and is a terminal, where nobody may be typing.
struct InputIsTerminal {};

class Source {
  public:
    // A file; "" or "-" is standard input.
    explicit Source(const std::string &file);
    // Text that has been read before, under the name of its file.
    Source(const std::string &name, std::string text);
    ~Source();
    Source(const Source &) = delete;
    Source &operator=(const Source &) = delete;

    const std::string &name() const { return name_; }
    int descriptor() const { return descriptor_; }
    // The bytes still to come begin with this (as far as they have been read).
    std::string_view pending() const { return std::string_view(buffer_).substr(position_); }
    // Waits for more bytes and appends them to the pending ones; false at the end.
    bool more();
    void skip(std::size_t count) { position_ += count; }
    // Everything still to come.
    std::string rest();

  private:
    std::string name_, buffer_;
    std::size_t position_ = 0, consumed_ = 0, size_ = 0;  // size 0: not known
    int descriptor_ = -1;
    Progress progress_{name_};
};

}  // namespace cli
