// Bytes from a file or from standard input, in the blocks in which they come, unpacked and as UTF-8.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "cli/input/decode.h"

namespace cli {

// Thrown when standard input is to be read and is a terminal, where nobody may be typing.
struct InputIsTerminal {};

// Whether a file's name, "" or "-", means standard input.
bool is_standard_input(const std::string &file);

class Source {
  public:
    explicit Source(const std::string &file);
    // Text that has been read before, under the name of its file.  It must outlive the source.
    Source(const std::string &name, std::string_view text);
    Source(const Source &) = delete;
    Source &operator=(const Source &) = delete;

    const std::string &name() const { return name_; }
    int descriptor() const { return descriptor_; }
    // Whether the descriptor gives these very bytes, neither packed nor in another encoding.
    bool is_plain();
    // The bytes still to come begin with this (as far as they have been read).
    std::string_view pending() const { return bytes_.pending(); }
    // Waits for more bytes and appends them to the pending ones; false at the end.
    bool more();
    void skip(std::size_t count) { bytes_.skip(count); }
    // Everything still to come.
    std::string rest();

  private:
    void recognise();

    std::string name_;
    int descriptor_ = -1;
    Bytes bytes_;
    bool recognised_ = false, plain_ = true;
};

}  // namespace cli
