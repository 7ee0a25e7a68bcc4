// mensura track: position, velocity and acceleration estimated from measured positions, by the model of docs/kalman.md.
#include <fmt/format.h>

#include <cmath>
#include <cstddef>
#include <memory>
#include <numbers>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "cli/app/commands.h"
#include "cli/app/diagnostics.h"
#include "cli/app/options.h"
#include "cli/app/quantity.h"
#include "cli/commands/track_axis.h"
#include "cli/commands/track_smoother.h"
#include "cli/commands/track_writer.h"
#include "cli/data/frame_filter.h"
#include "cli/data/record.h"
#include "cli/data/stream.h"
#include "cli/input/source.h"
#include "cli/plot/comparison.h"
#include "cli/sound/sound.h"
#include "cli/table/table.h"
#include "cli/times/gap_report.h"

namespace cli {

namespace {

constexpr const char *kExamples =
    "  mensura track --bandwidth 3Hz --r 0.0025 drive.csv > estimates.csv\n"
    "  mensura track --bandwidth 3Hz --r 0.0025 --smooth --sigma drive.csv > path.csv\n"
    "  logger | mensura track --q 1e-4 --r 0.0025 --rate 100Hz --column x --column y | viewer\n";

struct Options {
    Files files;
    std::optional<double> qaa, bandwidth, p;
    double r = 0;
    bool smooth = false, sigma = false;
};

// The smoothed position has the gain 1 / (1 + (2 sin(pi f / rate))^6 r / (qaa dt^4)): the spectrum of a position whose
// third difference is white, over that of the measurement.  The estimated position has -3 dB at f where
// qaa dt^4 / r = (f / (0.44 rate))^6, as long as f is far below the rate.
double qaa_of(const Options &options, double rate) {
    constexpr double kHalfPower = 0.44, kFarBelow = 25;
    if (!options.bandwidth) return *options.qaa;
    const double f = *options.bandwidth, per_q = options.r * std::pow(rate, 4);
    if (f >= 0.5 * rate) reject("--bandwidth {} Hz is not below half the rate, {} Hz", f, 0.5 * rate);
    if (options.smooth)
        return std::pow(2 * std::sin(std::numbers::pi * f / rate), 6) / (std::numbers::sqrt2 - 1) * per_q;
    if (f > rate / kFarBelow)
        remark("--bandwidth {} Hz is above a {}th of the rate: the real -3 dB frequency is lower", f, kFarBelow);
    return std::pow(f / (kHalfPower * rate), 6) * per_q;
}

// The gain of the first update is 1 - r / v, v being the variance of the position that was predicted for it: rounding
// reaches the estimates where v / r is near 1e16.
TrackingModel model_of(const Options &options, double rate) {
    const TrackingModel model = {1 / rate, qaa_of(options, rate), options.r, options.p.value_or(1e4 * options.r)};
    const double v = model.p * (1 + model.dt * (2 + 1e5 * model.dt));  // A P A^T of getKalmanFilterP
    if (v > 1e12 * model.r && !options.smooth)                         // a smoother checks itself
        remark("--p {} makes the first velocity so uncertain that the estimates lose digits; choose a smaller one{}",
               model.p, model.dt > 1 ? ", or --rate 1Hz, which counts time in rows" : "");
    return model;
}

[[noreturn]] void fail_lost(const std::string &place, const std::string &column) {
    fail(
        "{}: the estimates of {} are lost to rounding or overflow; choose units in which --r is above 1e-12 and the "
        "positions are not huge",
        place, column);
}

EstimatesWriter writer_for(TableReader &table, const Options &options) {
    return {table, data_file(options.files.plot, options.files.output), options.sigma};
}

std::string title_of(const TrackingModel &model, const Options &options) {
    return fmt::format("position {}, q = {:.3g}", options.smooth ? "smoothed" : "estimated",
                       model.qaa * std::pow(model.dt, 4) / model.r);
}

CurveNames curves_of(const Options &options) { return {"measured", options.smooth ? "smoothed" : "estimated"}; }

[[noreturn]] void reject_hole(const std::string &place) {
    reject("{}: the hole before it is longer than {} rows, too long to predict; --gaps split starts anew after it",
           place, kMostHeld);
}

// Tracks rows as they come.
class RowTracker : public FrameFilter {
  public:
    explicit RowTracker(const TrackingModel &model) : model_(model) {}

