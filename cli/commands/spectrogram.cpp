// mensura spectrogram: the amplitudes of every column or channel over time and frequency.
#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "cli/app/commands.h"
#include "cli/app/diagnostics.h"
#include "cli/app/options.h"
#include "cli/app/quantity.h"
#include "cli/app/spectrum_options.h"
#include "cli/app/utf8.h"
#include "cli/commands/spectrum_label.h"
#include "cli/data/record.h"
#include "cli/data/stream.h"
#include "cli/files/output.h"
#include "cli/plot/comparison.h"
#include "cli/plot/draw.h"
#include "cli/plot/heat_map.h"
#include "cli/spectra/bands.h"
#include "cli/spectra/spectrum.h"
#include "cli/table/columns.h"
#include "cli/table/csv.h"

namespace cli {

namespace {

constexpr const char *kExamples =
    "  mensura spectrogram --db --plot=speech.png -o speech.csv speech.wav\n"
    "  mensura spectrogram --segment 512 --overlap 75 --to 50Hz --plot=ecg.svg ecg.csv\n"
    "  mensura spectrogram --density --no-mean --rate 1kHz vibration.csv > over_time.csv\n";

constexpr std::size_t kUsualSegment = 256, kUsualSegmentOfSounds = 1024;

struct Options {
    SpectrumOptions spectrum{.window = {.kind = wkHanning}};
    std::optional<int> segment = {};
    std::optional<double> overlap = {}, from = {}, to = {};
    bool json = false;
    Files files;
};

using Samples = std::span<const double>;  // of a segment of one channel

// Turns segments into rows of a table or into JSON, and collects the picture.
class Spectrogram {
  public:
    Spectrogram(const Options &options, const SpectrumLayout &layout, double rate, std::vector<std::string> names,
                std::vector<std::string> units)
        : options_(options),
          layout_(layout),
          rate_(rate),
          names_(std::move(names)),
          units_(std::move(units)),
          weights_(weights_of(options.spectrum.window, layout.samples, true)),
          transform_(layout.points),
          bandwidth_(rate * noise_bandwidth(options.spectrum.window, layout.samples)),
          out_(data_file(options.files.plot, options.files.output)),
          pictures_(options.files.plot.wanted() ? std::min(names_.size(), kMostPanels) : 0),
          bins_(bins_within(options.from, options.to, layout, rate)) {}

    // A segment of each channel; `start`: where its first sample lies, in samples from the first of the record.
    void add(std::size_t start, const std::vector<Samples> &channels) {
        if (segments_++ == 0) write_head();
        std::vector<std::vector<double>> spectra(channels.size());
        for (std::size_t i = 0; i < channels.size(); ++i) spectra[i] = amplitudes_of(channels[i]);
        for (std::size_t i = 0; i < pictures_.size(); ++i)
            pictures_[i].add(start / layout_.step, in_picture(spectra[i]));
        for (std::size_t i = 0; i < spectra.size(); ++i)
            for (std::size_t k = 0; k < spectra[i].size(); ++k)
                spectra[i][k] =
                    scaled(spectra[i][k], layout_.mirrored(bins_.begin + k), options_.spectrum.scale, bandwidth_);
        const double middle = static_cast<double>(start) + 0.5 * static_cast<double>(layout_.samples);
        write(middle / rate_, spectra);
    }

    void finish() {
        if (options_.json) out_.write("\n]}\n");
        out_.commit();
        if (options_.files.plot.wanted()) draw(figure(), options_.files.plot);
    }
    std::size_t segments() const { return segments_; }

  private:
    std::vector<double> amplitudes_of(Samples samples) const {
        std::vector<double> segment(samples.begin(), samples.end());
        prepare(segment, weights_, options_.spectrum.no_mean);
        const std::vector<double> bins = transform_.moduli(std::move(segment));
        std::vector<double> amplitudes;
        for (std::size_t k = bins_.begin; k < bins_.end; ++k)
            amplitudes.push_back(bins[k] * layout_.amplitude_factor(k));
        return amplitudes;
    }

    bool is_density() const {
        return options_.spectrum.scale == Scale::Density || options_.spectrum.scale == Scale::DensityDecibel;
    }

    // Amplitudes, or the roots of densities.
    std::vector<double> in_picture(std::vector<double> amplitudes) const {
        for (std::size_t k = 0; is_density() && k < amplitudes.size(); ++k)
            amplitudes[k] =
                std::sqrt(scaled(amplitudes[k], layout_.mirrored(bins_.begin + k), Scale::Density, bandwidth_));
        return amplitudes;
    }

