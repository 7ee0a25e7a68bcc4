// What mensura spectrum finds, and the forms in which it gives it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/data/record.h"
#include "cli/files/output.h"
#include "cli/plot/figure.h"
#include "cli/plot/options.h"
#include "cli/spectra/bands.h"
#include "cli/spectra/peaks.h"
#include "cli/spectra/spectrum.h"

namespace cli {

struct SpectrumRequest {
    SpectrumOptions spectrum = {};
    std::optional<Averaging> averaging = {};
    std::vector<FrequencyBand> bands = {};
    std::optional<int> peaks = {};
    std::optional<double> from = {}, to = {};  // Hz, what is shown
};

struct ChannelSpectrum {
    std::string name = {}, unit = {};
    std::size_t segments = 1;
    std::vector<double> values = {};  // in the scale of the request, at the frequencies of the report
    std::vector<Peak> peaks = {};
    std::vector<double> rms = {};  // in each band of the request
};

struct SpectrumReport {
    SpectrumRequest request = {};
    double rate = 0;  // Hz
    std::size_t samples = 0;
    SpectrumLayout layout = {};
    double noise_bandwidth = 0;  // Hz
    std::vector<double> frequencies = {};
    std::vector<ChannelSpectrum> channels = {};
};

// Refuses what the record does not have: frequencies beyond half its rate, segments longer than it is.
SpectrumReport spectra_of(const Record &record, const SpectrumRequest &request);

void print_csv(const SpectrumReport &report, Output &out);  // spectra, or the peaks or bands that were requested
void print_json(const SpectrumReport &report, Output &out);
Figure figure_of(const SpectrumReport &report, const PlotOptions &plot);

}  // namespace cli
