// mensura decimate: keeps every FACTOR-th row or frame, behind a low-pass that leaves no aliases.
#include <mensura/sos.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "cli/app/commands.h"
#include "cli/app/diagnostics.h"
#include "cli/app/options.h"
#include "cli/app/quantity.h"
#include "cli/data/cascade.h"
#include "cli/data/record.h"
#include "cli/data/stream.h"
#include "cli/input/source.h"
#include "cli/sound/sound.h"
#include "cli/table/table.h"

namespace cli {

namespace {

constexpr const char *kExamples =
    "  mensura decimate 10 ecg.csv > slow.csv\n"
    "  logger | mensura decimate 100 --rate 10kHz | viewer\n"
    "  mensura decimate 6 -o speech.wav studio.wav\n"
    "  mensura decimate 4 --zero-phase gait.csv > small.csv\n";

constexpr double kRipple = 0.1, kAliases = 80;  // dB
constexpr double kPassed = 0.8;                 // of the new Nyquist frequency
constexpr int kLargest = 10000;                 // from 30000 on, doubles hold the low-pass too coarsely

struct Options {
    InputOptions input;
    std::string output;
    int factor = 1;
    bool zero_phase = false, quiet = false;

    std::size_t step() const { return static_cast<std::size_t>(factor); }
};

struct LowPass {
    Sections sections;  // none where every sample is kept
    int poles = 0;
    double delay = 0;  // at 0 Hz, samples
};

int checked_for(int factor, int code) {
    if (code < 0) fail("the low-pass for FACTOR {}: {}", factor, mensura_sos_message(code));
    return code;
}

// The ripple lies between the gain at 0 Hz and kRipple to one side of it: the attenuation counts from either.
LowPass low_pass(const Options &options) {
    if (options.factor == 1) return {};
    const double nyquist = 0.5 / options.factor;  // the new one, in units of the rate
    const mensura_sos_requirement requirement = {.size = sizeof requirement,
                                                 .pass_type = ptLowPass,
                                                 .passes = options.zero_phase ? 2 : 1,
                                                 .reserved = 0,
                                                 .rate = 1,
                                                 .pass_edge = {kPassed * nyquist, 0},
                                                 .stop_edge = {nyquist, 0},
                                                 .loss_db = kRipple,
                                                 .attenuation_db = kAliases + kRipple};
    mensura_sos_request request;
    LowPass result;
    result.poles =
        checked_for(options.factor, mensura_sos_order(&requirement, pfElliptic, 0, &request, sizeof request));
    const int count = checked_for(options.factor, design_sections(request, result.sections));
    const double zero = 0;
    checked_for(options.factor, mensura_sos_group_delay(data_of(result.sections), count, 1, &zero, &result.delay, 1));
    return result;
}

// Says what is done.  A rate of 0 is not known.
void report_on(const Options &options, const LowPass &filter, double rate) {
    if (options.quiet) return;
    std::string line = fmt::format("decimate by {}", options.factor);
    if (rate > 0) line += fmt::format(", {:.6g} Hz to {:.6g} Hz", rate, rate / options.factor);
    if (!filter.sections.empty())
        line += fmt::format(
            ": lowpass, elliptic, {} poles{}, within {} dB to {}, -{} dB from {}", filter.poles,
            options.zero_phase ? ", zero phase" : "", kRipple,
            rate > 0 ? fmt::format("{:.6g} Hz", 0.5 * kPassed * rate / options.factor)
                     : fmt::format("{} of the new Nyquist frequency", kPassed),
            kAliases, rate > 0 ? fmt::format("{:.6g} Hz", 0.5 * rate / options.factor) : "the new Nyquist frequency");
    if (!filter.sections.empty() && !options.zero_phase)
        line += rate > 0 ? fmt::format("; delays slow signals by {:.4g} s", filter.delay / rate)
                         : fmt::format("; delays slow signals by {:.4g} rows of the input", filter.delay);
    report(line);
}

int new_rate(const SoundReader &sound, int factor) {
    const int rate = sound.format().samplerate;
    if (rate % factor != 0)
        reject("FACTOR {}: a sound has a whole rate, and {} Hz / {} is {:.6g} Hz", factor, rate, factor,
               static_cast<double>(rate) / factor);
    return rate / factor;
}

// The low-pass, or nothing where every row is kept.
std::unique_ptr<FrameFilter> filter_of(const LowPass &filter) {
    if (filter.sections.empty()) return std::make_unique<ChannelByChannel>([] { return [](double x) { return x; }; });
    return std::make_unique<CascadeFilter>(filter.sections);
}

// Filters the frames of a stream and keeps every FACTOR-th, beginning with the first.
class Decimator {
  public:
    Decimator(std::size_t step, const LowPass &filter) : step_(step), filter_(filter_of(filter)) {}

