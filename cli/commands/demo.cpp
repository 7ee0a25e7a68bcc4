// mensura demo: an electrocardiogram freed from mains hum, forwards only as during a measurement, and with zero phase.
#include <mensura/iir.h>
#include <mensura/spectral.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "cli/app/commands.h"
#include "cli/app/design.h"
#include "cli/app/diagnostics.h"
#include "cli/commands/ecg_record.h"
#include "cli/data/csv.h"
#include "cli/data/record.h"
#include "cli/data/source.h"
#include "cli/data/spectrum.h"
#include "cli/data/window.h"
#include "cli/files/output.h"
#include "cli/plot/draw.h"
#include "cli/plot/envelope.h"

namespace cli {

namespace {

constexpr const char *kExamples =
    "  mensura demo\n"
    "  mensura demo --plot\n"
    "  mensura demo -o ecg.csv --plot=ecg.pdf\n";

constexpr double kCutoff = 50, kHum = 60;  // Hz
constexpr Window kWindow{.kind = wkHanning};
constexpr double kPictureFrom = 10, kPictureTo = 14;  // s

struct Options {
    PlotOptions plot{.kind = PlotOptions::File, .file = "ecg.svg"};
    std::string output;
};

struct Signal {
    std::string name;
    std::vector<double> samples;
};
using Signals = std::array<Signal, 3>;

Signals signals_of(const std::vector<double> &raw, const TIIRFilter &design) {
    Signals signals{{{"raw", raw}, {"one-way", raw}, {"zero-phase", raw}}};
    TIIRFilter forward = design, both = design;
    for (double &x : signals[1].samples) x = IIRFilter(&forward, x);
    IIRFilterZeroPhase(&both, signals[2].samples.data(), nullptr, static_cast<int>(raw.size()));
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
    out.write("time_s,raw_mV,one_way_mV,zero_phase_mV\n");
    for (std::size_t i = 0; i < signals[0].samples.size(); ++i)
        write_row({static_cast<double>(i) / rate, signals[0].samples[i], signals[1].samples[i], signals[2].samples[i]},
                  out);
    out.commit();
}

void print_row(Output &out, const char *label, const std::array<double, 3> &values, int decimals) {
    const double unit = std::pow(10.0, -decimals);
    out.write(fmt::format("{:<26}", label));
    for (const double value : values)
        out.write(fmt::format("{:>12.{}f}", std::round(value / unit) * unit + 0.0, decimals));
    out.write("\n");
}

void print_table(Output &out, const Signals &signals, double rate) {
    std::array<double, 3> hum{}, peak{}, delay{};
    for (std::size_t s = 0; s < signals.size(); ++s) {
        const std::vector<double> &x = signals[s].samples;
        hum[s] = 1e3 * amplitudes_at({kHum}, rate, x, kWindow, true).front();
        peak[s] = *std::ranges::max_element(x);
        delay[s] = 1e3 / rate * lag(signals[0].samples, x);
    }
    const std::vector<double> half_power =
        design_for({.cutoff = kCutoff, .leading_sections = true}, rate).achieved.half_power;
    out.write(fmt::format(
        "An electrocardiogram of {:.0f} s, sampled at {} Hz; lowpass, asked for at {} Hz, -3 dB at {:.1f} Hz\n\n",
        static_cast<double>(signals[0].samples.size()) / rate, rate, kCutoff, half_power.at(0)));
    out.write(fmt::format("{:<26}{:>12}{:>12}{:>12}\n", "", signals[0].name, signals[1].name, signals[2].name));
    print_row(out, "60 Hz hum, amplitude (uV)", hum, 3);
    print_row(out, "highest R peak (mV)", peak, 3);
    print_row(out, "delay (ms)", delay, 2);
}

Panel signals_panel(const Signals &signals, double rate) {
    Panel panel{.x_label = "time [s]", .y_label = "ECG [mV]", .x_lowest = kPictureFrom, .x_highest = kPictureTo};
    for (const Signal &signal : signals) {
        Curve curve{.title = signal.name};
        for (auto i = static_cast<std::size_t>(kPictureFrom * rate); static_cast<double>(i) <= kPictureTo * rate; ++i) {
            curve.x.push_back(static_cast<double>(i) / rate);
            curve.y.push_back(signal.samples[i]);
        }
        panel.curves.push_back(curve);
    }
    return panel;
}

Panel spectra_panel(const Signals &signals, double rate) {
    Panel panel{.x_label = "frequency [Hz]",
                .y_label = "amplitude [dB re 1 mV]",
                .marks = {kHum},
                .y_lowest = -140,
                .x_lowest = 0,
                .x_highest = 0.5 * rate};
    const SpectrumLayout layout = layout_for(signals[0].samples.size());
    for (const Signal &signal : signals) {
        Envelope envelope;
        for (const double amplitude : amplitude_spectrum(signal.samples, kWindow, true))
            envelope.add(scaled(amplitude, true, Scale::Decibel));
        panel.curves.push_back(envelope.curve(signal.name, 1 / layout.frequency(1, rate)));
    }
    return panel;
}

void run(const Options &options) {
    Source source("the electrocardiogram", kEcgRecord);
    const Record record = read_record(source, {}, {});
    const double rate = rate_of(record);
    TIIRFilter design;
    initTIIRFilter(&design, ptLowPass, kCutoff, rate);
    const Signals signals = signals_of(record.channels.front().samples, design);
    Output out(data_file(options.plot, ""));
    print_table(out, signals, rate);
    out.flush();
    draw({.title = "An electrocardiogram freed from 60 Hz hum",
          .panels = {signals_panel(signals, rate), spectra_panel(signals, rate)}},
         options.plot);
    if (!options.output.empty()) print_signals(options.output, signals, rate);
    if (options.plot.kind == PlotOptions::File) out.write(fmt::format("\npicture in {}\n", options.plot.file));
    out.commit();
}

}  // namespace

void add_demo(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app =
        program.add_command("demo", "clean an electrocardiogram: a table, and a picture in ecg.svg", kExamples);
    app.add_option("-o,--output", options->output, "write the signals there: s, mV (CSV)").type_name("FILE");
    add_plot_options(app, options->plot);
    app.callback([options] { run(*options); });
}

}  // namespace cli
