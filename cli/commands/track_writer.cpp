#include "cli/commands/track_writer.h"

#include <fmt/format.h>

#include <cmath>
#include <iterator>

#include "cli/app/diagnostics.h"
#include "cli/data/stream.h"
#include "cli/table/csv.h"
#include "cli/table/units.h"

namespace cli {

namespace {

constexpr const char *kEstimates[] = {"_position", "_velocity", "_acceleration"};
constexpr const char *kSigma = "_sigma";

// The name of an estimate of a column: "x" gives "x_velocity", "x [m]" gives "x_velocity [m/s]".
std::string name_of(const std::string &column, const std::string &suffix, std::size_t derivative) {
    const std::size_t bracket = column.ends_with(']') ? column.rfind('[') : std::string::npos;
    if (bracket == std::string::npos) return column + suffix;
    std::string unit = column.substr(bracket + 1, column.size() - bracket - 2);
    for (std::size_t i = 0; i < derivative; ++i) unit = unit_per_second(unit);
    const std::size_t end = column.find_last_not_of(' ', bracket - 1);
    return fmt::format("{}{} [{}]", column.substr(0, bracket == 0 ? 0 : end + 1), suffix, unit);
}

}  // namespace

void check_tracked_columns(std::size_t columns) {
    constexpr std::size_t kMost = 100;  // a Kalman filter takes 1.3 MB
    if (columns > kMost) reject("{} columns are too many to track, {} at most; choose with --column", columns, kMost);
}

void EstimatesWriter::run(const Estimates &estimates) {
    for_each_line(table_, out_, [&] {
        if (table_.rows() == 0) return add_leading_line();
        if (!begun_) begin();
        if (table_.kind() == LineKind::Data)
            write_row(estimates(tracked_));
        else
            table_.write_line(out_);
    });
    out_.commit();
}

// The lines before the first row are written with it, because it shows which columns are numbers, and only those get
// new names.
void EstimatesWriter::add_leading_line() {
    leading_ += table_.line().text;
    if (table_.kind() == LineKind::Header) end_of_header_ = leading_.size();
    if (table_.kind() == LineKind::Units) end_of_units_ = leading_.size();
    leading_ += table_.line().end;
}

void EstimatesWriter::begin() {
    check_tracked_columns(table_.columns().size());
    begun_ = true;
    std::string names, units;
    for (std::size_t i = 0; i < table_.columns().size(); ++i) {
        if (table_.columns()[i].kind == Column::Text) continue;
        tracked_.push_back(i);
        for (std::size_t k = 0; k < std::size(kEstimates); ++k) {
            names += new_cell(i, kEstimates[k], k);
            units += new_unit(i, k);
        }
        if (sigma_) names += new_cell(i, kSigma, 0);
        if (sigma_) units += new_unit(i, 0);
    }
    if (end_of_units_ != kNone) leading_.insert(end_of_units_, units);
    if (end_of_header_ != kNone) leading_.insert(end_of_header_, names);
    out_.write(leading_);
}

std::string EstimatesWriter::new_cell(std::size_t column, const char *suffix, std::size_t derivative) const {
    const std::string name = name_of(table_.columns()[column].name, suffix, derivative);
    return table_.separator() + cell_text(name, table_.separator());
}

std::string EstimatesWriter::new_unit(std::size_t column, std::size_t derivative) const {
    std::string unit = table_.columns()[column].unit;
    for (std::size_t i = 0; i < derivative; ++i) unit = derivative_unit(unit);
    return table_.separator() + cell_text(unit, table_.separator());
}

void EstimatesWriter::write_row(const RowOfEstimates &row) {
    out_.write(table_.line().text);
    for (const Estimate &estimate : row) {
        for (const double x : estimate.state) write_number(x);
        if (sigma_) write_number(estimate.sigma);
    }
    out_.write(table_.line().end);
}

// NaN is written as an empty cell, but as text where blanks separate the cells, which would hide an empty one.
void EstimatesWriter::write_number(double value) {
    const char separator = table_.separator();
    out_.write({&separator, 1});
    if (!std::isnan(value))
        table_.write_number(out_, value);
    else if (separator == ' ')
        out_.write("NaN");
}

}  // namespace cli
