// The lines of a text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "cli/input/source.h"

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
    bool next_is_received();
    // What has been received of the lines to come.
    std::string_view received() const { return source_.pending(); }
    const std::string &name() const { return source_.name(); }

  private:
    void refuse_zeros(std::size_t length);

    Source &source_;
    std::size_t number_ = 0;
    std::size_t length_ = std::string_view::npos;  // of the next line, where it is known
    std::size_t checked_ = 0;                      // bytes to come that hold no zero
};

}  // namespace cli
