#include "cli/times/row_gaps.h"

#include <cmath>
#include <optional>

#include "cli/app/diagnostics.h"

namespace cli {

namespace {

constexpr std::size_t kEnoughRows = 100;  // to compare rates

}  // namespace

std::string rates_differ(const std::string &file, const std::string &column, double given, double found) {
    constexpr double kMost = 0.01;
    if (!(std::abs(given / found - 1) > kMost)) return "";
    return fmt::format("{}: --rate {:.6g} Hz is used, but the times in column {} say {:.6g} Hz", file, given, column,
                       found);
}

std::string does_not_increase(const std::string &file, const std::string &column) {
    return fmt::format(
        "{}: column {} is taken for the times, but does not increase; --time names another column, --column takes this "
        "one as data",
        file, column);
}

bool too_uneven(std::size_t short_steps, const TimeSteps &steps) {
    constexpr std::size_t kFewest = 3, kOneOf = 20;
    return short_steps >= kFewest && short_steps * kOneOf > steps.rows();
}

std::string not_even(const std::string &file, const std::string &column) {
    return fmt::format("{}: the times in column {} are not evenly spaced", file, column);
}

std::string repeats(const std::string &file, const TimeSteps &steps, double rate) {
    if (steps.repeated() == 0) return "";
    return fmt::format("{}: {} of {} rows have the time of the row before: taken as even, {:.6g} Hz in the mean", file,
                       steps.repeated(), steps.rows(), rate);
}

RowGaps::RowGaps(TableReader &table, const InputOptions &input, const std::string &file)
    : table_(table), input_(input), file_(file), report_(file, input) {}

Hole RowGaps::next() {
    if (!looking_ || !table_.has_time()) return {};
    const double time = table_.time();
    if (std::isnan(time) && input_.gaps == GapPolicy::Error) table_.reject_time();
    const std::size_t line = table_.line().number, repeated = steps_.repeated();
    const std::optional<TimeStep> step = steps_.add(time, line);
    if (steps_.repeated() > repeated) report_.same_time(line, table_.time_column());
    if (steps_.rows() == kEnoughRows) compare_rates();
    return step ? hole_within(*step) : Hole{};
}

Hole RowGaps::hole_within(const TimeStep &step) {
    const std::size_t rows = places_.missing(step, spacing_), column = table_.time_column();
    const bool is_long = rows > short_hole(rate());
    if (rows > 0) report_.rows_missing(step, column, rows, spacing_, is_long);
    if (spacing_.is_short(step)) {
        report_.short_step(step, column, spacing_);
        ++short_steps_;
    }
    spacing_.learn(step);
    if (!is_even()) return {};
    say();
    return {rows, is_long};
}

// A column that is called like a time by chance is found out early.
bool RowGaps::is_even() {
    if (!too_uneven(short_steps_, steps_)) return true;
    looking_ = false;
    report_.take_lines();
    remark("{}; the rows are taken as even", steps_.back() * 2 > short_steps_
                                                 ? does_not_increase(file_, table_.time_name())
                                                 : not_even(file_, table_.time_name()));
    return false;
}

void RowGaps::cells_missing(std::size_t line, const std::string &column, std::size_t cells) {
    report_.cells_missing(line, column, cells, rate());
    say();
}

void RowGaps::compare_rates() {
    if (compared_ || !looking_ || !input_.rate || !spacing_.is_known()) return;
    compared_ = true;
    const std::string line = rates_differ(file_, table_.time_name(), *input_.rate, spacing_.rate());
    if (!line.empty()) cli::report(line);
}

void RowGaps::say() {
    for (const std::string &line : report_.take_lines()) cli::report(line);
}

void RowGaps::finish() {
    compare_rates();
    report_.close();
    say();
    if (looking_ && spacing_.is_known())
        if (const std::string line = repeats(file_, steps_, spacing_.rate()); !line.empty()) cli::report(line);
}

double RowGaps::rate() const {
    if (input_.rate) return *input_.rate;
    if (!looking_ || !spacing_.is_known()) return 0;
    return spacing_.is_even() && steps_.repeated() == 0 ? steps_.mean_rate() : spacing_.rate();
}

}  // namespace cli
