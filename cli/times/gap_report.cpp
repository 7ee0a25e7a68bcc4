#include "cli/times/gap_report.h"

#include <algorithm>
#include <utility>

#include "cli/app/diagnostics.h"

namespace cli {

namespace {

constexpr std::size_t kMostLines = 3;  // of a kind

[[noreturn]] void refuse_uneven(const std::string &place, const TimeStep &step, const Spacing &spacing) {
    reject(
        "{}: the times are not evenly spaced here: a step of {:.6g} s after steps of {:.6g} s; --gaps error refuses "
        "that",
        place, step.length, spacing.step());
}

}  // namespace

std::size_t short_hole(double rate) {
    constexpr double kFewest = 10, kSeconds = 0.1;
    return static_cast<std::size_t>(std::clamp(kSeconds * rate, kFewest, static_cast<double>(kMostHeld)));
}

void GapReport::add(std::size_t &count, const std::string &line) {
    if (++count <= kMostLines) lines_.push_back(line);
}

std::string GapReport::remedy() const {
    return policy_ == GapPolicy::Split ? "what follows starts anew" : stand_in_ + "; --gaps split starts anew after it";
}

void GapReport::rows_missing(const TimeStep &step, std::size_t column, std::size_t rows, const Spacing &spacing,
                             bool is_long) {
    if (policy_ == GapPolicy::Error) refuse_uneven(fmt::format("{}:{}:{}", file_, step.line, column), step, spacing);
    if (!is_long) {
        ++short_holes_;
        short_rows_ += rows;
        return;
    }
    const bool cut = policy_ == GapPolicy::Hold && rows > kMostHeld;
    add(holes_, fmt::format("{}:{}: a hole of {:.6g} s before this line, {} rows: {}{}", file_, step.line, step.length,
                            rows, remedy(), cut ? fmt::format("; the hole is cut to {} rows", kMostHeld) : ""));
}

void GapReport::short_step(const TimeStep &step, std::size_t column, const Spacing &spacing) {
    const std::string place = fmt::format("{}:{}:{}", file_, step.line, column);
    if (policy_ == GapPolicy::Error && step.length < 0) reject("{}: the time does not increase", place);
    if (policy_ == GapPolicy::Error) refuse_uneven(place, step, spacing);
    add(short_steps_, step.length < 0 ? fmt::format("{}: the time goes back by {:.6g} s", place, -step.length)
                                      : fmt::format("{}: a step of {:.6g} s after steps of {:.6g} s", place,
                                                    step.length, spacing.step()));
}

void GapReport::same_time(std::size_t line, std::size_t column) {
    if (policy_ == GapPolicy::Error) reject("{}:{}:{}: the time does not increase", file_, line, column);
}

void GapReport::cells_missing(std::size_t line, const std::string &column, std::size_t cells, double rate,
                              bool at_start) {
    const std::string seconds = rate > 0 ? fmt::format("{:.6g} s, ", static_cast<double>(cells) / rate) : "";
    add(holes_, fmt::format("{}:{}: a hole in {} from this line on, {}{} cells: {}", file_, line, column, seconds,
                            cells, at_start && policy_ == GapPolicy::Hold ? "the first number stands in" : remedy()));
}

void GapReport::cell_missing(std::size_t line, std::size_t index, const std::string &column) const {
    if (policy_ == GapPolicy::Error)
        reject("{}:{}:{}: the cell is missing (column {}); --gaps error refuses that", file_, line, index + 1, column);
}

void GapReport::close() {
    if (holes_ > kMostLines)
        lines_.push_back(
            fmt::format("{}: {} more long hole{}", file_, holes_ - kMostLines, holes_ == kMostLines + 1 ? "" : "s"));
    if (short_steps_ > kMostLines)
        lines_.push_back(
            fmt::format("{}: {} more steps of time that are too short or lead back", file_, short_steps_ - kMostLines));
    if (short_rows_ > 0)
        lines_.push_back(fmt::format("{}: {} row{} missing in {} short hole{}; {}", file_, short_rows_,
                                     short_rows_ == 1 ? " is" : "s are", short_holes_, short_holes_ == 1 ? "" : "s",
                                     stand_in_));
    holes_ = short_steps_ = short_holes_ = short_rows_ = 0;
}

std::vector<std::string> GapReport::take_lines() { return std::exchange(lines_, {}); }

}  // namespace cli
