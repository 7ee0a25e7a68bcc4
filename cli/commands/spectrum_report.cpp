// What mensura spectrum finds in a record.
#include "cli/commands/spectrum_report.h"

#include <algorithm>
#include <cmath>

#include "cli/app/diagnostics.h"

namespace cli {

namespace {

Pieces pieces_of(const Channel &channel) {
    Pieces pieces;
    for (const Piece &piece : channel.pieces) pieces.push_back(samples_of(channel, piece));
    return pieces;
}

std::size_t longest(const Pieces &pieces) {
    return std::ranges::max(pieces, {}, &std::span<const double>::size).size();
}

// All channels have the same frequencies: segments fit into each.  A single transform takes a single piece, of equal
// length in all channels.
SpectrumLayout layout_of(const Record &record, const std::optional<Averaging> &averaging) {
    std::size_t samples = longest(pieces_of(record.channels.front()));
    bool alike = true;
    for (const Channel &channel : record.channels) {
        const std::size_t others = longest(pieces_of(channel));
        alike = alike && channel.pieces.size() == 1 && others == samples;
        samples = std::min(samples, others);
    }
    if (averaging) return layout_for(samples, *averaging);
    if (!alike) reject("{}: has holes; --average takes segments between them", record.name);
    return layout_for(samples);
}

ChannelSpectrum spectrum_of(const Channel &channel, const SpectrumReport &report, const BinRange &bins) {
    const SpectrumRequest &request = report.request;
    const bool median = request.averaging && request.averaging->median;
    const Segments segments(pieces_of(channel), report.layout, request.spectrum.window, request.spectrum.no_mean,
                            median);
    const std::vector<double> amplitudes = segments.amplitudes();
    const FrequencyBand shown{request.from.value_or(0), request.to.value_or(0.5 * report.rate)};
    ChannelSpectrum spectrum{.name = channel.name, .unit = channel.unit, .segments = segments.count()};
    for (const FrequencyBand &asked : request.bands)
        spectrum.rms.push_back(rms_in(asked, amplitudes, report.layout, report.rate, report.noise_bandwidth));
    if (request.peaks)
        spectrum.peaks =
            highest_peaks(amplitudes, segments, report.rate, shown, static_cast<std::size_t>(*request.peaks));
    for (std::size_t k = bins.begin; k < bins.end; ++k)
        spectrum.values.push_back(
            scaled(amplitudes[k], report.layout.mirrored(k), request.spectrum.scale, report.noise_bandwidth));
    return spectrum;
}

}  // namespace

SpectrumReport spectra_of(const Record &record, const SpectrumRequest &request) {
    for (const FrequencyBand &asked : request.bands) check_band("--bands", asked, record.rate);
    SpectrumReport report{.request = request,
                          .rate = record.rate,
                          .samples = record.length(),
                          .layout = layout_of(record, request.averaging)};
    report.noise_bandwidth = record.rate * noise_bandwidth(request.spectrum.window, report.layout.samples);
    const BinRange bins = bins_within(request.from, request.to, report.layout, record.rate);
    for (std::size_t k = bins.begin; k < bins.end; ++k)
        report.frequencies.push_back(report.layout.frequency(k, record.rate));
    for (const Channel &channel : record.channels) report.channels.push_back(spectrum_of(channel, report, bins));
    return report;
}

}  // namespace cli
