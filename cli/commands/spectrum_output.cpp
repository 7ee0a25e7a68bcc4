// The tables and the JSON of mensura spectrum.
#include <nlohmann/json.hpp>

#include "cli/commands/spectrum_report.h"
#include "cli/data/json.h"
#include "cli/table/csv.h"

namespace cli {

namespace {

using nlohmann::ordered_json;

void write_named(const std::string &name, std::initializer_list<double> numbers, Output &out) {
    out.write(cell_text(name, ',') + ',');
    write_row(numbers, out);
}

void print_peaks(const SpectrumReport &report, Output &out) {
    out.write("column,frequency_Hz,amplitude\n");
    for (const ChannelSpectrum &channel : report.channels)
        for (const Peak &peak : channel.peaks) write_named(channel.name, {peak.frequency, peak.amplitude}, out);
}

void print_bands(const SpectrumReport &report, Output &out) {
    out.write("column,from_Hz,to_Hz,rms\n");
    const std::vector<FrequencyBand> &bands = report.request.bands;
    for (const ChannelSpectrum &channel : report.channels)
        for (std::size_t i = 0; i < bands.size(); ++i)
            write_named(channel.name, {bands[i].from, bands[i].to, channel.rms[i]}, out);
}

void print_spectra(const SpectrumReport &report, Output &out) {
    NumberTable table{.names = {"frequency_Hz"}, .columns = {report.frequencies}};
    for (const ChannelSpectrum &channel : report.channels) {
        table.names.push_back(channel.name);
        table.columns.push_back(channel.values);
    }
    write_csv(table, out);
}

ordered_json peaks_json(const std::vector<Peak> &peaks) {
    ordered_json list = ordered_json::array();
    for (const Peak &peak : peaks) list.push_back({{"frequency_Hz", peak.frequency}, {"amplitude", peak.amplitude}});
    return list;
}

ordered_json bands_json(const std::vector<FrequencyBand> &bands, const std::vector<double> &rms) {
    ordered_json list = ordered_json::array();
    for (std::size_t i = 0; i < bands.size(); ++i)
        list.push_back({{"from_Hz", bands[i].from}, {"to_Hz", bands[i].to}, {"rms", rms[i]}});
    return list;
}

ordered_json channel_json(const ChannelSpectrum &channel, const SpectrumRequest &request) {
    ordered_json json{{"column", channel.name}, {"segments", channel.segments}};
    if (request.peaks)
        json["peaks"] = peaks_json(channel.peaks);
    else if (!request.bands.empty())
        json["bands"] = bands_json(request.bands, channel.rms);
    else
        json[key_of(request.spectrum.scale)] = channel.values;
    return json;
}

}  // namespace

void print_csv(const SpectrumReport &report, Output &out) {
    if (report.request.peaks) return print_peaks(report, out);
    if (!report.request.bands.empty()) return print_bands(report, out);
    print_spectra(report, out);
}

void print_json(const SpectrumReport &report, Output &out) {
    const SpectrumRequest &request = report.request;
    ordered_json document{{"rate_Hz", report.rate},
                          {"samples", report.samples},
                          {"window", window_name(request.spectrum.window.kind)},
                          {"noise_bandwidth_Hz", report.noise_bandwidth},
                          {"segment_samples", report.layout.samples},
                          {"segment_step_samples", report.layout.step},
                          {"transform_points", report.layout.points},
                          {"average", request.averaging && request.averaging->median ? "median" : "mean"}};
    if (!request.peaks && request.bands.empty()) document["frequency_Hz"] = report.frequencies;
    for (const ChannelSpectrum &channel : report.channels)
        document["columns"].push_back(channel_json(channel, request));
    write_json(document, out);
}

}  // namespace cli
