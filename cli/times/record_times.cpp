#include "cli/times/record_times.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "cli/app/diagnostics.h"
#include "cli/times/row_gaps.h"

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

// Empty where the times are of use.
std::string RecordTimes::fault() const {
    constexpr std::size_t kOneOf = 10;
    if (maker_.rows() < 2) return file_ + ": a single row has no sampling rate";
    const bool same = steps_.empty() || (steps_.size() == 1 && maker_.repeated() > 0);  // a day, perhaps
    if (same || !spacing_.is_known() || maker_.back() * kOneOf > maker_.rows())
        return does_not_increase(file_, column_);
    const auto is_short = [this](const TimeStep &step) { return spacing_.is_short(step); };
    const auto short_steps = static_cast<std::size_t>(std::ranges::count_if(steps_, is_short));
    return too_uneven(short_steps, maker_) ? not_even(file_, column_) : "";
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
    doubt_ = fault();
    used_ = doubt_.empty();
    if (!used_ && input_.rate && !steps_.empty()) remarks_.push_back(doubt_ + "; the rows are taken as even");
    if (!used_) return 0;
    Places places;
    const auto is_whole = [&](const TimeStep &step) { return places.missing(step, spacing_) == 0; };
    const bool even = maker_.repeated() == 0 && maker_.back() == 0 && std::ranges::all_of(steps_, is_whole);
    const double rate = even ? maker_.mean_rate() : spacing_.rate();
    if (!std::isfinite(rate)) reject("{}: the times are too close to each other", file_);
    remarks_.push_back(repeats(file_, maker_, rate));
    return rate;
}

std::vector<MissingRows> RecordTimes::holes(GapReport &report, double rate) const {
    std::vector<MissingRows> holes;
    if (!used_) return holes;
    const std::size_t longest = short_hole(rate);
    Places places;
    for (const TimeStep &step : steps_) {
        const std::size_t rows = places.missing(step, spacing_);
        if (rows > 0) {
            report.rows_missing(step, number_, rows, spacing_, rows > longest);
            holes.push_back({step.row, rows});
        }
        if (spacing_.is_short(step)) report.short_step(step, number_, spacing_);
    }
    return holes;
}

}  // namespace cli
