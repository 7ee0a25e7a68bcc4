// mensura design: a filter as it was asked for, as it was designed, and what it achieves.
#include <mensura/iir.h>

#include <cmath>
#include <complex>
#include <memory>
#include <nlohmann/json.hpp>
#include <numbers>

#include "cli/app/analysis.h"
#include "cli/app/commands.h"
#include "cli/app/diagnostics.h"
#include "cli/app/quantity.h"
#include "cli/app/request.h"
#include "cli/data/rewrite.h"
#include "sos/measure.h"

namespace cli {

namespace {

using nlohmann::ordered_json;
using std::numbers::pi;

constexpr const char *kExamples =
    "  mensura design lowpass --cutoff 40Hz --rate 360Hz\n"
    "  mensura design bandpass --cutoff 1kHz --bandwidth 100Hz --rate 8kHz --family papoulis --poles 4 --json\n"
    "  mensura design lowpass --cutoff 40Hz --rate 360Hz --plot=response.svg\n"
    "  mensura design lowpass --cutoff 40Hz --rate 360Hz --all-families --plot=families.svg\n"
    "  mensura design highpass --cutoff 0.5Hz --rate 360Hz --response 1000 > response.csv\n";

constexpr int kMostFrequencies = 10'000'000;

struct Options {
    FilterRequest request;
    bool json = false, all_families = false;
    std::optional<int> response;
    std::string output;
    PlotOptions plot;
};

struct Design {
    double rate, cutoff = 0, bandwidth = 0;  // Hz
    IIRDesignSpec spec = {};
    IIRCoeffs cascade = {};
    Achieved achieved = {};
};

Design design_for(const FilterRequest &request) {
    if (!request.rate) reject("--rate is required: the sampling rate in Hz, such as --rate 360Hz");
    Design design{.rate = *request.rate};
    design.spec = design_spec(request, design.rate);
    design.cutoff = *request.cutoff;
    design.bandwidth = bandwidth_of(request, design.rate);
    design.cascade = CalcIIRFilterCoeff(design.spec);
    design.achieved = analyse(design.cascade, design.spec, design.rate);
    return design;
}

// ---- As text -------------------------------------------------------------------------------------------------------

class Report {
  public:
    explicit Report(Output &out) : out_(out) {}
    void heading(std::string_view text) { out_.write(fmt::format("{}{}\n", first_ ? "" : "\n", text)), first_ = false; }
    void entry(std::string_view name, const std::string &value) {
        out_.write(fmt::format("  {:<22}{}\n", name, value));
    }

