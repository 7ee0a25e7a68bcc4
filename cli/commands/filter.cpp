// mensura filter: runs a filter over every column of a table or channel of a sound.
#include <mensura/iir.h>
#include <mensura/sos.h>

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "cli/app/commands.h"
#include "cli/app/design.h"
#include "cli/app/diagnostics.h"
#include "cli/app/names.h"
#include "cli/app/options.h"
#include "cli/app/quantity.h"
#include "cli/app/request.h"
#include "cli/data/cascade.h"
#include "cli/data/record.h"
#include "cli/data/rewrite.h"
#include "cli/data/sections_file.h"
#include "cli/data/stream.h"
#include "cli/input/source.h"
#include "cli/sound/sound.h"
#include "cli/sound/sound_record.h"
#include "cli/spectra/cutoff.h"
#include "iir/pass_types.h"

namespace cli {

namespace {

using mensura::iir::kPassTypes;
using mensura::iir::PassType;

constexpr const char *kExamples =
    "  mensura filter lowpass --cutoff 40Hz ecg.csv > clean.csv\n"
    "  mensura filter lowpass --cutoff 6Hz --poles 4 --zero-phase gait.csv > smooth.csv\n"
    "  mensura filter bandpass --from 0.5Hz --to 40Hz ecg.csv > clean.csv\n"
    "  mensura filter lowpass --pass 40Hz:1dB --stop 60Hz:50dB ecg.csv > clean.csv\n"
    "  logger | mensura filter highpass --cutoff 0.5Hz --rate 1kHz | viewer\n"
    "  mensura filter notch --cutoff 50Hz --bandwidth 4Hz --zero-phase --plot=hum.svg -o clean.wav hum.wav\n"
    "  mensura filter --sos sections.csv ecg.csv > clean.csv\n";

constexpr std::size_t kFewest = 4;             // samples for an automatic cut-off
constexpr std::size_t kLongTransform = 40000;  // samples: from here on the user has to wait noticeably

constexpr std::initializer_list<const char *> kDesignOptions = {
    "--cutoff", "--bandwidth", "--from",   "--to",       "--at",    "--pass", "--stop",
    "--family", "--poles",     "--ripple", "--stopband", "--gamma", "--gain"};

struct Ends {
    const char *word;
    int code;
};
constexpr Ends kEnds[] = {{"none", MENSURA_SOS_ENDS_NONE},
                          {"odd", MENSURA_SOS_ENDS_ODD},
                          {"even", MENSURA_SOS_ENDS_EVEN},
                          {"constant", MENSURA_SOS_ENDS_CONSTANT}};

struct Options {
    std::string type;
    FilterRequest request;
    Files files;
    std::string sos;  // file of sections
    std::optional<int> ends;
    std::optional<double> ratio;  // of the automatic cut-off
    bool quiet = false;
};

// What runs: sections, or a record of the older design functions as IIRFilter runs it.
struct Filter {
    Sections sections;
    std::optional<TIIRFilter> leading;
    std::string summary;
};

TIIRFilter leading_filter(const LeadingSections &design) {
    TIIRFilter filter = {};
    filter.Spec = design.spec;
    filter.Coeffs = design.cascade;
    return filter;
}

void refuse_unsound(const std::string &file, const Sections &sections, bool force) {
    for (const std::string &warning : warnings_about(soundness(sections))) {
        if (!force) fail("{}: {}; --force uses it", file, warning);
        remark("{}: {}", file, warning);
    }
}

Filter from_file(const Options &options) {
    Filter filter{.sections = read_sections(options.sos), .leading = {}, .summary = {}};
    const std::size_t count = filter.sections.size();
    filter.summary = fmt::format("{} section{} of {}{}", count, count == 1 ? "" : "s",
                                 options.sos == "-" ? "standard input" : options.sos,
                                 options.request.zero_phase ? ", zero phase" : "");
    refuse_unsound(options.sos, filter.sections, options.request.force);
    return filter;
}

Filter designed(const Options &options, double rate) {
    const Design design = design_for(options.request, rate);
    refuse_unusable(design, options.request.force);
    Filter filter{.sections = design.sections, .leading = {}, .summary = design.summary};
    if (design.leading) filter.leading = leading_filter(*design.leading);
    return filter;
}

// `rate` does not matter for sections from a file.
Filter filter_for(const Options &options, double rate) {
    Filter filter = options.sos.empty() ? designed(options, rate) : from_file(options);
    if (!options.quiet) report(filter.summary);
    if (filter.leading || CascadeFilter(filter.sections).starts_settled()) return filter;
    if (options.request.zero_phase) fail("zero phase is not for a filter with a pole at z = 1: it has no steady state");
    remark("a pole at z = 1, so there is no steady state: starts from rest");
    return filter;
}

// Every channel runs a copy of the same record.
MakeFilter copies_of(const TIIRFilter &design) {
    return [design]() -> ChannelFilter {
        const auto filter = std::make_shared<TIIRFilter>(design);
        return [filter](double x) { return IIRFilter(filter.get(), x); };
    };
}

std::unique_ptr<FrameFilter> one_way(const Filter &filter) {
    if (filter.leading) return std::make_unique<ChannelByChannel>(copies_of(*filter.leading));
    return std::make_unique<CascadeFilter>(filter.sections);
}

void apply_zero_phase(TIIRFilter filter, std::span<double> samples) {
    IIRFilterZeroPhase(&filter, samples.data(), nullptr, static_cast<int>(samples.size()));
}

void report_cutoff(const std::string &channel, double cutoff, double nyquist, bool quiet) {
    const auto how = fmt::format("{}: lowpass, leading sections, zero phase, cut-off", channel);
    if (cutoff <= 0)
        remark("{}: the spectrum has no peak that gives a cut-off: the result is meaningless", channel);
    else if (cutoff > nyquist)
        remark("{} found: {:.6g} Hz, clamped to half the sampling rate, {:.6g} Hz", how, cutoff, nyquist);
    else if (!quiet)
        report(fmt::format("{} found: {:.6g} Hz", how, cutoff));
}

double cutoff_of(const Channel &channel, std::span<const double> samples, double rate, double ratio) {
    if (const std::optional<double> cutoff = quick_cutoff(samples, rate, ratio)) return *cutoff;
    if (samples.size() > kLongTransform)
        remark("{}: finding the cut-off from {} samples, in a time that grows as their square", channel.name,
               samples.size());
    return automatic_cutoff(samples, rate, ratio);
}

// Gives the bits of dataZeroPhaseFilter, which is given the sampling interval: hence the rate as 1 / (1 / rate).
void filter_automatically(const Channel &channel, std::span<double> samples, double given_rate, double ratio,
                          bool quiet) {
    if (samples.size() < kFewest) reject("--auto needs {} samples at least; there are {}", kFewest, samples.size());
    const double interval = 1 / given_rate, rate = 1 / interval, nyquist = 0.5 * rate;
    const double cutoff = cutoff_of(channel, samples, rate, ratio);
    report_cutoff(channel.name, cutoff, nyquist, quiet);
    TIIRFilter filter;
    initTIIRFilter(&filter, ptLowPass, std::min(cutoff, nyquist), rate);
    apply_zero_phase(filter, samples);
}

void run_automatically(const Options &options, Record &record) {
    const double rate = rate_of(record), ratio = *options.ratio;
    const Change change = [&](const Channel &channel, std::span<double> piece) {
        filter_automatically(channel, piece, rate, ratio, options.quiet);
    };
    rewrite_record(record, options.files, change, "zero-phase lowpass, cut-off from the spectrum",
                   record.length() < kFewest ? 0 : kFewest);
}

void run_on_record(const Options &options, Record &record) {
    const Filter filter = filter_for(options, options.sos.empty() ? rate_of(record) : record.rate);
    const bool zero_phase = options.request.zero_phase;
    const int ends = options.ends.value_or(MENSURA_SOS_ENDS_ODD);
    if (zero_phase && !filter.leading) remark_if_short(record.name, record.length(), filter.sections, ends);
    const Change change = [&](const Channel &, std::span<double> piece) {
        if (!zero_phase) return one_way(filter)->run(piece, 1);
        if (filter.leading) return apply_zero_phase(*filter.leading, piece);
        filter_both_ways(filter.sections, ends, piece);
    };
    rewrite_record(record, options.files, change, filter.summary);
}

void run_as_stream(const Options &options, Source &source) {
    if (is_sound(source)) {
        SoundReader sound(source);
        sound.check_request(options.files.input);
        const Filter filter = filter_for(options, sound.rate());
        stream_sound(sound, options.files, *one_way(filter), filter.summary);
    } else {
        const double rate = options.request.rate.value_or(0);
        const Filter filter = filter_for(options, rate);
        stream_table(source, options.files, *one_way(filter), filter.summary);
    }
}

void run_both_ways_on_sound(const Options &options, Source &source) {
    WholeSound record(source, options.files.input);
    const Filter filter = filter_for(options, record.sound().rate());
    const int ends = options.ends.value_or(MENSURA_SOS_ENDS_ODD);
    remark_if_short(source.name(), record.length(), filter.sections, ends);
    const WholeSound::Change change = [&](std::span<double> frames, std::size_t channels) {
        filter_both_ways(filter.sections, ends, frames, channels);
    };
    record.rewrite(options.files, change, filter.summary);
}

// The argument TYPE is the input where the sections come from a file.
void take_type(Options &options) {
    if (options.sos.empty()) {
        if (options.type.empty()) reject_option("TYPE", joined(kPassTypes, &PassType::word, " or ") + " is required");
        options.request.pass_type = row_named("TYPE", options.type, kPassTypes, &PassType::word).code;
        return;
    }
    if (!options.files.input.file.empty()) reject("--sos FILE takes the place of TYPE: leave out \"{}\"", options.type);
    options.files.input.file = options.type;
}

void check(const Options &options) {
    const FilterRequest &request = options.request;
    if (options.ratio && request.pass_type != ptLowPass) reject("--auto is for lowpass");
    if (options.ratio && !(*options.ratio > 0 && *options.ratio < 1))
        reject("--auto {}: the ratio must lie above 0 and below 1", *options.ratio);
    if (options.sos == "-" && is_standard_input(options.files.input.file))
        reject("--sos -: the data come from standard input already; name a file for one of the two");
    if (options.ends && !request.zero_phase) reject("--ends is for --zero-phase");
    if (options.ratio || !options.sos.empty()) return;
    check_request(request);
    if (request.rate) check_frequencies(request, *request.rate);
}

void run(Options &options) {
    take_type(options);
    check(options);
    options.files.input.rate = options.request.rate;
    Source source(options.files.input.file);
    const bool sound = is_sound(source), streams = sound || options.request.rate || !options.sos.empty();
    const bool both_ways = options.request.zero_phase && !options.request.leading_sections;
    if (streams && !options.request.zero_phase && !options.ratio) return run_as_stream(options, source);
    if (sound && both_ways && !options.ratio) return run_both_ways_on_sound(options, source);
    Record record = read_record(source, options.files.input);
    if (options.ratio)
        run_automatically(options, record);
    else
        run_on_record(options, record);
}

}  // namespace

void add_filter(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app =
        program.add_command("filter", "filter the columns of a table or the channels of a sound", kExamples);
    app.add_option("TYPE", options->type, joined(kPassTypes, &PassType::word, " or ") + "; none with --sos")
        .words(words_of(kPassTypes, &PassType::word));
    add_filter_options(app, options->request);
    add_choice(
        app, "--ends", kEnds, &Ends::word, [options](const Ends &ends) { options->ends = ends.code; },
        "with --zero-phase, how the record goes on at its ends: {}; default odd, by as many samples as SciPy's "
        "sosfiltfilt takes")
        .type_name("HOW")
        .excludes({"--leading-sections"});
    app.add_option("--sos", options->sos,
                   "sections from a file instead of a design: lines of b0,b1,b2,a0,a1,a2 with a0 = 1")
        .type_name("FILE")
        .excludes(kDesignOptions)
        .excludes({"--leading-sections"});
    add_quantity(app, "--auto", options->ratio, kPlain,
                 "zero-phase lowpass of leading sections at a cut-off from the spectrum: what exceeds RATIO of its "
                 "largest bin is signal")
        .type_name("RATIO")
        .excludes(kDesignOptions)
        .excludes({"--leading-sections", "--zero-phase", "--ends", "--force", "--sos"});
    app.add_flag("--quiet", options->quiet, "do not say on standard error what runs");
    add_files(app, options->files);
    app.callback([options] { run(*options); });
}

}  // namespace cli
