// mensura filter: runs a filter over every column of a table or channel of a WAV.
#include <fcntl.h>
#include <mensura/iir.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "cli/app/analysis.h"
#include "cli/app/commands.h"
#include "cli/app/diagnostics.h"
#include "cli/app/quantity.h"
#include "cli/app/request.h"
#include "cli/data/rewrite.h"

namespace cli {

namespace {

constexpr const char *kExamples =
    "  mensura filter lowpass --cutoff 40Hz --rate 360Hz ecg.csv > clean.csv\n"
    "  logger | mensura filter highpass --cutoff 0.5Hz --rate 1kHz | viewer\n"
    "  mensura filter notch --cutoff 50Hz --bandwidth 4Hz --zero-phase --plot=hum.svg -o clean.wav hum.wav\n";

struct Options {
    FilterRequest request;
    Files files;
    bool zero_phase = false;
    std::optional<double> ratio;  // of the automatic cut-off
};

std::string title_of(const FilterRequest &request, const char *how) {
    return fmt::format("{} {}, {:.6g} Hz{}", family_name(request.family), pass_type_name(request.pass_type),
                       request.cutoff.value_or(0), how);
}

TIIRFilter designed(const FilterRequest &request, double rate) {
    TIIRFilter filter = {};
    filter.Spec = design_spec(request, rate);
    filter.Coeffs = CalcIIRFilterCoeff(filter.Spec);
    report_clamps(filter.Spec.Proto);
    for (const std::string &warning : warnings_about(analyse(filter.Coeffs, filter.Spec, rate))) remark("{}", warning);
    return filter;
}

// Every channel runs a copy of the same design.
MakeStep steps_of(const TIIRFilter &design) {
    return [&design]() -> Step {
        const auto filter = std::make_shared<TIIRFilter>(design);
        return [filter](double x) { return IIRFilter(filter.get(), x); };
    };
}

// What a call prints on standard output, which belongs to the data.
template <class Call>
std::string captured(Call call) {
    std::fflush(stdout);
    const int standard_output = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3), paper = nameless_file();
    dup2(paper, STDOUT_FILENO);
    call();
    std::fflush(stdout);
    dup2(standard_output, STDOUT_FILENO);
    close(standard_output);
    std::array<char, 256> text;
    const ssize_t got = pread(paper, text.data(), text.size(), 0);
    close(paper);
    return {text.data(), static_cast<std::size_t>(got > 0 ? got : 0)};
}

// dataZeroPhaseFilter prints "rate, last bin that counts, samples, largest bin"; it filters at 15 bins of n - 1 samples
// for each bin.
void filter_automatically(Channel &channel, double rate, double ratio) {
    std::vector<double> &samples = channel.samples;
    const int n = static_cast<int>(samples.size());
    if (n < 4) reject("--auto needs 4 samples at least; there are {}", n);
    if (n > 40000) remark("{}: finding the cut-off from {} samples, about {:.0f} s", channel.name, n, 0.66e-9 * n * n);
    const std::string line =
        captured([&samples, n, rate, ratio] { dataZeroPhaseFilter(samples.data(), n, 1 / rate, ratio, 0); });
    const std::size_t comma = line.find(',');
    if (comma == std::string::npos) fail("out of memory");
    const long last = std::strtol(line.c_str() + comma + 1, nullptr, 10);
    if (last < 1) return remark("{}: the spectrum has no peak to measure by: the result is meaningless", channel.name);
    remark("{}: cut-off found: {:.6g} Hz", channel.name,
           std::min(15.0 * static_cast<double>(last) * rate / (n - 1), 0.5 * rate));
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
        std::vector<double> &x = channel.samples;
        TIIRFilter filter = design;
        if (options.zero_phase)
            IIRFilterZeroPhase(&filter, x.data(), nullptr, static_cast<int>(x.size()));
        else
            for (double &sample : x) sample = IIRFilter(&filter, sample);
    };
    rewrite_record(record, options.files, change, title_of(options.request, options.zero_phase ? ", zero phase" : ""));
}

void run_as_stream(const Options &options, Source &source) {
    const std::string title = title_of(options.request, "");
    if (is_wav(source)) {
        WavReader wav(source);
        wav.check_request(options.request.rate, options.files.columns);
        const TIIRFilter design = designed(options.request, wav.rate());
        stream_wav(wav, options.files, steps_of(design), title);
    } else {
        const TIIRFilter design = designed(options.request, *options.request.rate);
        stream_table(source, options.files, steps_of(design), title, *options.request.rate);
    }
}

void run(const Options &options) {
    if (options.ratio && options.request.pass_type != ptLowPass) reject("--auto is for lowpass");
    if (options.ratio && !(*options.ratio > 0 && *options.ratio < 1))
        reject("--auto {}: a ratio above 0 and below 1 is wanted", *options.ratio);
    if (!options.ratio) check_frequencies(options.request, options.request.rate.value_or(HUGE_VAL));
    Source source(options.files.input);
    const bool knows_rate = is_wav(source) || options.request.rate.has_value();
    if (knows_rate && !options.zero_phase && !options.ratio) return run_as_stream(options, source);
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
    add_filter_request(app, options->request);
    app.add_flag("--zero-phase", options->zero_phase,
                 "filter forwards and backwards: no delay, twice the attenuation and the gain in dB");
    add_quantity(app, "--auto", options->ratio, kPlain,
                 "zero-phase lowpass at a cut-off from the spectrum: what exceeds RATIO of its largest bin is signal")
        .type_name("RATIO")
        .excludes({"--cutoff", "--zero-phase", "--family", "--poles", "--ripple", "--stopband", "--gamma", "--gain",
                   "--bandwidth"});
    add_files(app, options->files);
    app.callback([options] { run(*options); });
}

}  // namespace cli
