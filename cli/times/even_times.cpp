#include "cli/times/even_times.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace cli {

namespace {

constexpr double kMostOff = 0.5 - 1e-9;  // in usual steps: passes times rounded to milliseconds, but no lost row
constexpr std::size_t kFirst = 16;       // steps that a stream begins with

double middle(std::vector<double> &lengths) {
    const auto middle = lengths.begin() + static_cast<std::ptrdiff_t>(lengths.size() / 2);
    std::nth_element(lengths.begin(), middle, lengths.end());
    return *middle;
}

bool is_near(double length, double usual) { return std::abs(length / usual - 1) <= kMostOff; }

// The mean of the lengths below `most`, if all of these are near it; else 0.
double even_mean(const std::vector<double> &lengths, double most) {
    double sum = 0;
    std::size_t count = 0;
    for (const double length : lengths)
        if (length < most) {
            sum += length;
            ++count;
        }
    const double mean = sum / static_cast<double>(count);
    const bool even = std::ranges::all_of(lengths, [&](double x) { return !(x < most) || is_near(x, mean); });
    return count > 0 && even ? mean : 0;
}

// Rounding may make steps of one and of two units: then their mean is usual.  Where rows are lost, it is the median.
double usual_length(const std::vector<TimeStep> &steps) {
    constexpr double kBeyondRounding = 2.5;  // medians
    std::vector<double> lengths;
    for (const TimeStep &step : steps)
        if (step.known && step.length > 0) lengths.push_back(step.length);
    if (lengths.empty()) return 0;
    if (const double mean = even_mean(lengths, HUGE_VAL); mean > 0) return mean;
    const double median = middle(lengths), mean = even_mean(lengths, kBeyondRounding * median);
    return mean > 0 ? mean : median;
}

}  // namespace

double whole_hertz(double rate) {
    const double whole = std::round(rate);
    return std::abs(rate - whole) <= 1e-5 * whole ? whole : rate;
}

std::optional<TimeStep> TimeSteps::add(double time, std::size_t line) {
    ++rows_;
    ++step_.rows;
    if (std::isnan(time)) {
        step_.known = false;
        return {};
    }
    if (begun_ && time == last_) {
        ++repeated_;
        return {};
    }
    TimeStep step = std::exchange(step_, {.rows = 0});
    step.length = time - last_;
    step.line = line;
    step.row = rows_ - 1;
    last_ = time;
    if (begun_) {
        back_ += step.length < 0;
        return step;
    }
    begun_ = true;
    first_ = time;
    return {};
}

double TimeSteps::mean_rate() const { return whole_hertz(static_cast<double>(rows_ - 1) / (last_ - first_)); }

void Spacing::learn(const TimeStep &step) {
    strange_ = strange_ || !step.known || step.length <= 0;
    if (!step.known || step.length <= 0) return;
    if (first_.size() >= kFirst) {
        count(step);
        if (steps_ > 0) usual_ = seconds_ / static_cast<double>(steps_);
        return;
    }
    first_.push_back(step);
    usual_ = usual_length(first_);
    count_all(first_);
}

void Spacing::learn(const std::vector<TimeStep> &steps) {
    usual_ = usual_length(steps);
    count_all(steps);
}

// Of a coarse clock, the first step is not whole: the rows before the first are not there.
void Spacing::count_all(const std::vector<TimeStep> &steps) {
    steps_ = rows_ = 0;
    seconds_ = 0;
    even_ = true;
    const bool coarse = std::ranges::any_of(steps, [](const TimeStep &step) { return step.rows > 1; });
    for (std::size_t i = coarse && steps.size() > 1 ? 1 : 0; i < steps.size(); ++i) count(steps[i]);
    if (steps_ > 0) usual_ = seconds_ / static_cast<double>(steps_);
}

void Spacing::count(const TimeStep &step) {
    const bool usual = step.known && is_usual(step.length);
    even_ = even_ && usual && step.rows == 1;
    if (!usual) return;
    ++steps_;
    rows_ += step.rows;
    seconds_ += step.length;
}

double Spacing::rate() const { return whole_hertz(rows_ > 0 ? static_cast<double>(rows_) / seconds_ : 1 / usual_); }

bool Spacing::is_long(const TimeStep &step) const {
    return is_known() && step.length > usual_ && !is_usual(step.length);
}

bool Spacing::is_short(const TimeStep &step) const {
    return is_known() && (step.length <= 0 || (step.length < usual_ && !is_usual(step.length)));
}

bool Spacing::is_usual(double length) const { return is_near(length, usual_); }

// A long step after a short one may only be late.
std::size_t Places::missing(const TimeStep &step, const Spacing &spacing) {
    constexpr double kMost = 1e15, kSlowly = 16;
    if (!spacing.is_known() || step.length <= 0) return 0;
    late_ = std::min(late_ + step.length * spacing.rate() - static_cast<double>(step.rows), kMost);
    if (!spacing.is_long(step)) {
        usually_late_ += (late_ - usually_late_) / kSlowly;
        return 0;
    }
    const double rows = std::max(0.0, std::round(late_ - usually_late_));  // 0 of NaN, which infinite steps lead to
    late_ -= rows;
    return static_cast<std::size_t>(rows);
}

}  // namespace cli
