// Columns of times.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace cli {

// Seconds in the unit of a column called time or t: "time", "t", "time_ms", "Time [s]", but not T, a temperature; 0 for
// any other name.
double unit_of_time(const std::string &name);

// The sampling rate of ascending times in seconds; whole hertz if it is within 10 ppm of them, better than a sampling
// clock keeps, because times are rounded.
class EvenTimes {
  public:
    explicit EvenTimes(const std::string &file) : file_(file) {}
    void add(double time, std::size_t line, std::size_t column);
    double rate() const;

  private:
    const std::string &file_;
    std::size_t column_ = 0;
    std::vector<double> times_;
    std::vector<std::size_t> lines_;
};

}  // namespace cli
