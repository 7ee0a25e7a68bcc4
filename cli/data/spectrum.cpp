#include "cli/data/spectrum.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <numeric>

#include "cli/app/diagnostics.h"
#include "cli/app/names.h"
#include "cli/app/quantity.h"
#include "cli/data/table.h"
#include "sos/measure.h"

namespace cli {

namespace {

constexpr std::size_t kLongestFFT = 1048576;
constexpr std::size_t kLongestSum = 32768;  // of RealSigDFT, whose time grows as its square: a second or so

struct NamedWindow {
    const char *name;
    int kind;
    bool has_alpha = true;
    std::optional<double> beta = {};  // the default of those that have one
};

// The first name of a kind is the one shown.
constexpr NamedWindow kWindows[] = {{"rectangle", wkRectangle, false},
                                    {"kaiser", wkKaiser, false, 8.0},
                                    {"sinc", wkSinc, true, 1.0},
                                    {"hanning", wkHanning},
                                    {"hann", wkHanning},
                                    {"hamming", wkHamming},
                                    {"blackman", wkBlackman},
                                    {"flattop", wkFlatTop, false},
                                    {"blackman-harris", wkBlackmanHarris},
                                    {"blackman-nuttall", wkBlackmanNuttall},
                                    {"nuttall", wkNuttall},
                                    {"kaiser-bessel", wkKaiserBessel},
                                    {"triangle", wkTriangle},
                                    {"gauss", wkGauss},
                                    {"sine", wkSine, true, 1.0}};

const NamedWindow &entry_of(int kind) {
    return *std::ranges::find_if(kWindows, [kind](const NamedWindow &window) { return window.kind == kind; });
}

void remark_on_setting(const char *option, std::optional<double> value, double highest, bool used, int kind) {
    if (!value) return;
    if (!used)
        remark("{} is not used by the window {}", option, window_name(kind));
    else if (const double taken = std::clamp(*value, 0.0, highest); taken != *value)
        remark("{} {} is outside the range of 0 to {}: {} is taken", option, *value, highest, taken);
}

// The library leaves the data as they were when it finds no memory, and tells nothing: so the memory is taken, which
// throws if there is none, and given back.
void expect_memory(std::size_t bytes) { ::operator delete(::operator new(bytes)); }

void remove_mean(std::vector<double> &samples) {
    const long double sum = std::accumulate(samples.begin(), samples.end(), 0.0L);
    const double mean = static_cast<double>(sum / static_cast<long double>(samples.size()));
    for (double &sample : samples) sample -= mean;
}

// The moduli of bins 0 .. points / 2 of sum x[t] exp(-2 pi i k t / points) / points.
std::vector<double> moduli(std::vector<double> samples, std::size_t points) {
    const int n = static_cast<int>(points);
    samples.resize(points);
    std::vector<double> re(points), im(points);
    expect_memory(32 * points);  // FFT takes 27 bytes a point, RealSigDFT 24
    if (IsValidFFTSize(n) != 0) {
        re.swap(samples);
        FFT(re.data(), im.data(), n, 0);
    } else {
        RealSigDFT(samples.data(), re.data(), im.data(), n);
    }
    re.resize(points / 2 + 1);
    for (std::size_t k = 0; k < re.size(); ++k) re[k] = std::hypot(re[k], im[k]);
    return re;
}

// |sum x[t] exp(-i pi f t)|.  Goertzel loses digits near 0 and Nyquist, and gives 1e-6 where it finds nothing.
double modulus_at(const std::vector<double> &samples, double f) {
    const int n = static_cast<int>(samples.size());
    const double goertzel = f > 0.1 && f < 0.9 ? Goertzel(samples.data(), n, f) : 0;
    return goertzel > 1.001e-6 ? goertzel : SingleFreqDFT(samples.data(), n, f);
}

}  // namespace

const char *window_name(int kind) { return entry_of(kind).name; }

int window_kind(const std::string &option, const std::string &name) {
    return entry_called(option, name, kWindows).kind;
}

void add_window_shape(const Command &app, Window &window) {
    add_quantity(app, "--alpha", window.alpha, kPlain,
                 "fraction of the samples left flat in the window's middle, 0 (default) to 1");
    add_quantity(app, "--beta", window.beta, kPlain,
                 "shape without a unit, 0 to 10: of kaiser, default 8; exponent of sinc and sine, default 1");
}

void remark_on(const Window &window) {
    const NamedWindow &entry = entry_of(window.kind);
    remark_on_setting("--alpha", window.alpha, 1, entry.has_alpha, window.kind);
    remark_on_setting("--beta", window.beta, 10, entry.beta.has_value(), window.kind);
}

void apply(const Window &window, std::vector<double> &samples, bool unity_gain) {
    if (samples.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        reject("{} samples are too many: {} at most", samples.size(), std::numeric_limits<int>::max());
    expect_memory(4 * samples.size());
    const double beta = window.beta.value_or(entry_of(window.kind).beta.value_or(0));
    WindowData(samples.data(), static_cast<int>(samples.size()), window.kind, window.alpha.value_or(0), beta,
               unity_gain ? 1 : 0);
}

void add_spectrum_options(const Command &app, SpectrumOptions &options) {
    app.add_option(
           "--window",
           [&window = options.window](const std::string &name) { window.kind = window_kind("--window", name); },
           "data window: rectangle (default, none), hanning, hamming, blackman, blackman-harris, blackman-nuttall, "
           "nuttall, flattop (true amplitudes between bins), kaiser, kaiser-bessel, triangle, gauss, sinc or sine")
        .type_name("NAME");
    add_window_shape(app, options.window);
    const auto add_scale = [&app, &options](const char *name, Scale scale, const char *help) {
        return app.add_flag(
            name, [&options, scale] { options.scale = scale; }, help);
    };
    add_scale("--amplitude", Scale::Amplitude, "amplitude A of sines, in the unit of the data (default)");
    add_scale("--power", Scale::Power, "mean square A^2/2, in the square of the data's unit; at 0 Hz the square")
        .excludes({"--amplitude"});
    add_scale("--db", Scale::Decibel, "20 log10 A, in dB").excludes({"--amplitude", "--power"});
    app.add_flag("--no-mean", options.no_mean, "take the mean away first");
}

Record read_signals(const std::string &file, const std::vector<std::string> &columns, std::optional<double> rate) {
    Source source(file);
    Record record = read_record(source, columns, rate);
    std::erase_if(record.channels, [](const Channel &channel) { return !channel.has_numbers(); });
    if (record.channels.empty()) reject("{}: holds no numbers", record.name);
    rate_of(record);
    remark_missing(record);
    return record;
}

Transform transform_for(std::size_t samples) {
    const std::size_t parts = (samples + kLongestFFT - 1) / kLongestFFT, length = samples / parts;
    if (length <= kLongestSum) return {parts, length, length};
    return {parts, length, static_cast<std::size_t>(RequiredFFTSize(static_cast<int>(length)))};
}

std::vector<double> amplitude_spectrum(std::vector<double> samples, const Window &window, bool no_mean) {
    if (no_mean) remove_mean(samples);
    const Transform transform = transform_for(samples.size());
    const auto length = static_cast<std::ptrdiff_t>(transform.samples);
    std::vector<double> amplitudes(transform.bins());
    for (auto part = samples.begin(); samples.end() - part >= length; part += length) {
        std::vector<double> block(part, part + length);
        apply(window, block, true);
        const std::vector<double> bins = moduli(std::move(block), transform.points);
        for (std::size_t k = 0; k < bins.size(); ++k) amplitudes[k] = std::hypot(amplitudes[k], bins[k]);
    }
    const double padding = static_cast<double>(transform.points) / static_cast<double>(transform.samples);
    const double scale = padding / std::sqrt(static_cast<double>(transform.parts));
    for (std::size_t k = 0; k < amplitudes.size(); ++k) amplitudes[k] *= transform.mirrored(k) ? 2 * scale : scale;
    return amplitudes;
}

std::vector<double> amplitudes_at(const std::vector<double> &frequencies, double rate, std::vector<double> samples,
                                  const Window &window, bool no_mean) {
    if (no_mean) remove_mean(samples);
    apply(window, samples, true);
    std::vector<double> amplitudes;
    for (const double frequency : frequencies) {
        const bool mirrored = frequency > 0 && frequency < 0.5 * rate;
        amplitudes.push_back((mirrored ? 2 : 1) * modulus_at(samples, 2 * frequency / rate) /
                             static_cast<double>(samples.size()));
    }
    return amplitudes;
}

double scaled(double amplitude, bool mirrored, Scale scale) {
    if (scale == Scale::Decibel) return mensura::sos::decibels(amplitude);
    if (scale == Scale::Power) return amplitude * amplitude * (mirrored ? 0.5 : 1);
    return amplitude;
}

void write_csv(const Spectra &spectra, Output &out) {
    out.write("frequency_Hz");
    for (const std::string &name : spectra.names) {
        out.write(",");
        out.write(cell_text(name, ','));
    }
    out.write("\n");
    for (std::size_t i = 0; i < spectra.frequencies.size(); ++i) {
        out.number(spectra.frequencies[i]);
        for (const std::vector<double> &column : spectra.values) {
            out.write(",");
            out.number(column[i]);
        }
        out.write("\n");
        if (out.full()) out.flush();
    }
}

}  // namespace cli
