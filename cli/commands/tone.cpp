// mensura tone: the amplitudes of every column or channel at single frequencies.
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "cli/app/commands.h"
#include "cli/app/diagnostics.h"
#include "cli/app/options.h"
#include "cli/app/quantity.h"
#include "cli/app/spectrum_options.h"
#include "cli/data/json.h"
#include "cli/data/record.h"
#include "cli/files/output.h"
#include "cli/spectra/spectrum.h"
#include "cli/table/csv.h"

namespace cli {

namespace {

constexpr const char *kExamples =
    "  mensura tone 50Hz 150Hz 250Hz --rate 10kHz --no-mean current.csv\n"
    "  mensura tone 1kHz --window flattop --db tone.wav\n"
    "  mensura tone 60 --power --json ecg.csv\n";

struct Options {
    SpectrumOptions spectrum;
    std::vector<std::string> arguments;  // frequencies, and after them a file
    InputOptions input;
    bool json = false;
    std::string output;
};

struct Request {
    std::vector<double> frequencies = {};  // Hz
    std::string file = {};
};

Request request_of(const std::vector<std::string> &arguments) {
    Request request;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        std::string error;
        if (const std::optional<double> frequency = parse_quantity(arguments[i], kHertz, error))
            request.frequencies.push_back(*frequency);
        else if (i + 1 == arguments.size())
            request.file = arguments[i];
        else
            reject("{}", error);
    }
    if (request.frequencies.empty()) reject("a frequency comes first, such as 50Hz");
    return request;
}

NumberTable tones_of(Record record, const std::vector<double> &frequencies, const SpectrumOptions &options) {
    for (const double frequency : frequencies)
        if (!(frequency >= 0 && frequency <= 0.5 * record.rate))
            reject("{} Hz: must lie within 0 and {} Hz, half the sampling rate", frequency, 0.5 * record.rate);
    NumberTable table{.names = {"frequency_Hz"}, .columns = {frequencies}};
    for (Channel &channel : record.channels) {
        if (channel.pieces.size() > 1)
            reject(
                "{}: {} has holes, and no phase goes on behind them; --gaps hold fills them, and spectrum --average "
                "takes segments between them",
                record.name, channel.name);
        const std::span<const double> piece = samples_of(channel, channel.pieces.front());
        std::vector<double> tones =
            amplitudes_at(frequencies, record.rate, {piece.begin(), piece.end()}, options.window, options.no_mean);
        for (std::size_t i = 0; i < tones.size(); ++i)
            tones[i] = scaled(tones[i], frequencies[i] > 0 && frequencies[i] < 0.5 * record.rate, options.scale);
        table.names.push_back(channel.name);
        table.columns.push_back(std::move(tones));
    }
    return table;
}

void print_json(const NumberTable &tones, double rate, const SpectrumOptions &options, Output &out) {
    using nlohmann::ordered_json;
    ordered_json columns = ordered_json::array();
    for (std::size_t k = 1; k < tones.columns.size(); ++k) {
        ordered_json list = ordered_json::array();
        for (std::size_t i = 0; i < tones.columns[k].size(); ++i)
            list.push_back({{"frequency_Hz", tones.columns[0][i]}, {key_of(options.scale), tones.columns[k][i]}});
        columns.push_back({{"column", tones.names[k]}, {"tones", list}});
    }
    write_json({{"rate_Hz", rate}, {"window", window_name(options.window.kind)}, {"columns", columns}}, out);
}

void run(Options &options) {
    const Request request = request_of(options.arguments);
    options.input.file = request.file;
    remark_on(options.spectrum.window);
    Record record = read_signals(options.input);
    const double rate = record.rate;
    const NumberTable tones = tones_of(std::move(record), request.frequencies, options.spectrum);
    Output out(options.output);
    if (options.json)
        print_json(tones, rate, options.spectrum, out);
    else
        write_csv(tones, out);
    out.commit();
}

}  // namespace

void add_tone(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app = program.add_command("tone", "amplitudes at single frequencies", kExamples);
    app.add_option("F", options->arguments,
                   "frequencies in Hz, from 0 to half the sampling rate; after them the input, - or none is standard "
                   "input")
        .type_name("... [FILE]")
        .required();
    add_rate(app, options->input.rate);
    add_spectrum_options(app, options->spectrum, "rectangle, which changes nothing");
    app.add_flag("--json", options->json, "print the amplitudes as JSON; null stands for minus infinity");
    add_reading(app, options->input);
    add_output(app, options->output);
    app.callback([options] { run(*options); });
}

}  // namespace cli
