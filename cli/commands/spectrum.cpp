// mensura spectrum: the amplitudes of every column or channel over frequency.
#include <memory>
#include <string>
#include <vector>

#include "cli/app/commands.h"
#include "cli/app/diagnostics.h"
#include "cli/app/options.h"
#include "cli/app/quantity.h"
#include "cli/app/spectrum_options.h"
#include "cli/commands/spectrum_report.h"
#include "cli/data/record.h"
#include "cli/files/output.h"
#include "cli/plot/draw.h"
#include "cli/spectra/spectrum.h"

namespace cli {

namespace {

constexpr const char *kExamples =
    "  mensura spectrum ecg.csv > spectrum.csv\n"
    "  mensura spectrum --window hanning --db --plot=spectrum.svg ecg.csv\n"
    "  mensura spectrum --average --density --no-mean --plot=density.svg vibration.csv\n"
    "  mensura spectrum --bands 10Hz-45Hz,45Hz-55Hz vibration.csv\n"
    "  mensura spectrum --peaks 5 --from 20Hz --json tone.wav\n";

constexpr int kMostPeaks = 1000;

struct Options {
    SpectrumRequest request;
    AveragingOptions averaging;
    bool json = false;
    Files files;
};

void remark_on_length(const SpectrumReport &report) {
    const SpectrumLayout &layout = report.layout;
    const std::string padded =
        layout.points == layout.samples ? "" : fmt::format(" padded with zeros to {}", layout.points);
    const std::size_t parts = report.channels.front().segments;
    if (const auto &averaging = report.request.averaging)
        remark("{} of the powers of {} segment{} of {} samples{}, {} % overlap, {} window",
               averaging->median ? "median" : "mean", parts, parts == 1 ? "" : "s", layout.samples, padded,
               averaging->overlap, window_name(report.request.spectrum.window.kind));
    else if (parts > 1)
        remark("{} samples: the powers of {} parts of {}{} are averaged", report.samples, parts, layout.samples,
               padded);
    else if (!padded.empty())
        remark("{} samples are{}", report.samples, padded);
}

SpectrumRequest request_of(const Options &options) {
    SpectrumRequest request = options.request;
    request.averaging = averaging_of(options.averaging);
    const bool leaks = request.averaging || request.peaks || !request.bands.empty();
    if (leaks && !request.spectrum.window_chosen) request.spectrum.window.kind = wkHanning;
    return request;
}

void run(const Options &options) {
    const SpectrumRequest request = request_of(options);
    check_axis(options.files.plot);
    remark_on(request.spectrum.window);
    const SpectrumReport report = spectra_of(read_signals(options.files.input), request);
    remark_on_length(report);
    Output out(data_file(options.files.plot, options.files.output));
    if (options.json)
        print_json(report, out);
    else
        print_csv(report, out);
    out.commit();
    if (options.files.plot.wanted()) draw(figure_of(report, options.files.plot), options.files.plot);
}

void add_selection(const Command &app, SpectrumRequest &request) {
    app.add_option(
           "--bands", [&request](const std::string &list) { request.bands = parse_bands("--bands", list); },
           "instead of the spectrum the rms in these bands, such as 10Hz-45Hz,45Hz-55Hz")
        .type_name("F-F,...");
    const auto take_peaks = [&request](int peaks) {
        if (peaks < 1 || peaks > kMostPeaks)
            reject_option("--peaks", fmt::format("{} must lie between 1 and {}", peaks, kMostPeaks));
        request.peaks = peaks;
    };
    add_count(app, "--peaks", std::function<void(int)>(take_peaks),
              "instead of the spectrum its N highest peaks, by interpolation between the bins")
        .excludes({"--bands"});
    add_quantity(app, "--from", request.from, kHertz, "lowest frequency in table, peaks and picture");
    add_quantity(app, "--to", request.to, kHertz, "highest frequency in table, peaks and picture");
}

}  // namespace

void add_spectrum(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app =
        program.add_command("spectrum", "amplitudes or densities over frequency, peaks, rms in bands", kExamples);
    add_rate(app, options->files.input.rate);
    add_spectrum_options(app, options->request.spectrum, "hanning with --average, --bands and --peaks, else rectangle");
    add_density(app, options->request.spectrum);
    add_averaging(app, options->averaging);
    add_selection(app, options->request);
    app.add_flag("--json", options->json, "print JSON instead of a table");
    add_files(app, options->files);
    add_axis_option(app, options->files.plot);
    app.callback([options] { run(*options); });
}

}  // namespace cli