    void write_head() {
        if (options_.json) return write_json_head();
        out_.write("time_s,frequency_Hz");
        for (const std::string &name : names_) out_.write(',' + cell_text(name, ','));
        out_.write("\n");
    }

    // Segments follow in a list, a line for each, so that no more than one has to be kept.
    void write_json_head() {
        nlohmann::ordered_json head{{"rate_Hz", rate_},
                                    {"window", window_name(options_.spectrum.window.kind)},
                                    {"noise_bandwidth_Hz", bandwidth_},
                                    {"segment_samples", layout_.samples},
                                    {"segment_step_samples", layout_.step}};
        for (std::size_t k = bins_.begin; k < bins_.end; ++k)
            head["frequency_Hz"].push_back(layout_.frequency(k, rate_));
        std::string text = head.dump();
        text.pop_back();
        out_.write(text + ",\"segments\":[");
    }

    void write(double time, const std::vector<std::vector<double>> &spectra) {
        if (options_.json) return write_json(time, spectra);
        std::vector<double> row(2 + spectra.size(), time);
        for (std::size_t k = bins_.begin; k < bins_.end; ++k) {
            row[1] = layout_.frequency(k, rate_);
            for (std::size_t i = 0; i < spectra.size(); ++i) row[2 + i] = spectra[i][k - bins_.begin];
            write_row(row, out_);
        }
    }

    void write_json(double time, const std::vector<std::vector<double>> &spectra) {
        nlohmann::ordered_json segment{{"time_s", time}};
        for (std::size_t i = 0; i < spectra.size(); ++i)
            segment["columns"].push_back(
                {{"column", as_utf8(names_[i])}, {key_of(options_.spectrum.scale), spectra[i]}});
        out_.write((segments_ > 1 ? ",\n" : "\n") + segment.dump());
        if (out_.full()) out_.flush();
    }

    // Always in decibels, of the amplitude or of its density.
    Figure figure() const {
        const std::string title = fmt::format("spectrogram, {} window of {} samples",
                                              window_name(options_.spectrum.window.kind), layout_.samples);
        const double step = static_cast<double>(layout_.step) / rate_, width = layout_.frequency(1, rate_);
        const double middle = 0.5 * static_cast<double>(layout_.samples) / rate_;
        Figure figure{.title = title};
        const double lowest = layout_.frequency(bins_.begin, rate_), highest = layout_.frequency(bins_.end - 1, rate_);
        const Scale scale = is_density() ? Scale::DensityDecibel : Scale::Decibel;
        for (std::size_t i = 0; i < pictures_.size(); ++i)
            figure.panels.push_back(
                {.title = pictures_.size() == 1 ? title : "",
                 .x_label = "time [s]",
                 .y_label = "frequency [Hz]",
                 .image = pictures_[i].decibels(middle - 0.5 * step, step, lowest - 0.5 * width, width,
                                                scale_label(labelled(names_[i], units_[i]), scale)),
                 .y_lowest = std::max(lowest - 0.5 * width, 0.0),
                 .y_highest = std::min(highest + 0.5 * width, 0.5 * rate_)});
        remark_on_channels_left_out(names_.size());
        return figure;
    }

    const Options &options_;
    SpectrumLayout layout_;
    double rate_;
    std::vector<std::string> names_, units_;
    std::vector<double> weights_;
    Transform transform_;
    double bandwidth_;  // Hz
    Output out_;
    std::vector<HeatMap> pictures_;
    BinRange bins_;
    std::size_t segments_ = 0;
};

SpectrumLayout layout_for(const Options &options, std::size_t samples, std::size_t usual) {
    Averaging averaging{options.segment, options.overlap.value_or(kUsualOverlap)};
    if (!options.segment) averaging.segment = static_cast<int>(std::min(usual, usual_segment(samples)));
    return layout_for(samples, averaging);
}

// What lies in a piece of each list; both are in order.
std::vector<Piece> common_pieces(const std::vector<Piece> &a, const std::vector<Piece> &b) {
    std::vector<Piece> common;
    for (std::size_t i = 0, k = 0; i < a.size() && k < b.size();) {
        const Piece piece{std::max(a[i].begin, b[k].begin), std::min(a[i].end, b[k].end)};
        if (piece.begin < piece.end) common.push_back(piece);
        if (a[i].end < b[k].end)
            ++i;
        else
            ++k;
    }
    return common;
}

void run_on_table(const Options &options, Source &source) {
    const Record record = read_signals(source, options.files.input);
    std::vector<Piece> pieces = record.channels.front().pieces;
    for (const Channel &channel : record.channels) pieces = common_pieces(pieces, channel.pieces);
    std::size_t longest = 0;
    for (const Piece &piece : pieces) longest = std::max(longest, piece.end - piece.begin);
    if (longest == 0) reject("{}: its columns have no row in common between their holes", record.name);
    const SpectrumLayout layout = layout_for(options, longest, kUsualSegment);
    std::vector<std::string> names, units;
    for (const Channel &channel : record.channels) {
        names.push_back(channel.name);
        units.push_back(channel.unit);
    }
    Spectrogram spectrogram(options, layout, record.rate, names, units);
    std::vector<Samples> segment(record.channels.size());
    for (const Piece &piece : pieces)
        for (std::size_t start = piece.begin; start + layout.samples <= piece.end; start += layout.step) {
            for (std::size_t i = 0; i < segment.size(); ++i)
                segment[i] = Samples(record.channels[i].samples).subspan(start, layout.samples);
            spectrogram.add(record.place_of(start), segment);
        }
    spectrogram.finish();
}

// Hands on the segments of a sound as they come, and keeps no more of it than they need.
class Segmenter {
  public:
    Segmenter(Spectrogram &spectrogram, const SpectrumLayout &layout, std::size_t channels)
        : spectrogram_(spectrogram), layout_(layout), samples_(channels) {}

