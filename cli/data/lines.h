// The lines of a text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "cli/data/source.h"

namespace cli {

struct Line {
    std::string_view text, end;  // end: what closes it, "\n", "\r\n" or, at the end of the file, nothing
    std::size_t number = 0;      // from 1
};

class LineReader {
  public:
    explicit LineReader(Source &source) : source_(source) {}
    // The next line, valid until the next call; false at the end.
    bool next(Line &line);
    // Whether the whole next line has been received already.
    bool next_is_received() const { return source_.pending().find('\n') != std::string_view::npos; }
    const std::string &name() const { return source_.name(); }

  private:
    Source &source_;
    std::size_t number_ = 0;
};

}  // namespace cli
