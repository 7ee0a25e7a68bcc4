// Bytes from a file or from standard input, in the pieces in which they come, and the lines in them.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace cli {

// Standard input is wanted but is a terminal, where nobody may be typing.
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
    // Waits for more bytes behind the pending ones; false at the end.
    bool more();
    void skip(std::size_t count) { position_ += count; }
    // Everything still to come.
    std::string rest();

  private:
    void show_progress();

    std::string name_, buffer_;
    std::size_t position_ = 0, consumed_ = 0, size_ = 0;  // size 0: not known
    int descriptor_ = -1;
    std::chrono::steady_clock::time_point shown_at_ = std::chrono::steady_clock::now();
};

struct Line {
    std::string_view text, end;  // end: what closes it, "\n", "\r\n" or, at the end of the file, nothing
    std::size_t number = 0;      // from 1
};

class LineReader {
  public:
    explicit LineReader(Source &source) : source_(source) {}
    // The next line, valid until the next call; false at the end.
    bool next(Line &line);
    // Whether the next line has come already.
    bool ready() const { return source_.pending().find('\n') != std::string_view::npos; }
    const std::string &name() const { return source_.name(); }

  private:
    Source &source_;
    std::size_t number_ = 0;
};

}  // namespace cli