  private:
    Output &out_;
    bool first_ = true;
};

std::string taken(double asked, double clamped, const char *unit) {
    const std::string text = fmt::format("{}{}", clamped, unit);
    return asked == clamped ? text : fmt::format("{} (asked: {}{})", text, asked, unit);
}

void print_asked(Report &report, const Design &design) {
    const IIRDesignSpec &spec = design.spec;
    report.heading("Asked");
    report.entry("type", pass_type_name(spec.PassType));
    report.entry(is_band_type(spec.PassType) ? "centre" : "cut-off", fmt::format("{} Hz", design.cutoff));
    if (is_band_type(spec.PassType)) report.entry("bandwidth", fmt::format("{} Hz", design.bandwidth));
    report.entry("sampling rate", fmt::format("{} Hz", design.rate));
    report.entry("family", family_name(spec.Proto.Family));
    report.entry("poles", fmt::format("{}", spec.Proto.NumPoles));
    report.entry("ripple", fmt::format("{} dB", spec.Proto.Ripple));
    report.entry("stop band", fmt::format("{} dB", spec.Proto.StopBandDb));
    report.entry("gamma", fmt::format("{}", spec.Proto.Gamma));
    report.entry("gain", fmt::format("{} dB", spec.GainDb));
}

void print_designed(Report &report, const Design &design) {
    const ProtoSpec &asked = design.spec.Proto, held = clamped(asked);
    report.heading("Designed");
    report.entry("poles", taken(asked.NumPoles, held.NumPoles, ""));
    report.entry("ripple", taken(asked.Ripple, held.Ripple, " dB"));
    report.entry("stop band", taken(asked.StopBandDb, held.StopBandDb, " dB"));
    report.entry("gamma", taken(asked.Gamma, held.Gamma, ""));
    report.entry("sections that run", fmt::format("{}", mensura::iir::sections_to_run(design.cascade)));
}

void print_sections(Report &report, Output &out, const IIRCoeffs &c) {
    report.heading("Sections  y = a0 (b0 x + b1 x' + b2 x'') - a1 y' - a2 y''");
    out.write(fmt::format("  {:<4}{:<4}{:<26}{:<26}{:<26}{:<26}{}\n", "", "a0", "a1", "a2", "b0", "b1", "b2"));
    for (std::size_t k = 0; k < mensura::iir::sections_to_run(c); ++k)
        out.write(fmt::format("  {:<4}{:<4}{:<26}{:<26}{:<26}{:<26}{}\n", k, c.a0[k], c.a1[k], c.a2[k], c.b0[k],
                              c.b1[k], c.b2[k]));
}

// Which of a cascade's frequencies the gain is given relative to.
const char *reference_name(int pass_type) {
    return pass_type == ptHighPass ? "gain at Nyquist" : pass_type == ptBandPass ? "gain at the centre" : "gain at DC";
}

std::string joined(const std::vector<double> &frequencies) {
    std::string text;
    for (const double f : frequencies) text += fmt::format("{}{:.6g} Hz", text.empty() ? "" : ", ", f);
    return text.empty() ? "none" : text;
}

// No "-0.00"; what lies below -300 dB is rounding.
std::string level(double decibel) {
    if (std::isnan(decibel)) return "not defined";
    if (decibel < -300) return "below -300 dB";
    return fmt::format("{:.2f} dB", std::round(decibel / 0.01) * 0.01 + 0.0);
}

void print_band(Report &report, const char *name, const Band &band) {
    report.entry(name, fmt::format("{} to {}, from {:.6g} to {:.6g} Hz", level(band.lowest), level(band.highest),
                                   band.from, band.to));
}

void print_achieved(Report &report, const Design &design) {
    const Achieved &a = design.achieved;
    report.heading("Achieved");
    report.entry(reference_name(design.spec.PassType), level(a.reference_db));
    report.entry(is_band_type(design.spec.PassType) ? "level at the centre" : "level at the cut-off",
                 level(a.at_cutoff_db));
    report.entry("-3 dB at", joined(a.half_power));
    for (const Band &band : a.pass) print_band(report, "pass band", band);
    for (const Band &band : a.stop) print_band(report, "stop band", band);
    report.entry("group delay at DC",
                 std::isfinite(a.delay_at_dc)
                     ? fmt::format("{:.6g} samples, {:.6g} ms", a.delay_at_dc, 1e3 * a.delay_at_dc / design.rate)
                     : "not defined");
    report.entry("largest pole radius", fmt::format("{:.6f}", a.pole_radius));
}

void print_text(Output &out, const Design &design) {
    Report report(out);
    print_asked(report, design);
    print_designed(report, design);
    print_sections(report, out, design.cascade);
    print_achieved(report, design);
}

// ---- For machines ---------------------------------------------------------------------------------------------------

ordered_json prototype_json(const ProtoSpec &spec) {
    return {
        {"poles", spec.NumPoles}, {"ripple_dB", spec.Ripple}, {"stopband_dB", spec.StopBandDb}, {"gamma", spec.Gamma}};
}

ordered_json bands_json(const std::vector<Band> &bands) {
    ordered_json list = ordered_json::array();
    for (const Band &band : bands)
        list.push_back(
            {{"from_Hz", band.from}, {"to_Hz", band.to}, {"lowest_dB", band.lowest}, {"highest_dB", band.highest}});
    return list;
}

ordered_json sections_json(const IIRCoeffs &c) {
    ordered_json list = ordered_json::array();
    for (std::size_t k = 0; k < mensura::iir::sections_to_run(c); ++k)
        list.push_back(
            {{"a0", c.a0[k]}, {"a1", c.a1[k]}, {"a2", c.a2[k]}, {"b0", c.b0[k]}, {"b1", c.b1[k]}, {"b2", c.b2[k]}});
    return list;
}

ordered_json asked_json(const Design &design) {
    ordered_json asked{{"type", pass_type_name(design.spec.PassType)},
                       {"cutoff_Hz", design.cutoff},
                       {"bandwidth_Hz", design.bandwidth},
                       {"rate_Hz", design.rate},
                       {"family", family_name(design.spec.Proto.Family)}};
    asked.update(prototype_json(design.spec.Proto));
    asked["gain_dB"] = design.spec.GainDb;
    return asked;
}

void print_json(Output &out, const Design &design) {
    const Achieved &a = design.achieved;
    const ordered_json document{{"asked", asked_json(design)},
                                {"designed", prototype_json(clamped(design.spec.Proto))},
                                {"sections", sections_json(design.cascade)},
                                {"achieved",
                                 {{"reference_dB", a.reference_db},
                                  {"level_at_cutoff_dB", a.at_cutoff_db},
                                  {"half_power_Hz", a.half_power},
                                  {"pass_band", bands_json(a.pass)},
                                  {"stop_band", bands_json(a.stop)},
                                  {"group_delay_at_dc_s", a.delay_at_dc / design.rate},
                                  {"largest_pole_radius", a.pole_radius}}},
                                {"warnings", warnings_about(a)}};
    out.write(document.dump(2) + "\n");
}

// ---- The families side by side ---------------------------------------------------------------------------------------

std::vector<Design> design_families(FilterRequest request) {
    std::vector<Design> designs;
    for (request.family = 0; request.family < kFamilyCount; ++request.family) designs.push_back(design_for(request));
    return designs;
}

double highest(const std::vector<Band> &bands) {
    double highest_level = std::nan("");  // an all-pass has no stop band
    for (const Band &band : bands) highest_level = std::fmax(highest_level, band.highest);
    return highest_level;
}

void print_families(Output &out, const std::vector<Design> &designs) {
    out.write(fmt::format("{:<19}{:>15}{:>15}{:>13}{:>13}  {}\n", "family", "at cut-off", "stop band", "delay at DC",
                          "pole radius", "-3 dB at"));
    for (const Design &design : designs) {
        const Achieved &a = design.achieved;
        out.write(fmt::format("{:<19}{:>15}{:>15}{:>10.3f} ms{:>13.6f}  {}\n", family_name(design.spec.Proto.Family),
                              level(a.at_cutoff_db), level(highest(a.stop)), 1e3 * a.delay_at_dc / design.rate,
                              a.pole_radius, joined(a.half_power)));
    }
}

// ---- The response ----------------------------------------------------------------------------------------------------

void print_response(Output &out, const Design &design, int points) {
    std::vector<double> re(static_cast<std::size_t>(points)), im(re.size());
    IIRFreqResponse(design.cascade, static_cast<int>(mensura::iir::sections_to_run(design.cascade)), re.data(),
                    im.data(), points);
    out.write("frequency_Hz,gain_dB,phase_deg\n");
    for (std::size_t i = 0; i < re.size(); ++i) {
        out.number(static_cast<double>(i) * (0.5 * design.rate) / points);
        out.write(",");
        out.number(mensura::sos::decibels(std::hypot(re[i], im[i])));
        out.write(",");
        out.number(std::atan2(im[i], re[i]) * (180 / pi));
        out.write("\n");
        if (out.full()) out.flush();
    }
}

// From a hundredth of the cut-off up; what lies below -100 dB is of no interest.
void add_response(const Design &design, Curve &gain, Curve &phase) {
    const mensura::sos::RecordSections sections(design.cascade);
    constexpr int kPoints = 1000;
    const double nyquist = 0.5 * design.rate, lowest = 0.01 * design.cutoff;
    for (int i = 0; i <= kPoints; ++i) {
        const double f = lowest * std::pow(nyquist / lowest, static_cast<double>(i) / kPoints);
        const std::complex<double> h = mensura::sos::response(sections.cascade(), f, design.rate);
        const double degrees = std::abs(h) < 1e-15 ? std::nan("") : std::arg(h) * (180 / pi);
        if (i > 0 && std::abs(degrees - phase.y.back()) > 180) {  // a jump of a turn is not part of the curve
            phase.x.push_back(f);
            phase.y.push_back(std::nan(""));
        }
        gain.x.push_back(f);
        const double shown = std::max(mensura::sos::decibels(std::abs(h)), design.achieved.asked_db - 100);
        gain.y.push_back(std::round(1e9 * shown) / 1e9);  // an all-pass is no picture of its rounding errors
        phase.x.push_back(f);
        phase.y.push_back(degrees);
    }
}

Figure figure_of(const std::vector<Design> &designs) {
    const Design &first = designs.front();
    const auto panel = [&first](const char *label) {
        return Panel{.x_label = "frequency [Hz]",
                     .y_label = label,
                     .marks = {first.cutoff},
                     .logarithmic = true,
                     .key_below = true,
                     .x_lowest = 0.01 * first.cutoff,
                     .x_highest = 0.5 * first.rate};
    };
    Figure figure{.panels = {panel("gain [dB]")}};
    if (designs.size() == 1) figure.panels.push_back(panel("phase [degrees]"));
    for (const Design &design : designs) {
        const std::string name = family_name(design.spec.Proto.Family);
        Curve gain{.title = name}, phase{.title = name};
        add_response(design, gain, phase);
        figure.panels[0].curves.push_back(gain);
        if (designs.size() == 1) figure.panels[1].curves.push_back(phase);
    }
    figure.title =
        fmt::format("{}{}, {} poles, cut-off {:.6g} Hz, sampled at {:.6g} Hz",
                    designs.size() == 1 ? family_name(first.spec.Proto.Family) + std::string(" ") : "",
                    pass_type_name(first.spec.PassType), first.spec.Proto.NumPoles, first.cutoff, first.rate);
    figure.panels[0].title = designs.size() == 1 ? "" : figure.title;
    return figure;
}

void print(Output &out, const Options &options, const std::vector<Design> &designs) {
    if (options.all_families)
        print_families(out, designs);
    else if (options.json)
        print_json(out, designs.front());
    else if (options.response)
        print_response(out, designs.front(), *options.response);
    else
        print_text(out, designs.front());
}

void report(const Design &design, const std::string &prefix) {
    report_clamps(design.spec.Proto);
    for (const std::string &warning : warnings_about(design.achieved)) remark("{}{}", prefix, warning);
}

void run(const Options &options) {
    if (options.response && (*options.response < 1 || *options.response > kMostFrequencies))
        reject("--response {}: from 1 to {} frequencies are possible", *options.response, kMostFrequencies);
    const std::vector<Design> designs =
        options.all_families ? design_families(options.request) : std::vector{design_for(options.request)};
    for (const Design &design : designs)
        report(design, options.all_families ? fmt::format("{}: ", family_name(design.spec.Proto.Family)) : "");
    Output out(data_file(options.plot, options.output));
    print(out, options, designs);
    out.commit();
    if (options.plot.wanted()) draw(figure_of(designs), options.plot);
}

}  // namespace

void add_design(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app = program.add_command("design", "design a filter and measure what it achieves", kExamples);
    add_filter_request(app, options->request);
    app.add_flag("--json", options->json, "print it all as JSON; null: minus infinity, or not defined");
    add_count(app, "--response", options->response,
              "print the response at N frequencies from DC up: Hz, dB, degrees (CSV)")
        .type_name("N")
        .excludes({"--json"});
    app.add_flag("--all-families", options->all_families, "compare the families in one table and one picture")
        .excludes({"--family", "--json", "--response"});
    add_output(app, options->output);
    add_plot_options(app, options->plot);
    app.callback([options] { run(*options); });
}

}  // namespace cli
