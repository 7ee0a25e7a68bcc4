// A line on the terminal that shows how much of a long input has been read.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <utility>

namespace cli {

class Progress {
  public:
    explicit Progress(std::string name) : name_(std::move(name)) {}
    ~Progress() { erase(); }
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    // Shows the line at most once a second, and only where stderr is a terminal and the data go elsewhere.  A total of
    // 0 means that it is not known.
    void show(std::size_t bytes, std::size_t total);

    // Clears the line, so that a message can take its place.
    static void erase();

  private:
    std::string name_;
    std::chrono::steady_clock::time_point shown_at_ = std::chrono::steady_clock::now();
    inline static bool on_screen_ = false;  // static, because all progress shares the last line of one terminal
};

}  // namespace cli