    void run(std::span<double> frames, std::size_t channels) override {
        while (axes_.size() < channels) axes_.emplace_back(model_);
        estimates_.resize(channels);
        for (std::size_t i = 0; i < frames.size(); ++i)
            estimates_[i % channels] = axes_[i % channels].update(frames[i]);
    }
    void restart(std::size_t channel) override {
        if (channel < axes_.size()) axes_[channel].restart();
    }
    bool takes_missing() const override { return true; }

    const Estimate &estimate(std::size_t channel) const { return estimates_[channel]; }
    bool lost(std::size_t channel) const { return axes_[channel].lost(); }

  private:
    TrackingModel model_;
    std::vector<TrackedAxis> axes_;
    std::vector<Estimate> estimates_;
};

// A row in, a row out.
void track_stream(Source &source, const Options &options, double rate) {
    const TrackingModel model = model_of(options, rate);
    const InputOptions &input = options.files.input;
    TableReader table(source, input, Faults::Report);
    Comparison comparison(options.files.plot, curves_of(options));
    RowTracker tracker(model);
    RowFilter rows(table, input, source.name(), tracker);
    std::vector<std::string> names;
    RowOfEstimates row;
    writer_for(table, options).run([&](const auto &columns) -> const RowOfEstimates & {
        rows.run();
        const auto place = [&] { return fmt::format("{}:{}", source.name(), table.line().number); };
        if (input.gaps == GapPolicy::Hold && rows.hole().rows > kMostHeld) reject_hole(place());
        for (std::size_t k = names.size(); k < columns.size(); ++k) {
            const Column &column = table.columns()[columns[k]];
            names.push_back(labelled(column.name, column.unit));
        }
        row.clear();
        for (const std::size_t i : columns) {
            row.push_back(tracker.estimate(i));
            if (tracker.lost(i)) fail_lost(place(), table.columns()[i].name);
            comparison.add(rows.place(), row.size() - 1, table.values()[i], row.back().state[0]);
        }
        return row;
    });
    rows.finish();
    comparison.draw(title_of(model, options), names, rate);
}

// Tracks the channels of a record, in which NaN stands for what is missing.
class RecordTracker {
  public:
    RecordTracker(const Record &record, const Options &options, const TrackingModel &model)
        : record_(record), smooth_(options.smooth), model_(model) {}

    // The estimates at each sample, anew in each piece; none of a channel without numbers.
    std::vector<Estimate> run(const Channel &channel) const {
        std::vector<Estimate> estimates(channel.has_numbers() ? channel.samples.size() : 0);
        for (const Piece &piece : channel.pieces) run(channel, piece, std::span(estimates));
        return estimates;
    }

  private:
    void run(const Channel &channel, const Piece &piece, std::span<Estimate> estimates) const {
        TrackedAxis axis(model_);
        Smoother smoother;
        for (std::size_t i = piece.begin; i < piece.end; ++i) {
            estimates[i] = axis.update(channel.samples[i]);
            if (axis.lost()) fail_lost(place(i), channel.name);
            if (smooth_ && i + 1 < piece.end && !smoother.add(axis))
                fail(
                    "{}: smoothing {} loses its digits, for its velocity is hardly known there; choose a smaller --p, "
                    "or --rate 1Hz, which counts time in rows",
                    place(i), channel.name);
        }
        if (smooth_) smoother.run(estimates.subspan(piece.begin, piece.end - piece.begin), axis);
    }

