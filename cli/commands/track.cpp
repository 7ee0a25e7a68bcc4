// mensura track: position, velocity and acceleration estimated from measured positions, by the model of docs/kalman.md.
#include <cmath>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/app/commands.h"
#include "cli/app/diagnostics.h"
#include "cli/app/options.h"
#include "cli/app/quantity.h"
#include "cli/commands/track_axis.h"
#include "cli/data/csv.h"
#include "cli/data/record.h"
#include "cli/data/sound.h"
#include "cli/data/source.h"
#include "cli/data/stream.h"
#include "cli/data/table.h"
#include "cli/files/output.h"
#include "cli/plot/comparison.h"

namespace cli {

namespace {

constexpr const char *kExamples =
    "  mensura track --bandwidth 3Hz --r 0.0025 drive.csv > estimates.csv\n"
    "  logger | mensura track --q 1e-4 --r 0.0025 --rate 100Hz --column x --column y | viewer\n";

constexpr const char *kEstimates[] = {"_position", "_velocity", "_acceleration"};
constexpr std::size_t kMostColumns = 100;  // a Kalman filter takes 1.3 MB

struct Options {
    Files files;
    std::optional<double> qaa, bandwidth, p;
    double r = 0;
};

// A column that is tracked.
struct Axis {
    std::string name;
    std::size_t column;  // index in the table's chosen columns
    TrackedAxis estimates;
};

// The lines before the first row.  They are written with it, because it shows which columns are numbers, and only those
// get new names.
class LeadingLines {
  public:
    void add(const TableReader &table) {
        text_ += table.line().text;
        if (table.kind() == LineKind::Header) end_of_header_ = text_.size();
        text_ += table.line().end;
    }

    void write(Output &out, const std::vector<Axis> &axes, char separator) {
        std::string names;
        for (const Axis &axis : axes)
            for (const char *const estimate : kEstimates)
                names += separator + cell_text(axis.name + estimate, separator);
        if (end_of_header_ != kNone) text_.insert(end_of_header_, names);
        out.write(text_);
    }

  private:
    std::string text_;
    std::size_t end_of_header_ = kNone;
};

// The estimated position has -3 dB at f where qaa dt^4 / r = (f / (0.44 rate))^6, as long as f is far below the rate.
double qaa_of(const Options &options, double rate) {
    constexpr double kHalfPower = 0.44, kFarBelow = 25;
    if (!options.bandwidth) return *options.qaa;
    const double f = *options.bandwidth;
    if (f >= 0.5 * rate) reject("--bandwidth {} Hz is not below half the rate, {} Hz", f, 0.5 * rate);
    if (f > rate / kFarBelow)
        remark("--bandwidth {} Hz is above a {}th of the rate: the real -3 dB frequency is lower", f, kFarBelow);
    return std::pow(f / (kHalfPower * rate), 6) * options.r * std::pow(rate, 4);
}

TrackingModel model_of(const Options &options, double rate) {
    return {1 / rate, qaa_of(options, rate), options.r, options.p.value_or(1e4 * options.r)};
}

std::vector<Axis> axes_of(const TableReader &table, const TrackingModel &model) {
    if (table.columns().size() > kMostColumns)
        reject("{} columns are too many to track, {} at most; choose with --column", table.columns().size(),
               kMostColumns);
    std::vector<Axis> axes;
    for (std::size_t i = 0; i < table.columns().size(); ++i)
        if (table.columns()[i].kind != Column::Text) axes.push_back({table.columns()[i].name, i, TrackedAxis(model)});
    return axes;
}

// NaN is written as an empty cell, but as text where blanks separate the cells, which would hide an empty one.
void write_number(Output &out, double value, char separator) {
    out.write({&separator, 1});
    if (!std::isnan(value))
        out.number(value);
    else if (separator == ' ')
        out.write("NaN");
}

void write_row(Output &out, const TableReader &table, std::vector<Axis> &axes, Comparison &comparison,
               const std::string &file) {
    out.write(table.line().text);
    for (std::size_t i = 0; i < axes.size(); ++i) {
        const double position = table.values()[axes[i].column];
        const State &state = axes[i].estimates.update(position);
        if (axes[i].estimates.lost())
            fail(
                "{}:{}: the estimates of {} are lost to rounding or overflow; choose units in which --r is above 1e-12 "
                "and the positions are not huge",
                file, table.line().number, axes[i].name);
        for (const double estimate : state) write_number(out, estimate, table.separator());
        comparison.add(i, position, state[0]);
    }
    out.write(table.line().end);
}

void track(Source &source, const Options &options, double rate) {
    const TrackingModel model = model_of(options, rate);
    TableReader table(source, options.files.input);
    Output out(data_file(options.files.plot, options.files.output));
    Comparison comparison(options.files.plot);
    std::vector<Axis> axes;
    LeadingLines leading;
    for_each_line(table, out, [&] {
        if (table.rows() == 0) return leading.add(table);
        if (axes.empty()) {
            axes = axes_of(table, model);
            leading.write(out, axes, table.separator());
        }
        if (table.kind() == LineKind::Data)
            write_row(out, table, axes, comparison, source.name());
        else
            table.write_line(out);
    });
    std::vector<std::string> names;
    names.reserve(axes.size());
    for (const Axis &axis : axes) names.push_back(axis.name);
    out.commit();
    comparison.draw(fmt::format("position estimated, q = {:.3g}", model.qaa * std::pow(model.dt, 4) / model.r), names,
                    rate);
}

void check(const Options &options) {
    if (!options.qaa && !options.bandwidth) reject("--q or --bandwidth is required, such as --bandwidth 3Hz");
    if (options.qaa.value_or(0) < 0) reject("--q {} is below 0", *options.qaa);
    if (options.bandwidth.value_or(1) <= 0) reject("--bandwidth {} Hz is not above 0", *options.bandwidth);
    if (options.r <= 0) reject("--r {} is not above 0", options.r);
    if (options.p.value_or(1) <= 0) reject("--p {} is not above 0", *options.p);
}

void run(const Options &options) {
    check(options);
    Source source(options.files.input.file);
    refuse_sound(source);
    if (options.files.input.rate) return track(source, options, *options.files.input.rate);
    Record record = read_record(source, options.files.input);
    const double rate = rate_of(record);
    record.channels.clear();
    Source again(record.name, record.text);
    track(again, options, rate);
}

}  // namespace

void add_track(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app = program.add_command(
        "track", "append position, velocity and acceleration estimated by a Kalman filter to a table", kExamples);
    add_quantity(app, "--q", options->qaa, kPlain,
                 "mean square change of the acceleration from row to row, in the unit of the column squared per s^4")
        .type_name("QAA");
    add_quantity(app, "--bandwidth", options->bandwidth, kHertz,
                 "instead of --q: where the estimated position has -3 dB, in Hz, up to a 25th of the rate")
        .excludes({"--q"});
    add_quantity(app, "--r", options->r, kPlain,
                 "variance of a measured position, in the unit of the column squared; above 1e-12")
        .type_name("R")
        .required();
    add_quantity(app, "--p", options->p, kPlain,
                 "variance of the first position, in the unit of the column squared; default 10000 R")
        .type_name("P");
    add_rate(app, options->files.input.rate,
             "sampling rate in Hz: a line in, a line out; default: all is read, and the rate is that of the column "
             "called time");
    add_files(app, options->files);
    app.callback([options] { run(*options); });
}

}  // namespace cli
