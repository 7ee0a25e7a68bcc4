// Where data go: standard output, or a file that appears only when it is complete.
#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/files/temporary.h"

namespace cli {

class Output {
  public:
    // "" or "-" is standard output.  A regular file is replaced by commit(); a device or a pipe is written directly.
    explicit Output(const std::string &file);
    ~Output();  // without commit(): what has not been flushed is dropped, and the file does not appear
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    void write(std::string_view text) { used_ += text.copy(room(text.size()), text.size()); }
    // In the fewest digits that read back as the same number.
    void number(double value, char decimal = '.');
    bool full() const { return used_ >= kBlock; }
    void flush();
    void commit();

    const std::string &name() const { return name_; }
    int descriptor() const { return descriptor_; }

  private:
    static constexpr std::size_t kBlock = 1 << 16;

    // Where so many bytes can be put behind those that are there.
    char *room(std::size_t count) {
        if (buffer_.size() - used_ < count) buffer_.resize(std::max(used_ + count, 2 * buffer_.size()));
        return buffer_.data() + used_;
    }

    std::string name_;
    std::vector<char> buffer_;
    std::size_t used_ = 0;  // bytes of the buffer that have not been flushed
    std::optional<Replacement> replacement_;
    int descriptor_ = -1;
};

// Copies a whole file of which only the descriptor is known.
void copy_contents(int from, Output &to);

// Copies what is left of a file or comes through a pipe.
void copy_rest(int from, Output &to);

}  // namespace cli
