// Where data go: standard output, or a file that appears only when it is complete.
#pragma once

#include <string>
#include <string_view>

namespace cli {

class Output {
  public:
    // "" or "-" is standard output.  A regular file is written as a nameless one beside it, and keeps its old content
    // until commit(); a device or a pipe is written directly.
    explicit Output(const std::string &file);
    ~Output();  // without commit(): what has not been flushed is dropped, and the file does not appear
    Output(const Output &) = delete;
    Output &operator=(const Output &) = delete;

    void write(std::string_view text) { buffer_.append(text); }
    void number(double value);  // in the fewest digits that read back as the same number
    bool full() const { return buffer_.size() >= 1 << 16; }
    void flush();
    void commit();

    const std::string &name() const { return name_; }
    int descriptor() const { return descriptor_; }

  private:
    void publish();

    std::string name_, target_, temporary_;  // target: the file that is replaced; temporary: "" while it has no name
    std::string buffer_;
    int descriptor_ = -1;
};

// Copies a whole file of which only the descriptor is known.
void copy_contents(int from, Output &to);

// Copies what is left of a file or comes through a pipe.
void copy_rest(int from, Output &to);

// A nameless file that vanishes with its descriptor.
int nameless_file();

// A closed one of the first three would be taken by the next file that is opened, which messages would then go into.
void open_standard_descriptors();

// From now on an interrupted run removes the temporary file that it is writing.
void remove_temporary_on_signals();

}  // namespace cli
