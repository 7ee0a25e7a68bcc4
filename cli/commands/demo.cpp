// mensura demo: an electrocardiogram freed from mains hum by a notch, with a low-pass beside it, and what each costs.
#include <fmt/format.h>
#include <mensura/sos.h>
#include <mensura/spectral.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "cli/app/commands.h"
#include "cli/commands/beats.h"
#include "cli/commands/ecg_record.h"
#include "cli/data/cascade.h"
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

constexpr double kHum = 60, kWidth = 4, kCutoff = 40;  // Hz
constexpr int kNotchPoles = 2, kLowpassPoles = 6;
constexpr Window kWindow{.kind = wkHanning};
constexpr double kPictureFrom = 28.2, kPictureTo = 29.1;  // s

struct Options {
    PlotOptions plot{.kind = PlotOptions::File, .file = "ecg.svg"};
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

using Values = std::array<double, kSignals>;

void print_row(Output &out, const char *label, const Values &values, int decimals) {
    const double unit = std::pow(10.0, -decimals);
    out.write(fmt::format("{:<28}", label));
    for (const double value : values)
        out.write(fmt::format("{:>12.{}f}", std::round(value / unit) * unit + 0.0, decimals));
    out.write("\n");
}

void print_table(Output &out, const Signals &signals, double rate) {
    const std::vector<double> &raw = signals[0].samples;
    const std::vector<std::size_t> peaks = r_peaks(raw, rate);
    const std::vector<double> before = heights_of(peaks, raw, rate, 0);
    Values hum{}, height{}, kept{}, worst{}, delay{};
    for (std::size_t s = 0; s < signals.size(); ++s) {
        const std::vector<double> &x = signals[s].samples;
        const double samples = lag(raw, x);
        const std::vector<double> after = heights_of(peaks, x, rate, static_cast<int>(std::lround(samples)));
        std::vector<double> ratio;
        for (std::size_t i = 0; i < peaks.size(); ++i) ratio.push_back(100 * after[i] / before[i]);
        hum[s] = 1e3 * amplitudes_at({kHum}, rate, x, kWindow, true).front();
        height[s] = median(after);
        kept[s] = median(ratio);
        worst[s] = *std::ranges::min_element(ratio);
        delay[s] = 1e3 / rate * samples;
    }
    out.write(fmt::format(
        "An electrocardiogram of {:.0f} s, sampled at {} Hz, with {} beats\n\n"
        "  notch    {} Hz, {} Hz wide, {} poles, zero phase\n"
        "  lowpass  -3 dB at {} Hz, {} poles, zero phase\n"
        "  one-way  the same low-pass forwards only, as during a measurement\n\n",
        static_cast<double>(raw.size()) / rate, rate, peaks.size(), kHum, kWidth, kNotchPoles, kCutoff, kLowpassPoles));
    out.write(fmt::format("{:<28}", ""));
    for (const Signal &signal : signals) out.write(fmt::format("{:>12}", signal.name));
    out.write("\n");
    print_row(out, "60 Hz hum, amplitude (uV)", hum, 3);
    print_row(out, "R peak, median height (mV)", height, 3);
    print_row(out, "kept of a beat, median (%)", kept, 1);
    print_row(out, "kept of a beat, worst (%)", worst, 1);
    print_row(out, "delay (ms)", delay, 2);
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

Panel spectra_panel(const Signals &signals, double rate, const PlotOptions &plot) {
    Panel panel{.x_label = "frequency [Hz]",
                .y_label = "amplitude [dB re 1 mV]",
                .marks = {{kHum, fmt::format("{} Hz", kHum)}},
                .y_lowest = -140,
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
    print_table(out, signals, rate);
    out.flush();
    draw({.title = "An electrocardiogram freed from 60 Hz hum",
          .panels = {signals_panel(signals, rate), spectra_panel(signals, rate, options.plot)}},
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
