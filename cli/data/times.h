// Columns of times.
#pragma once

#include <cstddef>
#include <string>

namespace cli {

// Seconds in the unit of a column called time or t: "time", "t", "time_ms", "Time [s]", but not T, a temperature; 0 for
// any other name.
double unit_of_time(const std::string &name);

// The sampling rate of ascending times in seconds; whole hertz if it is within 10 ppm of them, better than a sampling
// clock keeps, because times are rounded.  Needs the same memory for any number of times.
class EvenTimes {
  public:
    explicit EvenTimes(const std::string &file) : file_(file) {}
    void add(double time, std::size_t line, std::size_t column);
    double rate() const;

  private:
    struct Step {
        double length = 0;  // s
        std::size_t line = 0;
    };
    void refuse_if_uneven(const Step &step, double rate) const;

    const std::string &file_;
    std::size_t column_ = 0, count_ = 0;
    double first_ = 0, last_ = 0;
    Step shortest_, longest_;
};

}  // namespace cli
