// The text that mensura design prints.
#include <fmt/format.h>
#include <mensura/iir.h>

#include <cmath>
#include <string>
#include <string_view>
#include <vector>

#include "cli/app/request.h"
#include "cli/commands/design_output.h"
#include "iir/direct_form.h"
#include "iir/pass_types.h"
#include "iir/proto/limits.h"

namespace cli {

namespace {

using mensura::iir::is_band_type;

class Report {
  public:
    explicit Report(Output &out) : out_(out) {}
    void heading(std::string_view text) {
        out_.write(fmt::format("{}{}\n", first_ ? "" : "\n", text));
        first_ = false;
    }
    void entry(std::string_view name, const std::string &value) {
        out_.write(fmt::format("  {:<22}{}\n", name, value));
    }

  private:
    Output &out_;
    bool first_ = true;
};

std::string clamped_text(double asked, double designed, const char *unit) {
    const std::string text = fmt::format("{}{}", designed, unit);
    return asked == designed ? text : fmt::format("{} (asked: {}{})", text, asked, unit);
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
    const ProtoSpec &asked = design.spec.Proto, designed = mensura::iir::clamped(asked);
    report.heading("Designed");
    report.entry("poles", clamped_text(asked.NumPoles, designed.NumPoles, ""));
    report.entry("ripple", clamped_text(asked.Ripple, designed.Ripple, " dB"));
    report.entry("stop band", clamped_text(asked.StopBandDb, designed.StopBandDb, " dB"));
    report.entry("gamma", clamped_text(asked.Gamma, designed.Gamma, ""));
    report.entry("sections that run", fmt::format("{}", mensura::iir::sections_to_run(design.cascade)));
}

void print_sections(Report &report, Output &out, const IIRCoeffs &c) {
    report.heading("Sections  y = a0 (b0 x + b1 x' + b2 x'') - a1 y' - a2 y''");
    out.write(fmt::format("  {:<4}{:<4}{:<26}{:<26}{:<26}{:<26}{}\n", "", "a0", "a1", "a2", "b0", "b1", "b2"));
    for (std::size_t k = 0; k < mensura::iir::sections_to_run(c); ++k)
        out.write(fmt::format("  {:<4}{:<4}{:<26}{:<26}{:<26}{:<26}{}\n", k, c.a0[k], c.a1[k], c.a2[k], c.b0[k],
                              c.b1[k], c.b2[k]));
}

// The name of the gain that all levels are relative to.
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

double highest(const std::vector<Band> &bands) {
    double highest_level = std::nan("");  // an all-pass has no stop band
    for (const Band &band : bands) highest_level = std::fmax(highest_level, band.highest);
    return highest_level;
}

}  // namespace

void print_text(Output &out, const Design &design) {
    Report report(out);
    print_asked(report, design);
    print_designed(report, design);
    print_sections(report, out, design.cascade);
    print_achieved(report, design);
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

}  // namespace cli
