// The text that mensura design prints.
#include <fmt/format.h>

#include <cmath>
#include <string>
#include <string_view>
#include <vector>

#include "cli/app/request.h"
#include "cli/commands/design_output.h"
#include "iir/proto/limits.h"

namespace cli {

namespace {

class Report {
  public:
    explicit Report(Output &out) : out_(out) {}
    void heading(std::string_view text) {
        out_.write(fmt::format("{}{}\n", first_ ? "" : "\n", text));
        first_ = false;
    }
    void entry(std::string_view name, const std::string &value) {
        out_.write(fmt::format("  {:<26}{}\n", name, value));
    }

  private:
    Output &out_;
    bool first_ = true;
};

std::string hertz(double frequency) { return fmt::format("{:.6g} Hz", frequency); }

// No "-0.00"; what lies below -300 dB is rounding.
std::string level(double decibel) {
    if (std::isnan(decibel)) return "not defined";
    if (decibel < -300) return "below -300 dB";
    return fmt::format("{:.2f} dB", std::round(decibel / 0.01) * 0.01 + 0.0);
}

void print_asked(Report &report, const Design &design) {
    const FilterRequest &r = design.request;
    const bool band = is_band_type(r.pass_type);
    report.heading("Asked");
    report.entry("type", pass_type_name(r.pass_type));
    if (r.cutoff) report.entry(band ? "centre" : "cut-off", hertz(*r.cutoff));
    if (r.cutoff && band) report.entry("bandwidth", hertz(design.made.edge[1]));
    if (r.from) report.entry("from", hertz(*r.from));
    if (r.to) report.entry("to", hertz(*r.to));
    if (!r.by_requirement() && !design.leading && r.pass_type != ptAllPass)
        report.entry(band ? "level at the edges" : "level at the cut-off", level(design.made.level_db));
    for (const Corner &c : r.pass)
        report.entry("pass", fmt::format("{}, loss at most {} dB", hertz(c.frequency), c.loss));
    for (const Corner &c : r.stop)
        report.entry("stop", fmt::format("{}, loss at least {} dB", hertz(c.frequency), c.loss));
    report.entry("sampling rate", hertz(design.rate));
    if (r.zero_phase) report.entry("runs", "forwards and backwards; all levels are those of both passes together");
}

std::string clamped_text(double asked, double designed, const char *unit) {
    const std::string text = fmt::format("{}{}", designed, unit);
    return asked == designed ? text : fmt::format("{} (asked: {}{})", text, asked, unit);
}

void print_designed(Report &report, const Design &design) {
    const mensura_sos_request &made = design.made;
    const ProtoSpec as_made{made.family, made.poles, made.ripple_db, made.stop_db, made.gamma};
    const ProtoSpec &asked = design.leading ? design.leading->spec.Proto : as_made;
    const auto depends = [&made](mensura::iir::Setting s) { return mensura::iir::depends_on(made.family, s); };
    report.heading("Designed");
    report.entry("family", family_name(made.family));
    report.entry("poles", clamped_text(asked.NumPoles, made.poles, ""));
    if (depends(mensura::iir::kRipple)) report.entry("ripple", clamped_text(asked.Ripple, made.ripple_db, " dB"));
    if (depends(mensura::iir::kStopBand))
        report.entry("stop band", clamped_text(asked.StopBandDb, made.stop_db, " dB"));
    if (depends(mensura::iir::kGamma)) report.entry("gamma", clamped_text(asked.Gamma, made.gamma, ""));
    report.entry("gain", fmt::format("{} dB", made.gain_db));
    if (design.leading) report.entry("sections", "the leading ones, which IIRFilter runs");
}

void print_sections(Report &report, Output &out, const Sections &sections) {
    report.heading("Sections  y = b0 x + b1 x' + b2 x'' - a1 y' - a2 y''");
    out.write(fmt::format("  {:<4}{:<26}{:<26}{:<26}{:<4}{:<26}{}\n", "", "b0", "b1", "b2", "a0", "a1", "a2"));
    for (std::size_t k = 0; k < sections.size(); ++k) {
        const auto &[b0, b1, b2, a0, a1, a2] = sections[k];
        out.write(fmt::format("  {:<4}{:<26}{:<26}{:<26}{:<4}{:<26}{}\n", k, b0, b1, b2, a0, a1, a2));
    }
}

// Where the gain is measured.
const char *place(int pass_type) {
    return pass_type == ptHighPass ? "at Nyquist" : pass_type == ptBandPass ? "at the centre" : "at DC";
}

std::string joined(const std::vector<double> &frequencies) {
    std::string text;
    for (const double f : frequencies) text += (text.empty() ? "" : ", ") + hertz(f);
    return text.empty() ? "none" : text;
}

void print_band(Report &report, const char *name, const Band &band) {
    const std::string lowest = level(band.lowest), highest = level(band.highest);
    const std::string levels = lowest == highest ? lowest : fmt::format("{} to {}", lowest, highest);
    report.entry(name, fmt::format("{}, from {:.6g} to {:.6g} Hz", levels, band.from, band.to));
}

// Six decimals would round the radius of a stable filter to 1.
std::string radius(double value) {
    constexpr double kClose = 1e-5;
    return value < 1 && 1 - value < kClose ? fmt::format("1 - {:.3g}", 1 - value) : fmt::format("{:.6f}", value);
}

std::string duration(double seconds, double rate) {
    if (!std::isfinite(seconds)) return "not defined";
    return fmt::format("{:.6g} ms, {:.6g} samples", 1e3 * seconds, seconds * rate);
}

constexpr const char *kUnsettled = "not measured: it does not settle, or too slowly";

void print_achieved(Report &report, const Design &design) {
    const Achieved &a = design.achieved;
    const char *const where = place(design.request.pass_type);
    report.heading("Achieved");
    report.entry("largest pole radius", radius(a.pole_radius));
    if (!a.measurable()) return;
    report.entry(fmt::format("gain {}", where), level(a.gain_db));
    if (std::abs(a.reference_db - a.gain_db) > 0.005)  // dB: as far as it would show
        report.entry("levels relative to", level(a.reference_db) + ", the largest gain of the pass band");
    for (const Level &edge : a.edges)
        report.entry(fmt::format("level at {}", hertz(edge.frequency)), fmt::format("{:.4f} dB", edge.db));
    report.entry("-3 dB at", joined(a.half_power));
    for (const Band &band : a.pass) print_band(report, "pass band", band);
    for (const Band &band : a.stop) print_band(report, "stop band", band);
    report.entry("step overshoot", design.step ? fmt::format("{:.2f} %", 100 * design.step->overshoot) : kUnsettled);
    report.entry("step settled (2 %)",
                 design.step ? duration(design.step->settling / design.rate, design.rate) : kUnsettled);
    report.entry(fmt::format("group delay {}", where), duration(a.delay, design.rate));
}

void print_orders(Report &report, const FamilyOrders &orders) {
    report.heading("Poles that each family needs");
    for (const auto &[family, poles] : orders)
        report.entry(family_name(family), poles > 0 ? fmt::format("{}", poles) : "none will do");
}

double highest(const std::vector<Band> &bands) {
    double highest_level = std::nan("");  // an all-pass has no stop band
    for (const Band &band : bands) highest_level = std::fmax(highest_level, band.highest);
    return highest_level;
}

}  // namespace

void print_text(Output &out, const Design &design, const FamilyOrders &orders) {
    Report report(out);
    print_asked(report, design);
    if (!orders.empty()) print_orders(report, orders);
    print_designed(report, design);
    print_sections(report, out, design.sections);
    print_achieved(report, design);
}

void print_families(Output &out, const std::vector<Design> &designs) {
    out.write(fmt::format("{:<19}{:>5}{:>15}{:>11}{:>14}{:>14}{:>13}  {}\n", "family", "poles", "stop band",
                          "overshoot", "settled (2 %)", "group delay", "pole radius", "-3 dB at"));
    for (const Design &design : designs) {
        const Achieved &a = design.achieved;
        const StepFigures step = design.step.value_or(StepFigures{std::nan(""), std::nan("")});
        out.write(fmt::format("{:<19}{:>5}{:>15}{:>9.2f} %{:>11.3f} ms{:>11.3f} ms{:>13.6f}  {}\n",
                              family_name(design.made.family), design.made.poles, level(highest(a.stop)),
                              100 * step.overshoot, 1e3 * step.settling / design.rate, 1e3 * a.delay, a.pole_radius,
                              joined(a.half_power)));
    }
}

}  // namespace cli
