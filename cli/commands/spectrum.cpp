// mensura spectrum: the amplitudes of every column or channel over frequency.
#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/app/commands.h"
#include "cli/app/diagnostics.h"
#include "cli/app/options.h"
#include "cli/app/quantity.h"
#include "cli/app/spectrum_options.h"
#include "cli/data/csv.h"
#include "cli/data/record.h"
#include "cli/data/spectrum.h"
#include "cli/files/output.h"
#include "cli/plot/comparison.h"
#include "cli/plot/draw.h"
#include "cli/plot/envelope.h"

namespace cli {

namespace {

constexpr const char *kExamples =
    "  mensura spectrum ecg.csv > spectrum.csv\n"
    "  mensura spectrum --window hanning --db --plot=spectrum.svg ecg.csv\n"
    "  mensura spectrum --rate 1kHz --column current --window flattop --no-mean --plot measured.csv\n";

constexpr double kDepthOfPicture = 200;  // dB below the highest bin; anything lower is rounding

struct Options {
    SpectrumOptions spectrum;
    Files files;
};

void remark_on_length(const SpectrumLayout &layout, std::size_t samples) {
    const std::string padded =
        layout.points == layout.samples ? "" : fmt::format(" padded with zeros to {}", layout.points);
    if (layout.parts > 1)
        remark("{} samples: the powers of {} parts of {}{} are averaged", samples, layout.parts, layout.samples,
               padded);
    else if (!padded.empty())
        remark("{} samples are{}", samples, padded);
}

// A column of frequencies and one of values for each channel.  The samples are moved out of the record.
NumberTable spectra_of(Record &record, const SpectrumOptions &options) {
    const SpectrumLayout layout = layout_for(record.length());
    NumberTable spectra{.names = {"frequency_Hz"}, .columns = {std::vector<double>(layout.bins())}};
    for (std::size_t k = 0; k < layout.bins(); ++k) spectra.columns[0][k] = layout.frequency(k, record.rate);
    for (Channel &channel : record.channels) {
        std::vector<double> bins = amplitude_spectrum(std::move(channel.samples), options.window, options.no_mean);
        for (std::size_t k = 0; k < bins.size(); ++k) bins[k] = scaled(bins[k], layout.mirrored(k), options.scale);
        spectra.names.push_back(channel.name);
        spectra.columns.push_back(std::move(bins));
    }
    return spectra;
}

std::string label_of(const std::string &name, Scale scale) {
    return scale == Scale::Decibel ? name + " [dB]" : scale == Scale::Power ? name + ", mean square" : name;
}

double highest_finite(const std::vector<double> &values) {
    double highest = std::nan("");
    for (const double value : values)
        if (std::isfinite(value)) highest = std::fmax(highest, value);
    return highest;
}

Figure figure_of(const NumberTable &spectra, double spacing, const SpectrumOptions &options, const PlotOptions &plot) {
    const std::string title = fmt::format("spectrum, {} window", window_name(options.window.kind));
    const std::size_t channels = spectra.names.size() - 1;
    Figure figure{.title = title};
    for (std::size_t i = 1; i <= std::min(channels, kMostPanels); ++i) {
        const std::vector<double> &values = spectra.columns[i];
        const double lowest = options.scale == Scale::Decibel ? highest_finite(values) - kDepthOfPicture : 0.0;
        Envelope envelope(plot);
        for (const double value : values) envelope.add(std::max(value, lowest));
        figure.panels.push_back({.title = channels == 1 ? title : "",
                                 .x_label = "frequency [Hz]",
                                 .y_label = label_of(spectra.names[i], options.scale),
                                 .curves = {envelope.curve("", 1 / spacing)},
                                 .x_lowest = 0,
                                 .x_highest = spectra.columns[0].back()});
    }
    remark_on_channels_left_out(channels);
    return figure;
}

void run(const Options &options) {
    remark_on(options.spectrum.window);
    Record record = read_signals(options.files.input);
    const SpectrumLayout layout = layout_for(record.length());
    remark_on_length(layout, record.length());
    const NumberTable spectra = spectra_of(record, options.spectrum);
    Output out(data_file(options.files.plot, options.files.output));
    write_csv(spectra, out);
    out.commit();
    if (options.files.plot.wanted())
        draw(figure_of(spectra, layout.frequency(1, record.rate), options.spectrum, options.files.plot),
             options.files.plot);
}

}  // namespace

void add_spectrum(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app = program.add_command("spectrum", "amplitudes over frequency", kExamples);
    add_rate(app, options->files.input.rate, "sampling rate in Hz; default from the column of times or the WAV");
    add_spectrum_options(app, options->spectrum);
    add_files(app, options->files);
    app.callback([options] { run(*options); });
}

}  // namespace cli
