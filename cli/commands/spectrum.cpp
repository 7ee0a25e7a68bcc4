// mensura spectrum: the amplitudes of every column or channel over frequency.
#include "cli/data/spectrum.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "cli/app/commands.h"
#include "cli/app/diagnostics.h"
#include "cli/app/quantity.h"
#include "cli/data/rewrite.h"

namespace cli {

namespace {

constexpr const char *kExamples =
    "  mensura spectrum ecg.csv > spectrum.csv\n"
    "  mensura spectrum --window hanning --db --plot=spectrum.svg ecg.csv\n"
    "  mensura spectrum --rate 1kHz --column current --window flattop --no-mean --plot measured.csv\n";

constexpr double kDepthOfPicture = 200;  // dB: what lies deeper below the highest bin is rounding

struct Options {
    SpectrumOptions spectrum;
    std::optional<double> rate;
    Files files;
};

void remark_on_length(const Transform &transform, std::size_t samples) {
    const std::string padded =
        transform.points == transform.samples ? "" : fmt::format(" padded with zeros to {}", transform.points);
    if (transform.parts > 1)
        remark("{} samples: the powers of {} parts of {}{} are averaged", samples, transform.parts, transform.samples,
               padded);
    else if (!padded.empty())
        remark("{} samples are{}", samples, padded);
}

Spectra spectra_of(const Record &record, const SpectrumOptions &options) {
    const Transform transform = transform_for(record.length());
    Spectra spectra;
    for (std::size_t k = 0; k < transform.bins(); ++k)
        spectra.frequencies.push_back(transform.frequency(k, record.rate));
    for (const Channel &channel : record.channels) {
        std::vector<double> bins = amplitude_spectrum(channel.samples, options.window, options.no_mean);
        for (std::size_t k = 0; k < bins.size(); ++k) bins[k] = scaled(bins[k], transform.mirrored(k), options.scale);
        spectra.names.push_back(channel.name);
        spectra.values.push_back(std::move(bins));
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

Figure figure_of(const Spectra &spectra, double spacing, const SpectrumOptions &options) {
    Figure figure;
    const std::string title = fmt::format("spectrum, {} window", window_name(options.window.kind));
    for (std::size_t i = 0; i < std::min(spectra.names.size(), kMostPanels); ++i) {
        const std::vector<double> &values = spectra.values[i];
        const double lowest = options.scale == Scale::Decibel ? highest_finite(values) - kDepthOfPicture : 0.0;
        Envelope envelope;
        for (const double value : values) envelope.add(std::max(value, lowest));
        figure.panels.push_back({.title = spectra.names.size() == 1 ? title : "",
                                 .x_label = "frequency [Hz]",
                                 .y_label = label_of(spectra.names[i], options.scale),
                                 .curves = {envelope.curve("", 1 / spacing)},
                                 .x_lowest = 0,
                                 .x_highest = spectra.frequencies.back()});
    }
    figure.title = title;
    if (spectra.names.size() > kMostPanels)
        remark("the picture shows the first {} of {} channels", kMostPanels, spectra.names.size());
    return figure;
}

void run(const Options &options) {
    remark_on(options.spectrum.window);
    const Record record = read_signals(options.files.input, options.files.columns, options.rate);
    const Transform transform = transform_for(record.length());
    remark_on_length(transform, record.length());
    const Spectra spectra = spectra_of(record, options.spectrum);
    Output out(data_file(options.files.plot, options.files.output));
    write_csv(spectra, out);
    out.commit();
    if (options.files.plot.wanted())
        draw(figure_of(spectra, transform.frequency(1, record.rate), options.spectrum), options.files.plot);
}

}  // namespace

void add_spectrum(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app = program.add_command("spectrum", "amplitudes over frequency", kExamples);
    add_rate(app, options->rate, "sampling rate in Hz; default from the column of times or the WAV");
    add_spectrum_options(app, options->spectrum);
    add_files(app, options->files);
    app.callback([options] { run(*options); });
}

}  // namespace cli