    void add(std::span<const double> frames) {
        for (std::size_t i = 0; i < frames.size(); ++i) samples_[i % samples_.size()].push_back(frames[i]);
        std::size_t used = 0;
        for (; used + layout_.samples <= samples_.front().size(); used += layout_.step)
            spectrogram_.add(start_ + used, segments_at(used));
        used = std::min(used, samples_.front().size());
        for (std::vector<double> &samples : samples_)
            samples.erase(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(used));
        start_ += used;
    }
    std::size_t length() const { return start_ + samples_.front().size(); }

  private:
    std::vector<Samples> segments_at(std::size_t from) const {
        std::vector<Samples> segments;
        for (const std::vector<double> &samples : samples_)
            segments.push_back(Samples(samples).subspan(from, layout_.samples));
        return segments;
    }

    Spectrogram &spectrogram_;
    SpectrumLayout layout_;
    std::vector<std::vector<double>> samples_;  // of each channel, from start_ on
    std::size_t start_ = 0;
};

void run_on_sound(const Options &options, Source &source) {
    SoundReader sound(source);
    sound.check_request(options.files.input);
    const std::size_t segment = options.segment ? static_cast<std::size_t>(*options.segment) : kUsualSegmentOfSounds;
    const SpectrumLayout layout = layout_of(segment, options.overlap.value_or(kUsualOverlap));
    std::vector<std::string> names;
    for (std::size_t i = 0; i < sound.channels(); ++i) names.push_back(sound.channel_name(i));
    Spectrogram spectrogram(options, layout, sound.rate(), names,
                            std::vector<std::string>(sound.channels(), kFullScale));
    Segmenter segmenter(spectrogram, layout, sound.channels());
    std::vector<double> frames(kSoundFrames * sound.channels());
    Gaps gaps;
    while (const std::size_t count = sound.read(frames)) {
        const std::span<double> block = std::span(frames).first(count);
        gaps.fill(block, sound.channels());
        segmenter.add(block);
    }
    if (spectrogram.segments() == 0)
        reject("{}: has {} samples, fewer than a segment of {}; --segment takes shorter ones", source.name(),
               segmenter.length(), layout.samples);
    spectrogram.finish();
}

void run(const Options &options) {
    remark_on(options.spectrum.window);
    if (options.files.plot.kind == PlotOptions::Terminal)
        reject("a spectrogram needs colours, which a terminal does not show; name a file, such as --plot=FILE.png");
    Source source(options.files.input.file);
    if (is_sound(source)) return run_on_sound(options, source);
    run_on_table(options, source);
}

}  // namespace

void add_spectrogram(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app = program.add_command(
        "spectrogram", "amplitudes or densities over time and frequency, with a picture", kExamples);
    add_rate(app, options->files.input.rate);
    add_spectrum_options(app, options->spectrum, "hanning");
    add_density(app, options->spectrum);
    add_segments(app, options->segment, options->overlap,
                 fmt::format("{} in a table, if eight fit, and {} in a sound", kUsualSegment, kUsualSegmentOfSounds));
    add_quantity(app, "--from", options->from, kHertz, "lowest frequency in table and picture");
    add_quantity(app, "--to", options->to, kHertz, "highest frequency in table and picture");
    app.add_flag("--json", options->json, "print JSON instead of a table, a line for each segment");
    add_files(app, options->files);
    app.callback([options] { run(*options); });
}

}  // namespace cli