    // Returns those of the frames that are kept, which lie at their front then.
    std::span<double> run(std::span<double> frames, std::size_t channels) {
        gaps_.fill(frames, channels);
        filter_->run(frames, channels);
        std::size_t kept = 0;
        for (; next_ < frames.size() / channels; next_ += step_, ++kept)
            std::copy_n(frames.data() + next_ * channels, channels, frames.data() + kept * channels);
        next_ -= frames.size() / channels;
        return frames.first(kept * channels);
    }

  private:
    std::size_t step_, next_ = 0;  // next_: frames to come before the next one that is kept
    std::unique_ptr<FrameFilter> filter_;
    Gaps gaps_;
};

// Kept is every FACTOR-th sample.  Those that no row gives count as well, unless all starts anew after them.
void decimate_table(const Options &options, const LowPass &filter, Source &source) {
    TableReader table(source, options.input, Faults::Report);
    Output out(options.output);
    const std::unique_ptr<FrameFilter> low_pass = filter_of(filter);
    RowFilter rows(table, options.input, source.name(), *low_pass);
    std::size_t sample = 0;
    if (options.input.rate) report_on(options, filter, *options.input.rate);
    for_each_line(table, out, [&] {
        if (table.kind() != LineKind::Data) return table.write_line(out);
        const std::vector<double> &row = rows.run();
        const Hole &hole = rows.hole();
        sample = hole.is_long && options.input.gaps == GapPolicy::Split ? 0 : sample + hole.rows;
        if (sample++ % options.step() == 0) table.write_row(out, row);
    });
    if (!options.input.rate) report_on(options, filter, rows.rate());
    rows.finish();
    out.commit();
}

void decimate_sound(const Options &options, const LowPass &filter, Source &source) {
    SoundReader sound(source);
    sound.check_request(options.input);
    const int rate = new_rate(sound, options.factor);
    Output out(options.output);
    SoundWriter result(out, sound, rate);
    report_on(options, filter, sound.rate());
    Decimator decimator(options.step(), filter);
    std::vector<double> frames(kSoundFrames * sound.channels());
    while (const std::size_t count = sound.read(frames)) {
        result.write(decimator.run(std::span(frames).first(count), sound.channels()));
        if (!sound.next_is_received()) result.flush();
    }
    result.finish();
    out.commit();
}

void decimate_record(const Options &options, const LowPass &filter, Source &source) {
    Record record = read_record(source, options.input);
    if (record.sound) new_rate(*record.sound, options.factor);
    remark_missing(record);
    report_on(options, filter, record.rate);
    if (!filter.sections.empty()) {
        remark_if_short(record.name, record.length(), filter.sections, MENSURA_SOS_ENDS_ODD);
        for (Channel &channel : record.channels)
            for (const Piece &piece : channel.pieces)
                filter_both_ways(filter.sections, MENSURA_SOS_ENDS_ODD, samples_of(channel, piece));
    }
    Output out(options.output);
    write_record(record, out, options.step());
    out.commit();
}

void run(const Options &options) {
    if (options.factor < 1 || options.factor > kLargest)
        reject("FACTOR {}: must lie between 1 and {}; a larger one is the product of two", options.factor, kLargest);
    Source source(options.input.file);
    const LowPass filter = low_pass(options);
    if (options.zero_phase) return decimate_record(options, filter, source);
    if (is_sound(source)) return decimate_sound(options, filter, source);
    decimate_table(options, filter, source);
}

}  // namespace

void add_decimate(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app = program.add_command(
        "decimate",
        fmt::format("lower the sampling rate of a table or a sound by a whole factor: low-pass, then keep every "
                    "FACTOR-th row, with its time\nThe pass band ends at {} of the new Nyquist frequency, aliases stay "
                    "below -{:.0f} dB.",
                    kPassed, kAliases),
        kExamples);
    add_count(app, "FACTOR", options->factor, fmt::format("old rate over new rate, 1 to {}", kLargest)).required();
    add_rate(app, options->input.rate,
             "sampling rate in Hz, for what is reported; default from the column of times or the sound");
    app.add_flag("--zero-phase", options->zero_phase,
                 "low-pass forwards and backwards: no delay; reads all input first");
    app.add_flag("--quiet", options->quiet, "do not say on standard error what is done");
    add_input(app, options->input);
    add_output(app, options->output);
    app.callback([options] { run(*options); });
}

}  // namespace cli