    std::string place(std::size_t sample) const {
        return fmt::format("{}: {:.6g} s after the first row", record_.name, static_cast<double>(sample) * model_.dt);
    }

    const Record &record_;
    bool smooth_;
    TrackingModel model_;
};

void track_record(Record record, const Options &options) {
    const TrackingModel model = model_of(options, rate_of(record));
    if (record.cut_hole > 0) reject_hole(fmt::format("{}: row {}", record.name, record.cut_hole + 1));
    check_tracked_columns(record.channels.size());
    remark_missing(record);
    Comparison comparison(options.files.plot, curves_of(options));
    std::vector<std::vector<Estimate>> estimates;
    std::vector<std::string> names;
    for (Channel &channel : record.channels) {
        estimates.push_back(RecordTracker(record, options, model).run(channel));
        if (!channel.has_numbers()) continue;
        for (std::size_t i = 0; i < channel.samples.size(); ++i)
            comparison.add(record.place_of(i), names.size(), channel.samples[i], estimates.back()[i].state[0]);
        names.push_back(labelled(channel.name, channel.unit));
        channel.samples = {};
    }
    Source source(record.name, record.text);
    TableReader table(source, options.files.input);
    RowOfEstimates row;
    writer_for(table, options).run([&](const auto &columns) -> const RowOfEstimates & {
        const std::size_t sample = record.sample_of(table.rows() - 1);
        row.clear();
        for (const std::size_t i : columns) row.push_back(estimates[i].empty() ? Estimate() : estimates[i][sample]);
        return row;
    });
    comparison.draw(title_of(model, options), names, record.rate);
}

void check(const Options &options) {
    if (!options.qaa && !options.bandwidth) reject("--q or --bandwidth is required, such as --bandwidth 3Hz");
    if (options.qaa.value_or(0) < 0) reject("--q {} is below 0", *options.qaa);
    if (options.bandwidth.value_or(1) <= 0) reject("--bandwidth {} Hz is not above 0", *options.bandwidth);
    if (options.r <= 0) reject("--r {} is not above 0", options.r);
    if (options.p.value_or(1) <= 0) reject("--p {} is not above 0", *options.p);
}

void run(Options &options) {
    check(options);
    options.files.input.stand_in = "the model predicts";
    Source source(options.files.input.file);
    refuse_sound(source);
    if (options.files.input.rate && !options.smooth) return track_stream(source, options, *options.files.input.rate);
    track_record(read_record(source, options.files.input, Missing::Keep), options);
}

}  // namespace

void add_track(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app = program.add_command(
        "track", "append position, velocity and acceleration estimated by a Kalman filter to a table", kExamples);
    add_quantity(app, "--q", options->qaa, kPlain,
                 "mean square change of the acceleration from row to row, in the unit of the column squared per s^4")
        .type_name("QAA");
    add_quantity(
        app, "--bandwidth", options->bandwidth, kHertz,
        "instead of --q: where the estimated position has -3 dB, in Hz; up to a 25th of the rate unless --smooth")
        .excludes({"--q"});
    add_quantity(app, "--r", options->r, kPlain,
                 "variance of a measured position, in the unit of the column squared; above 1e-12")
        .type_name("R")
        .required();
    add_quantity(app, "--p", options->p, kPlain,
                 "variance of the first position, in the unit of the column squared; default 10000 R")
        .type_name("P");
    add_rate(
        app, options->files.input.rate,
        "sampling rate in Hz: a line in, a line out, unless --smooth; default: all is read, and the rate is that of "
        "the column of times");
    app.add_flag("--smooth", options->smooth,
                 "estimate each row from all rows, also those after it (Rauch, Tung and Striebel); reads all");
    app.add_flag("--sigma", options->sigma, "append the standard deviation of the position, too");
    add_files(app, options->files);
    app.callback([options] { run(*options); });
}

}  // namespace cli
