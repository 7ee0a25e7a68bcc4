// Evenly spaced times, and where they are not even.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace cli {

// Clocks that are read coarsely give several rows the same time.  A step leads from one time to the next that differs.
struct TimeStep {
    double length = 0;     // s; below 0: back
    std::size_t rows = 1;  // that it spans
    bool known = true;     // no time within it is missing
    std::size_t line = 0;  // where it ends
    std::size_t row = 0;   // from 0
};

// Makes steps of the times of rows, in order.
class TimeSteps {
  public:
    // A time that is missing is NaN.
    std::optional<TimeStep> add(double time, std::size_t line);
    std::size_t rows() const { return rows_; }
    std::size_t repeated() const { return repeated_; }  // rows with the time of the row before
    std::size_t back() const { return back_; }          // steps back
    // The mean rate, of whole hertz if it is within 10 ppm of them.
    double mean_rate() const;

  private:
    bool begun_ = false;
    double first_ = 0, last_ = 0;
    TimeStep step_{.rows = 0};
    std::size_t rows_ = 0, repeated_ = 0, back_ = 0;
};

// The usual step of a column of times, and the rate.  Holes and steps back do not count.
class Spacing {
  public:
    // Learns from one step after the other: from the median of the first ones, then from the mean of all usual ones.
    void learn(const TimeStep &step);
    // Learns from all at once.
    void learn(const std::vector<TimeStep> &steps);

    bool is_known() const { return usual_ > 0; }
    double step() const { return usual_; }               // s
    double rate() const;                                 // rows in a second, rounded like whole_hertz()
    bool is_even() const { return even_ && !strange_; }  // all steps were usual

    bool is_long(const TimeStep &step) const;  // 1.5 usual steps or more
    // Half of the usual step or less, or back.
    bool is_short(const TimeStep &step) const;

  private:
    bool is_usual(double length) const;
    void count(const TimeStep &step);
    void count_all(const std::vector<TimeStep> &steps);

    std::vector<TimeStep> first_;  // the first ones
    double usual_ = 0;             // s
    double seconds_ = 0;           // of all usual steps
    std::size_t steps_ = 0, rows_ = 0;
    bool even_ = true, strange_ = false;
};

// Rows in their places on an even grid, of which they may be off by less than half a sample.
class Places {
  public:
    // The rows that are missing within the next step.
    std::size_t missing(const TimeStep &step, const Spacing &spacing);

  private:
    double late_ = 0, usually_late_ = 0;  // samples
};

// Whole hertz if the rate is within 10 ppm of them, better than a sampling clock keeps, because times are rounded.
double whole_hertz(double rate);

}  // namespace cli
