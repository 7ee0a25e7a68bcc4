#include "cli/data/record_times.h"

#include <cmath>
#include <optional>

#include "cli/app/diagnostics.h"
#include "cli/data/row_gaps.h"

namespace cli {

void RecordTimes::add(TableReader &table) {
    if (!table.has_time()) return;
    if (number_ == 0) {
        number_ = table.time_column();
        column_ = table.time_name();
    }
    const double time = table.time();
    if (std::isnan(time) && (!input_.rate || input_.gaps == GapPolicy::Error)) table.reject_time();
    const std::size_t repeated = maker_.repeated(), line = table.line().number;
    const std::optional<TimeStep> step = maker_.add(time, line);
    if (step) steps_.push_back(*step);
    if (maker_.repeated() > repeated && input_.gaps == GapPolicy::Error)
        GapReport(file_, input_).same_time(line, number_);
}

// A column that is called like a time by chance does not.
bool RecordTimes::increases() const {
    constexpr std::size_t kOneOf = 10;
    return spacing_.is_known() && maker_.back() * kOneOf <= maker_.rows();
}

double RecordTimes::rate() {
    if (number_ == 0) return input_.rate.value_or(0);
    spacing_.learn(steps_);
    const double found = rate_of_times();
    if (!input_.rate) return found;
    if (used_ && found > 0) remarks_.push_back(rates_differ(file_, column_, *input_.rate, found));
    return *input_.rate;
}

double RecordTimes::rate_of_times() {
    used_ = increases();
    if (maker_.rows() < 2)
        doubt_ = file_ + ": a single row has no sampling rate";
    else if (!used_)
        doubt_ = does_not_increase(file_, column_);
    if (!used_ && input_.rate && maker_.back() > 0) remarks_.push_back(doubt_);
    if (!used_) return 0;
    const bool even = spacing_.is_even() && maker_.repeated() == 0;
    const double rate = even ? maker_.mean_rate() : spacing_.rate();
    if (!std::isfinite(rate)) reject("{}: the times are too close to each other", file_);
    remarks_.push_back(repeats(file_, maker_, rate));
    return rate;
}

std::vector<MissingRows> RecordTimes::holes(GapReport &report, double rate) const {
    std::vector<MissingRows> holes;
    if (!used_) return holes;
    const std::size_t longest = short_hole(rate);
    for (const TimeStep &step : steps_) {
        const std::size_t rows = spacing_.missing(step);
        if (rows > 0) {
            report.rows_missing(step, number_, rows, spacing_, rows > longest);
            holes.push_back({step.row, rows});
        }
        if (spacing_.is_short(step)) report.short_step(step, number_, spacing_);
    }
    return holes;
}

}  // namespace cli
