// The options of spectra and data windows.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/app/command_line.h"
#include "cli/spectra/bands.h"
#include "cli/spectra/spectrum.h"
#include "cli/spectra/window.h"

namespace cli {

void add_window_shape(const Command &app, Window &window);  // --alpha and --beta
void add_window_option(const Command &app, SpectrumOptions &options, const std::string &default_window);
// The window, the scale and --no-mean.
void add_spectrum_options(const Command &app, SpectrumOptions &options, const std::string &default_window);
void add_density(const Command &app, SpectrumOptions &options);  // after them

// --segment and --overlap.
void add_segments(const Command &app, std::optional<int> &segment, std::optional<double> &overlap,
                  const std::string &default_segment);

struct AveragingOptions {
    bool average = false, median = false;
    std::optional<int> segment = {};
    std::optional<double> overlap = {};
};
void add_averaging(const Command &app, AveragingOptions &options);
// Refuses the settings without --average, to which they belong.
std::optional<Averaging> averaging_of(const AveragingOptions &options);

// "10Hz-45Hz,50-60Hz"; a unit that only the upper frequency has is that of both.
std::vector<FrequencyBand> parse_bands(const std::string &option, const std::string &list);

}  // namespace cli
