// mensura demo: an electrocardiogram freed from mains hum by a notch, with a low-pass beside it, and what each costs.
#include <fmt/format.h>
#include <mensura/sos.h>
#include <mensura/spectral.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/app/commands.h"
#include "cli/commands/beats.h"
#include "cli/commands/ecg_record.h"
#include "cli/data/cascade.h"
#include "cli/data/json.h"
#include "cli/data/record.h"
#include "cli/files/output.h"
#include "cli/input/source.h"
#include "cli/plot/draw.h"
#include "cli/plot/envelope.h"
#include "cli/spectra/spectrum.h"
#include "cli/spectra/window.h"
#include "cli/table/csv.h"

namespace cli {

namespace {

constexpr const char *kExamples =
    "  mensura demo\n"
    "  mensura demo --plot\n"
    "  mensura demo -o ecg.csv --plot=ecg.pdf\n";

constexpr double kHum = 60, kWidth = 4, kCutoff = 40;  // Hz
constexpr int kNotchPoles = 2, kLowpassPoles = 6;
constexpr Window kWindow{.kind = wkHanning};
constexpr double kPictureFrom = 28.2, kPictureTo = 29.1;  // s

struct Options {
    PlotOptions plot{.kind = PlotOptions::File, .file = "ecg.svg"};
    bool json = false;
    std::string output;
};

struct Signal {
    std::string name;
    std::vector<double> samples;
};
constexpr std::size_t kSignals = 4, kDrawn = 3;
using Signals = std::array<Signal, kSignals>;

Sections designed(const mensura_sos_request &request) {
    Sections sections;
    checked(design_sections(request, sections));
    return sections;
}

// 4 Hz wide when it has run both ways.
Sections notch(double rate) {
    mensura_sos_request request;
    mensura_sos_default_request(&request, sizeof request);
    request.pass_type = ptNotch;
    request.poles = kNotchPoles;
    request.passes = 2;
    request.band = MENSURA_SOS_CENTRE;
    request.rate = rate;
    request.edge[0] = kHum;
    request.edge[1] = kWidth;
    return designed(request);
}

Sections low_pass(double rate, int passes) {
    mensura_sos_request request;
    mensura_sos_default_request(&request, sizeof request);
    request.poles = kLowpassPoles;
    request.passes = passes;
    request.rate = rate;
    request.edge[0] = kCutoff;
    return designed(request);
}

Signals signals_of(const std::vector<double> &raw, double rate) {
    Signals signals{{{"raw", raw}, {"notch", raw}, {"lowpass", raw}, {"one-way", raw}}};
    filter_both_ways(notch(rate), MENSURA_SOS_ENDS_ODD, signals[1].samples);
    filter_both_ways(low_pass(rate, 2), MENSURA_SOS_ENDS_ODD, signals[2].samples);
    CascadeFilter one_way(low_pass(rate, 1));
    one_way.run(signals[3].samples, 1);
    return signals;
}

// Samples by which `later` lags: the vertex of the parabola through the top of the cross-correlation.
double lag(const std::vector<double> &earlier, const std::vector<double> &later) {
    constexpr std::size_t kReach = 50;
    const auto correlation = [&](std::size_t shift) {  // shift - kReach samples
        double sum = 0;
        for (std::size_t i = kReach; i + kReach < earlier.size(); ++i) sum += earlier[i] * later[i + shift - kReach];
        return sum;
    };
    std::size_t top = 1;
    for (std::size_t shift = 1; shift < 2 * kReach; ++shift)
        if (correlation(shift) > correlation(top)) top = shift;
    const double before = correlation(top - 1), at = correlation(top), after = correlation(top + 1);
    return static_cast<double>(top) - kReach + 0.5 * (before - after) / (before - 2 * at + after);
}

void print_signals(const std::string &file, const Signals &signals, double rate) {
    Output out(file);
    out.write("time_s,raw_mV,notch_mV,lowpass_mV,one_way_mV\n");
    for (std::size_t i = 0; i < signals[0].samples.size(); ++i)
        write_row({static_cast<double>(i) / rate, signals[0].samples[i], signals[1].samples[i], signals[2].samples[i],
                   signals[3].samples[i]},
                  out);
    out.commit();
}

// What the demo measures, of each signal.
struct Measured {
    const char *key, *label;
    int decimals;  // that are printed
    std::array<double, kSignals> values = {};
};

struct Report {
    double seconds, rate;
    std::size_t beats;
    std::array<Measured, 5> rows;
};

Report report_on(const Signals &signals, double rate) {
    const std::vector<double> &raw = signals[0].samples;
    const std::vector<std::size_t> peaks = r_peaks(raw, rate);
    const std::vector<double> before = heights_of(peaks, raw, rate, 0);
    Report report{static_cast<double>(raw.size()) / rate,
                  rate,
                  peaks.size(),
                  {{{"hum_uV", "60 Hz hum, amplitude (uV)", 3},
                    {"r_peak_mV", "R peak, median height (mV)", 3},
                    {"kept_median_percent", "kept of a beat, median (%)", 1},
                    {"kept_worst_percent", "kept of a beat, worst (%)", 1},
                    {"delay_ms", "delay (ms)", 2}}}};
    auto &[hum, height, kept, worst, delay] = report.rows;
    for (std::size_t s = 0; s < signals.size(); ++s) {
        const std::vector<double> &x = signals[s].samples;
        const double samples = lag(raw, x);
        const std::vector<double> after = heights_of(peaks, x, rate, static_cast<int>(std::lround(samples)));
        std::vector<double> ratio;
        for (std::size_t i = 0; i < peaks.size(); ++i) ratio.push_back(100 * after[i] / before[i]);
        hum.values[s] = 1e3 * amplitudes_at({kHum}, rate, x, kWindow, true).front();
        height.values[s] = median(after);
        kept.values[s] = median(ratio);
        worst.values[s] = *std::ranges::min_element(ratio);
        delay.values[s] = 1e3 / rate * samples;
    }
    return report;
}

void print_row(Output &out, const Measured &row) {
    const double unit = std::pow(10.0, -row.decimals);
    out.write(fmt::format("{:<28}", row.label));
    for (const double value : row.values)
        out.write(fmt::format("{:>12.{}f}", std::round(value / unit) * unit + 0.0, row.decimals));
    out.write("\n");
}

void print_text(Output &out, const Signals &signals, const Report &report) {
    out.write(
        fmt::format("An electrocardiogram of {:.0f} s, sampled at {} Hz, with {} beats\n\n"
                    "  notch    {} Hz, {} Hz wide, {} poles, zero phase\n"
                    "  lowpass  -3 dB at {} Hz, {} poles, zero phase\n"
                    "  one-way  the same low-pass forwards only, as during a measurement\n\n",
                    report.seconds, report.rate, report.beats, kHum, kWidth, kNotchPoles, kCutoff, kLowpassPoles));
    out.write(fmt::format("{:<28}", ""));
    for (const Signal &signal : signals) out.write(fmt::format("{:>12}", signal.name));
    out.write("\n");
    for (const Measured &row : report.rows) print_row(out, row);
}

void print_json(Output &out, const Signals &signals, const Report &report) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (std::size_t s = 0; s < signals.size(); ++s) {
        nlohmann::ordered_json signal{{"signal", signals[s].name}};
        for (const Measured &row : report.rows) signal[row.key] = row.values[s];
        list.push_back(signal);
    }
    write_json({{"duration_s", report.seconds}, {"rate_Hz", report.rate}, {"beats", report.beats}, {"signals", list}},
               out);
}

Panel signals_panel(const Signals &signals, double rate) {
    Panel panel{.x_label = "time [s]", .y_label = "ECG [mV]", .x_lowest = kPictureFrom, .x_highest = kPictureTo};
    for (std::size_t s = 0; s < kDrawn; ++s) {
        const Signal &signal = signals[s];
        Curve curve{.title = signal.name};
        for (auto i = static_cast<std::size_t>(kPictureFrom * rate); static_cast<double>(i) <= kPictureTo * rate; ++i) {
            curve.x.push_back(static_cast<double>(i) / rate);
            curve.y.push_back(signal.samples[i]);
        }
        panel.curves.push_back(curve);
    }
    return panel;
}

constexpr double kFloor = -140;  // dB: what lies deeper is not shown

Panel spectra_panel(const Signals &signals, double rate, const PlotOptions &plot) {
    Panel panel{.x_label = "frequency [Hz]",
                .y_label = "amplitude [dB re 1 mV]",
                .marks = {{kHum, fmt::format("{} Hz", kHum), false, true}},
                .levels = {{kFloor, fmt::format("clipped at {} dB", kFloor)}},
                .y_lowest = kFloor,
                .x_lowest = 0,
                .x_highest = 0.5 * rate};
    const SpectrumLayout layout = layout_for(signals[0].samples.size());
    for (std::size_t s = 0; s < kDrawn; ++s) {
        const Signal &signal = signals[s];
        Envelope envelope(plot);
        for (const double amplitude : amplitude_spectrum(signal.samples, kWindow, true))
            envelope.add(scaled(amplitude, true, Scale::Decibel));
        panel.curves.push_back(envelope.curve(signal.name, 1 / layout.frequency(1, rate)));
    }
    return panel;
}

void run(const Options &options) {
    Source source("the electrocardiogram", kEcgRecord);
    const Record record = read_record(source, {});
    const double rate = rate_of(record);
    const Signals signals = signals_of(record.channels.front().samples, rate);
    Output out(data_file(options.plot, ""));
    const Report report = report_on(signals, rate);
    if (options.json)
        print_json(out, signals, report);
    else
        print_text(out, signals, report);
    out.flush();
    draw({.title = "An electrocardiogram freed from 60 Hz hum",
          .panels = {signals_panel(signals, rate), spectra_panel(signals, rate, options.plot)}},
         options.plot);
    if (!options.output.empty()) print_signals(options.output, signals, rate);
    if (options.plot.kind == PlotOptions::File && !options.json)
        out.write(fmt::format("\npicture in {}\n", options.plot.file));
    out.commit();
}

}  // namespace

void add_demo(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app =
        program.add_command("demo", "clean an electrocardiogram: a table, and a picture in ecg.svg", kExamples);
    app.add_flag("--json", options->json, "print the table as JSON");
    app.add_option("-o,--output", options->output, "write the signals there: s, mV (CSV)").type_name("FILE");
    add_plot_options(app, options->plot);
    app.callback([options] { run(*options); });
}

}  // namespace cli
