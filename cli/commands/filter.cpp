// mensura filter: runs a filter over every column of a table or channel of a WAV.
#include <mensura/iir.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/app/commands.h"
#include "cli/app/design.h"
#include "cli/app/diagnostics.h"
#include "cli/app/options.h"
#include "cli/app/quantity.h"
#include "cli/app/request.h"
#include "cli/data/cutoff.h"
#include "cli/data/record.h"
#include "cli/data/rewrite.h"
#include "cli/data/source.h"
#include "cli/data/stream.h"
#include "cli/data/wav.h"

namespace cli {

namespace {

constexpr const char *kExamples =
    "  mensura filter lowpass --cutoff 40Hz --rate 360Hz ecg.csv > clean.csv\n"
    "  logger | mensura filter highpass --cutoff 0.5Hz --rate 1kHz | viewer\n"
    "  mensura filter notch --cutoff 50Hz --bandwidth 4Hz --zero-phase --plot=hum.svg -o clean.wav hum.wav\n";

constexpr std::size_t kLongTransform = 40000;  // samples: from here on the user has to wait noticeably

struct Options {
    FilterRequest request;
    Files files;
    std::optional<double> ratio;  // of the automatic cut-off
};

std::string title_of(const FilterRequest &request, const char *how) {
    return fmt::format("{} {}, {:.6g} Hz{}", family_name(request.family.value_or(kDefaultFamily)),
                       pass_type_name(request.pass_type), request.cutoff.value_or(0), how);
}

TIIRFilter designed(const FilterRequest &request, double rate) {
    FilterRequest leading = request;
    leading.leading_sections = true;
    const Design design = design_for(leading, rate);
    remark_on(design);
    TIIRFilter filter = {};
    filter.Spec = design.leading->spec;
    filter.Coeffs = design.leading->cascade;
    return filter;
}

// Every channel runs a copy of the same design.
MakeFilter copies_of(const TIIRFilter &design) {
    return [&design]() -> ChannelFilter {
        const auto filter = std::make_shared<TIIRFilter>(design);
        return [filter](double x) { return IIRFilter(filter.get(), x); };
    };
}

void apply_zero_phase(TIIRFilter filter, std::vector<double> &samples) {
    IIRFilterZeroPhase(&filter, samples.data(), nullptr, static_cast<int>(samples.size()));
}

void remark_on_cutoff(const std::string &channel, double cutoff, double nyquist) {
    if (cutoff <= 0)
        remark("{}: the spectrum has no peak that gives a cut-off: the result is meaningless", channel);
    else if (cutoff > nyquist)
        remark("{}: cut-off found: {:.6g} Hz, clamped to half the sampling rate, {:.6g} Hz", channel, cutoff, nyquist);
    else
        remark("{}: cut-off found: {:.6g} Hz", channel, cutoff);
}

// Gives the bits of dataZeroPhaseFilter, which is given the sampling interval: hence the rate as 1 / (1 / rate).
void filter_automatically(Channel &channel, double given_rate, double ratio) {
    std::vector<double> &samples = channel.samples;
    if (samples.size() < 4) reject("--auto needs 4 samples at least; there are {}", samples.size());
    if (samples.size() > kLongTransform)
        remark("{}: finding the cut-off from {} samples, in a time that grows as their square", channel.name,
               samples.size());
    const double interval = 1 / given_rate, rate = 1 / interval, nyquist = 0.5 * rate;
    const double cutoff = automatic_cutoff(samples, rate, ratio);
    remark_on_cutoff(channel.name, cutoff, nyquist);
    TIIRFilter filter;
    initTIIRFilter(&filter, ptLowPass, std::min(cutoff, nyquist), rate);
    apply_zero_phase(filter, samples);
}

void run_automatically(const Options &options, Record &record) {
    const double rate = rate_of(record), ratio = *options.ratio;
    rewrite_record(
        record, options.files, [rate, ratio](Channel &channel) { filter_automatically(channel, rate, ratio); },
        "zero-phase lowpass, cut-off from the spectrum");
}

void run_on_record(const Options &options, Record &record) {
    const TIIRFilter design = designed(options.request, rate_of(record));
    const Change change = [&design, &options](Channel &channel) {
        if (options.request.zero_phase) return apply_zero_phase(design, channel.samples);
        TIIRFilter filter = design;
        for (double &sample : channel.samples) sample = IIRFilter(&filter, sample);
    };
    rewrite_record(record, options.files, change,
                   title_of(options.request, options.request.zero_phase ? ", zero phase" : ""));
}

void run_as_stream(const Options &options, Source &source) {
    const std::string title = title_of(options.request, "");
    if (is_wav(source)) {
        WavReader wav(source);
        wav.check_request(options.request.rate, options.files.columns);
        const TIIRFilter design = designed(options.request, wav.rate());
        stream_wav(wav, options.files, channel_by_channel(copies_of(design)), title);
    } else {
        const TIIRFilter design = designed(options.request, *options.request.rate);
        stream_table(source, options.files, channel_by_channel(copies_of(design)), title, *options.request.rate);
    }
}

void check(const Options &options) {
    if (options.ratio && options.request.pass_type != ptLowPass) reject("--auto is for lowpass");
    if (options.ratio && !(*options.ratio > 0 && *options.ratio < 1))
        reject("--auto {}: the ratio must lie above 0 and below 1", *options.ratio);
    if (!options.ratio && !options.request.cutoff)
        reject("--cutoff is required: the frequency in Hz, such as --cutoff 40Hz");
    if (!options.ratio) check_frequencies(options.request, options.request.rate.value_or(HUGE_VAL));
}

void run(const Options &options) {
    check(options);
    Source source(options.files.input);
    const bool knows_rate = is_wav(source) || options.request.rate.has_value();
    if (knows_rate && !options.request.zero_phase && !options.ratio) return run_as_stream(options, source);
    Record record = read_record(source, options.files.columns, options.request.rate);
    if (options.ratio)
        run_automatically(options, record);
    else
        run_on_record(options, record);
}

}  // namespace

void add_filter(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app =
        program.add_command("filter", "filter the columns of a table or the channels of a WAV", kExamples);
    add_pass_type(app, options->request).required();
    add_filter_options(app, options->request);
    add_quantity(app, "--auto", options->ratio, kPlain,
                 "zero-phase lowpass at a cut-off from the spectrum: what exceeds RATIO of its largest bin is signal")
        .type_name("RATIO")
        .excludes({"--cutoff", "--zero-phase", "--family", "--poles", "--ripple", "--stopband", "--gamma", "--gain",
                   "--bandwidth"});
    add_files(app, options->files);
    app.callback([options] { run(*options); });
}

}  // namespace cli
