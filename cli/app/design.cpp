#include "cli/app/design.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "cli/app/diagnostics.h"
#include "iir/direct_form.h"
#include "iir/proto/limits.h"

namespace cli {

namespace {

using std::numbers::pi;

// ---- Where it is measured ------------------------------------------------------------------------------------------

struct Edges {
    double lower, upper;
};

// The edges f1 and f1 + width around a centre f0.  With a = pi f / rate, tan(a1) tan(a1 + w) = tan^2(a0) gives
// cos(2 a1 + w) = cos(w) cos(2 a0), here by the sine and cosine of half the angle: a difference from 1 loses digits.
Edges edges_around(double centre, double width, double rate) {
    const double a0 = pi * centre / rate, half_width = 0.5 * pi * width / rate;
    const double sine = std::hypot(std::sin(a0) * std::cos(half_width), std::cos(a0) * std::sin(half_width));
    const double cosine = std::hypot(std::cos(a0) * std::cos(half_width), std::sin(a0) * std::sin(half_width));
    const double lower = (std::atan2(sine, cosine) - half_width) * rate / pi;
    return {lower, lower + width};
}

double centre_of(Edges edges, double rate) {
    const double product = std::tan(pi * edges.lower / rate) * std::tan(pi * edges.upper / rate);
    return std::atan(std::sqrt(product)) * rate / pi;
}

// Halfway to Nyquist when twice the edge lies beyond it.
double octave_above(double edge, double nyquist) { return 2 * edge < nyquist ? 2 * edge : 0.5 * (edge + nyquist); }

// What lies two widths or more from the centre.
std::vector<Band> away_from(double centre, double width, double nyquist) {
    std::vector<Band> bands;
    if (centre - 2 * width > 0) bands.push_back({0, centre - 2 * width});
    if (centre + 2 * width < nyquist) bands.push_back({centre + 2 * width, nyquist});
    return bands;
}

std::vector<Band> outside(Edges edges, double nyquist) { return {{0, edges.lower}, {edges.upper, nyquist}}; }

// The pass bands end at the edges.  Stop bands lie an octave from the edge, or two widths from the centre; that of a
// notch is a tenth of its width.
void place_bands(Target &target, Edges edges) {
    const double nyquist = 0.5 * target.rate, width = edges.upper - edges.lower;
    switch (target.pass_type) {
        case ptLowPass:
            target.pass = {{0, edges.lower}};
            target.stop = {{octave_above(edges.lower, nyquist), nyquist}};
            break;
        case ptHighPass:
            target.pass = {{edges.lower, nyquist}};
            target.stop = {{0, 0.5 * edges.lower}};
            break;
        case ptBandPass:
            target.pass = {{edges.lower, edges.upper}};
            target.stop = away_from(target.centre, width, nyquist);
            break;
        case ptNotch:
            target.pass = outside(edges, nyquist);
            edges = edges_around(target.centre, 0.1 * width, target.rate);
            target.stop = {{edges.lower, edges.upper}};
            break;
        default: target.pass = {{0, nyquist}};
    }
}

// The bands that --pass and --stop ask for.
void place_required_bands(Target &target, const FilterRequest &request) {
    const double nyquist = 0.5 * target.rate;
    const auto [pass_low, pass_high] = std::ranges::minmax(request.pass, {}, &Corner::frequency);
    const auto [stop_low, stop_high] = std::ranges::minmax(request.stop, {}, &Corner::frequency);
    const Edges pass{pass_low.frequency, pass_high.frequency}, stop{stop_low.frequency, stop_high.frequency};
    switch (target.pass_type) {
        case ptLowPass:
            target.pass = {{0, pass.lower}};
            target.stop = {{stop.lower, nyquist}};
            break;
        case ptHighPass:
            target.pass = {{pass.lower, nyquist}};
            target.stop = {{0, stop.lower}};
            break;
        case ptBandPass:
            target.pass = {{pass.lower, pass.upper}};
            target.stop = outside(stop, nyquist);
            break;
        default: target.pass = outside(pass, nyquist); target.stop = {{stop.lower, stop.upper}};
    }
}

Edges edges_of(const mensura_sos_request &made) {
    if (!is_band_type(made.pass_type)) return {made.edge[0], made.edge[0]};
    if (made.band == MENSURA_SOS_TWO_EDGES) return {made.edge[0], made.edge[1]};
    return edges_around(made.edge[0], made.edge[1], made.rate);
}

Target target_of(const Design &design) {
    const mensura_sos_request &made = design.made;
    const Edges edges = edges_of(made);
    Target target{.pass_type = made.pass_type,
                  .passes = made.passes,
                  .rate = made.rate,
                  .gain_db = made.gain_db,
                  .centre = centre_of(edges, made.rate),
                  .edges = {},
                  .pass = {},
                  .stop = {},
                  .to_largest = !design.leading};
    if (is_band_type(made.pass_type))
        target.edges = {edges.lower, edges.upper};
    else if (made.pass_type != ptAllPass)
        target.edges = {edges.lower};
    if (design.request.by_requirement())
        place_required_bands(target, design.request);
    else
        place_bands(target, edges);
    return target;
}

// ---- Designed ------------------------------------------------------------------------------------------------------

Sections designed(const mensura_sos_request &request) {
    Sections sections;
    if (const int code = design_sections(request, sections); code < 0) reject_request(code, request);
    return sections;
}

// The same settings, for the report.
mensura_sos_request counterpart(const IIRDesignSpec &spec, const FilterRequest &request, double rate) {
    const ProtoSpec proto = mensura::iir::clamped(spec.Proto);
    return {.size = sizeof(mensura_sos_request),
            .pass_type = spec.PassType,
            .family = proto.Family,
            .poles = proto.NumPoles,
            .passes = request.passes(),
            .band = MENSURA_SOS_CENTRE,
            .rate = rate,
            .edge = {*request.cutoff, 0.5 * spec.NormBandwidth * rate},
            .level_db = 10 * std::log10(0.5),
            .ripple_db = proto.Ripple,
            .stop_db = proto.StopBandDb,
            .gamma = proto.Gamma,
            .gain_db = spec.GainDb * request.passes()};
}

std::string joined_frequencies(const std::vector<double> &frequencies) {
    std::string text;
    for (std::size_t i = 0; i < frequencies.size(); ++i)
        text += fmt::format("{}{:.6g}", i == 0 ? "" : i + 1 == frequencies.size() ? " and " : ", ", frequencies[i]);
    return text + " Hz";
}

std::string summary_of(const Design &design) {
    const mensura_sos_request &made = design.made;
    return fmt::format("{}, {}, {} pole{}, {}{}{}", pass_type_name(made.pass_type), family_name(made.family),
                       made.poles, made.poles == 1 ? "" : "s", design.leading ? "leading sections, " : "",
                       made.passes == 2 ? "zero phase, " : "", edges_text(design));
}

// A setting on which the family does not depend would be lost in silence.
void refuse_unused(const FilterRequest &request, int family) {
    using mensura::iir::depends_on;
    const auto check = [family](const char *option, bool given, mensura::iir::Setting setting) {
        if (given && !depends_on(family, setting)) reject("{} has no effect on {}", option, family_name(family));
    };
    check("--ripple", request.ripple.has_value(), mensura::iir::kRipple);
    check("--stopband", request.stop_band.has_value(), mensura::iir::kStopBand);
    if (!request.by_requirement()) check("--gamma", request.gamma.has_value(), mensura::iir::kGamma);
}

void remark_on_clamps(const ProtoSpec &asked) {
    const ProtoSpec made = mensura::iir::clamped(asked);
    const auto compare = [family = family_name(asked.Family)](const char *option, double wanted, double used) {
        if (wanted != used)
            remark("--{} {} is outside the range of {}: its prototype is made with {}", option, wanted, family, used);
    };
    compare("poles", asked.NumPoles, made.NumPoles);
    compare("ripple", asked.Ripple, made.Ripple);
    compare("stopband", asked.StopBandDb, made.StopBandDb);
    compare("gamma", asked.Gamma, made.Gamma);
}

}  // namespace

Sections sections_of(const IIRCoeffs &c) {
    Sections sections(mensura::iir::sections_to_run(c));
    for (std::size_t k = 0; k < sections.size(); ++k)
        sections[k] = {c.a0[k] * c.b0[k], c.a0[k] * c.b1[k], c.a0[k] * c.b2[k], 1.0, c.a1[k], c.a2[k]};
    return sections;
}

std::string edges_text(const Design &design) {
    constexpr double kHalfPower = -3.0103;  // dB
    const mensura_sos_request &made = design.made;
    if (made.pass_type == ptAllPass) return fmt::format("edge at {:.6g} Hz", made.edge[0]);
    std::vector<double> edges;
    for (const Level &edge : design.achieved.edges) edges.push_back(edge.frequency);
    if (design.leading) edges = design.achieved.half_power;
    if (edges.empty()) return "without a half-power point";
    const double level = std::abs(made.level_db - kHalfPower) < 1e-3 ? -3 : made.level_db;
    return fmt::format("{:.6g} dB at {}", level, joined_frequencies(edges));
}

Design design_for(const FilterRequest &request, double rate) {
    check_request(request);
    check_frequencies(request, rate);
    Design design{
        .rate = rate, .request = request, .leading = {}, .sections = {}, .achieved = {}, .step = {}, .summary = {}};
    if (request.leading_sections) {
        const IIRDesignSpec spec = leading_spec(request, rate);
        design.leading = {spec, CalcIIRFilterCoeff(spec)};
        design.made = counterpart(spec, request, rate);
        design.sections = sections_of(design.leading->cascade);
    } else {
        refuse_unused(request, request.family.value_or(kDefaultFamily));
        design.made = sos_request(request, rate);
        design.sections = designed(design.made);
    }
    design.achieved = measure(design.sections, target_of(design));
    if (design.leading) measure_half_power(design);
    design.summary = summary_of(design);
    return design;
}

void measure_half_power(Design &design) {
    Achieved &achieved = design.achieved;
    if (!achieved.measurable()) return;
    achieved.half_power = half_power_of(design.sections, design.rate, design.made.passes, achieved.reference_db);
}

void measure_step(Design &design) {
    if (!design.achieved.measurable()) return;
    design.step = step_figures(design.sections, design.made.passes, design.gain());
}

void remark_on(const Design &design, const std::string &prefix) {
    if (design.leading) remark_on_clamps(design.leading->spec.Proto);
    for (const std::string &warning : warnings_about(design.achieved)) remark("{}{}", prefix, warning);
}

void refuse_unusable(const Design &design, bool force) {
    const std::vector<std::string> warnings = warnings_about(design.achieved);
    if (force || warnings.empty()) return remark_on(design);
    if (design.leading) remark_on_clamps(design.leading->spec.Proto);
    fail("{}; --force uses it", fmt::join(warnings, "; "));
}

}  // namespace cli
