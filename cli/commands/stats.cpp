// mensura stats: figures that describe every column or channel, in one pass and constant memory.
#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/app/commands.h"
#include "cli/app/diagnostics.h"
#include "cli/app/options.h"
#include "cli/data/json.h"
#include "cli/data/statistics.h"
#include "cli/files/output.h"
#include "cli/input/source.h"
#include "cli/sound/sound.h"
#include "cli/table/csv.h"
#include "cli/table/table.h"

namespace cli {

namespace {

constexpr const char *kExamples =
    "  mensura stats ecg.csv\n"
    "  mensura stats --json speech.wav\n"
    "  mensura filter highpass --cutoff 10Hz vibration.csv | mensura stats --column ax\n";

struct Options {
    InputOptions input;
    std::string output;
    bool json = false;
};

struct Described {
    std::string name = {};
    Statistics statistics = {};
};

struct Quantity {
    const char *name;
    double (Statistics::*value)() const;
};
constexpr std::array kFigures{Quantity{"mean", &Statistics::mean},
                              Quantity{"rms", &Statistics::rms},
                              Quantity{"standard_deviation", &Statistics::standard_deviation},
                              Quantity{"min", &Statistics::lowest},
                              Quantity{"max", &Statistics::highest},
                              Quantity{"peak_to_peak", &Statistics::peak_to_peak},
                              Quantity{"crest_factor", &Statistics::crest_factor}};

std::vector<Described> describe_table(Source &source, const InputOptions &input) {
    TableReader table(source, input);
    std::vector<Described> all, numbers;
    while (table.next()) {
        if (table.kind() != LineKind::Data) continue;
        all.resize(table.columns().size());
        for (std::size_t i = 0; i < all.size(); ++i) all[i].statistics.add(table.values()[i]);
    }
    for (std::size_t i = 0; i < all.size(); ++i)
        if (table.columns()[i].kind != Column::Text) numbers.push_back({table.columns()[i].name, all[i].statistics});
    return numbers;
}

std::vector<Described> describe_sound(Source &source, const InputOptions &input) {
    SoundReader sound(source);
    sound.check_request(input);
    std::vector<Described> channels;
    for (std::size_t i = 0; i < sound.channels(); ++i) channels.push_back({.name = sound.channel_name(i)});
    std::vector<double> frames(kSoundFrames * sound.channels());
    while (const std::size_t count = sound.read(frames))
        for (std::size_t i = 0; i < count; ++i) channels[i % channels.size()].statistics.add(frames[i]);
    return channels;
}

bool some_are_missing(const std::vector<Described> &channels) {
    return std::ranges::any_of(channels, [](const Described &one) { return one.statistics.missing() > 0; });
}

// A row; `cell` gives the text for each channel.
template <class Cell>
void write_row_of(const std::string &name, const std::vector<Described> &channels, Output &out, Cell cell) {
    out.write(name);
    for (const Described &one : channels) {
        out.write(",");
        out.write(cell(one));
    }
    out.write("\n");
}

void print_csv(const std::vector<Described> &channels, Output &out) {
    const auto write = [&](const std::string &name, auto cell) { write_row_of(name, channels, out, cell); };
    write("statistic", [](const Described &one) { return cell_text(one.name, ','); });
    write("n", [](const Described &one) { return fmt::to_string(one.statistics.count()); });
    if (some_are_missing(channels))
        write("missing", [](const Described &one) { return fmt::to_string(one.statistics.missing()); });
    for (const Quantity &figure : kFigures)
        write(figure.name, [&figure](const Described &one) {
            const double value = (one.statistics.*figure.value)();
            return std::isnan(value) ? std::string() : fmt::to_string(value);
        });
}

void print_json(const std::vector<Described> &channels, Output &out) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const Described &one : channels) {
        nlohmann::ordered_json json{
            {"column", one.name}, {"n", one.statistics.count()}, {"missing", one.statistics.missing()}};
        for (const Quantity &figure : kFigures) json[figure.name] = (one.statistics.*figure.value)();
        list.push_back(json);
    }
    write_json({{"columns", list}}, out);
}

void run(const Options &options) {
    if (options.input.gaps != GapPolicy::Hold)
        reject("--gaps is not for stats, which leaves out and counts what is missing");
    Source source(options.input.file);
    const std::vector<Described> channels =
        is_sound(source) ? describe_sound(source, options.input) : describe_table(source, options.input);
    if (channels.empty()) reject("{}: holds no numbers", source.name());
    Output out(options.output);
    if (options.json)
        print_json(channels, out);
    else
        print_csv(channels, out);
    out.commit();
}

}  // namespace

void add_stats(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app = program.add_command(
        "stats",
        "count, mean, rms, standard deviation (of n - 1), extremes and crest factor of every column or channel",
        kExamples);
    app.add_flag("--json", options->json, "print JSON instead of a table");
    add_input(app, options->input);
    add_output(app, options->output);
    app.callback([options] { run(*options); });
}

}  // namespace cli
