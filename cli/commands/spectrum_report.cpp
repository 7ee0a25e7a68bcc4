// What mensura spectrum finds in a record.
#include "cli/commands/spectrum_report.h"

#include <algorithm>
#include <cmath>

#include "cli/app/diagnostics.h"

namespace cli {

namespace {

void check(const std::string &option, const FrequencyBand &band, double nyquist) {
    if (!(band.from >= 0 && band.from < band.to && band.to <= nyquist))
        reject("{}: {} Hz to {} Hz must lie within 0 and {} Hz, half the sampling rate, the lower one first", option,
               band.from, band.to, nyquist);
}

FrequencyBand shown(const SpectrumRequest &request, double nyquist) {
    return {request.from.value_or(0), request.to.value_or(nyquist)};
}

Pieces pieces_of(const Channel &channel) {
    Pieces pieces;
    for (const Piece &piece : channel.pieces)
        pieces.push_back(std::span(channel.samples).subspan(piece.begin, piece.end - piece.begin));
    return pieces;
}

std::size_t longest(const Pieces &pieces) {
    return std::ranges::max(pieces, {}, &std::span<const double>::size).size();
}

// All channels have the same frequencies: segments fit into each.
SpectrumLayout layout_of(const Record &record, const std::optional<Averaging> &averaging) {
    std::size_t samples = record.length();
    bool whole = true;
    for (const Channel &channel : record.channels) {
        samples = std::min(samples, longest(pieces_of(channel)));
        whole = whole && channel.pieces.size() == 1;
    }
    if (averaging) return layout_for(samples, *averaging);
    if (!whole) reject("{}: has holes; --average takes segments between them", record.name);
    return layout_for(samples);
}

std::vector<double> within(const FrequencyBand &band, const SpectrumReport &report, const std::vector<double> &bins) {
    std::vector<double> selected;
    for (std::size_t k = 0; k < bins.size(); ++k) {
        const double frequency = report.layout.frequency(k, report.rate);
        if (frequency >= band.from && frequency <= band.to) selected.push_back(bins[k]);
    }
    return selected;
}

ChannelSpectrum spectrum_of(const Channel &channel, const SpectrumReport &report) {
    const SpectrumRequest &request = report.request;
    const bool median = request.averaging && request.averaging->median;
    const Segments segments(pieces_of(channel), report.layout, request.spectrum.window, request.spectrum.no_mean,
                            median);
    std::vector<double> amplitudes = segments.amplitudes();
    const FrequencyBand band = shown(request, 0.5 * report.rate);
    ChannelSpectrum spectrum{.name = channel.name, .segments = segments.count()};
    for (const FrequencyBand &asked : request.bands)
        spectrum.rms.push_back(rms_in(asked, amplitudes, report.layout, report.rate, report.noise_bandwidth));
    if (request.peaks)
        spectrum.peaks =
            highest_peaks(amplitudes, segments, report.rate, band, static_cast<std::size_t>(*request.peaks));
    for (std::size_t k = 0; k < amplitudes.size(); ++k)
        amplitudes[k] =
            scaled(amplitudes[k], report.layout.mirrored(k), request.spectrum.scale, report.noise_bandwidth);
    spectrum.values = within(band, report, amplitudes);
    return spectrum;
}

}  // namespace

SpectrumReport spectra_of(const Record &record, const SpectrumRequest &request) {
    const double nyquist = 0.5 * record.rate;
    const FrequencyBand band = shown(request, nyquist);
    if (request.from || request.to) check("--from and --to", band, nyquist);
    for (const FrequencyBand &asked : request.bands) check("--bands", asked, nyquist);
    SpectrumReport report{.request = request,
                          .rate = record.rate,
                          .samples = record.length(),
                          .layout = layout_of(record, request.averaging)};
    report.noise_bandwidth = record.rate * noise_bandwidth(request.spectrum.window, report.layout.samples);
    std::vector<double> all(report.layout.bins());
    for (std::size_t k = 0; k < all.size(); ++k) all[k] = report.layout.frequency(k, record.rate);
    report.frequencies = within(band, report, all);
    if (report.frequencies.empty())
        reject("--from and --to: no frequency between {} Hz and {} Hz; they are {} Hz apart", band.from, band.to,
               report.layout.frequency(1, record.rate));
    for (const Channel &channel : record.channels) report.channels.push_back(spectrum_of(channel, report));
    return report;
}

}  // namespace cli
