// Amplitudes over frequency, by transforms or at single frequencies, and the data windows before them.
#pragma once

#include <mensura/spectral.h>

#include <optional>
#include <string>
#include <vector>

#include "cli/app/command_line.h"
#include "cli/data/record.h"
#include "cli/files/output.h"

namespace cli {

// A data window: its code, the fraction left flat in its middle, its shape.
struct Window {
    int kind = wkRectangle;
    std::optional<double> alpha = {}, beta = {};
};

const char *window_name(int kind);
int window_kind(const std::string &option, const std::string &name);  // refuses names that there are not
void add_window_shape(const Command &app, Window &window);            // --alpha and --beta
// Says on stderr which settings are out of range, and which the window does not have.
void remark_on(const Window &window);
void apply(const Window &window, std::vector<double> &samples, bool unity_gain);

enum class Scale { Amplitude, Power, Decibel };

struct SpectrumOptions {
    Window window = {};
    Scale scale = Scale::Amplitude;
    bool no_mean = false;
};
void add_spectrum_options(const Command &app, SpectrumOptions &options);

// The columns of numbers or the channels of an input, which has a rate.
Record read_signals(const std::string &file, const std::vector<std::string> &columns, std::optional<double> rate);

// How a record is transformed: in equal parts, each padded with zeros to the points of its transform.
struct Transform {
    std::size_t parts, samples, points;

    std::size_t bins() const { return points / 2 + 1; }
    // Whether a bin has a mirror image that holds half of a line: all but 0 and Nyquist.
    bool mirrored(std::size_t bin) const { return bin > 0 && 2 * bin < points; }
    double frequency(std::size_t bin, double rate) const {
        return static_cast<double>(bin) * rate / static_cast<double>(points);
    }
};
Transform transform_for(std::size_t samples);

// The amplitude in every bin of transform_for(samples.size()): a sine of amplitude A in the middle of one gives A
// whatever the window.
std::vector<double> amplitude_spectrum(std::vector<double> samples, const Window &window, bool no_mean);

// The same at single frequencies from 0 to rate / 2.
std::vector<double> amplitudes_at(const std::vector<double> &frequencies, double rate, std::vector<double> samples,
                                  const Window &window, bool no_mean);

// An amplitude A as A, as its power A^2 / 2 (A^2 at 0 and Nyquist, which have no mirror image), or as 20 log10 A.
double scaled(double amplitude, bool mirrored, Scale scale);

// A table of spectra: frequency_Hz and a column of values for each name.
struct Spectra {
    std::vector<double> frequencies = {};
    std::vector<std::string> names = {};
    std::vector<std::vector<double>> values = {};
};
void write_csv(const Spectra &spectra, Output &out);

}  // namespace cli
