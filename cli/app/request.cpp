#include "cli/app/request.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <string>

#include "cli/app/diagnostics.h"
#include "cli/app/names.h"
#include "cli/app/quantity.h"
#include "cli/app/sections.h"
#include "iir/default_request.h"
#include "iir/pass_types.h"
#include "iir/proto/limits.h"
#include "sos/limits.h"

namespace cli {

namespace {

using mensura::iir::Family;
using mensura::iir::kDefaultPrototype;
using mensura::iir::kFamilies;
using mensura::iir::kPassTypes;
using mensura::iir::PassType;

double quantity(const std::string &option, std::string_view text, std::span<const Unit> units) {
    std::string error;
    const std::optional<double> value = parse_quantity(text, units, error);
    if (!value) reject_option(option, error);
    return *value;
}

Corner parse_corner(const std::string &option, const std::string &text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos)
        reject_option(option, fmt::format("\"{}\" is not a frequency and a loss, such as 40Hz:1dB", text));
    const std::string_view whole(text);
    return {quantity(option, whole.substr(0, colon), kHertz), quantity(option, whole.substr(colon + 1), kDecibel)};
}

void add_corners(const Command &app, const std::string &option, std::vector<Corner> &corners, const std::string &help) {
    const auto take = [option, &corners](const std::vector<std::string> &texts) {
        for (const std::string &text : texts) corners.push_back(parse_corner(option, text));
    };
    app.add_list(option, take, help).type_name("F:LOSS");
}

void add_edges(const Command &app, FilterRequest &request) {
    add_quantity(app, "--cutoff", request.cutoff, kHertz,
                 "cut-off frequency in Hz: the half-power point (-3.01 dB); of band types the centre");
    add_quantity(app, "--bandwidth", request.bandwidth, kHertz,
                 "bandpass and notch, with --cutoff: the width between the two half-power points in Hz");
    add_quantity(app, "--from", request.from, kHertz, "bandpass and notch: the lower half-power point in Hz");
    add_quantity(app, "--to", request.to, kHertz, "bandpass and notch: the upper half-power point in Hz");
    add_quantity(app, "--at", request.level, kDecibel, "another level at these frequencies, such as --at -0.1dB")
        .type_name("LEVEL");
    add_corners(app, "--pass", request.pass,
                "pass up to, or from, F with a loss of LOSS at most, such as 40Hz:1dB; twice for band types");
    add_corners(
        app, "--stop", request.stop,
        "stop from, or up to, F with a loss of LOSS at least, such as 60Hz:50dB; with --pass it chooses the family "
        "and the poles, or the poles of --family");
}

void add_prototype(const Command &app, FilterRequest &request) {
    add_choice(
        app, "--family", kFamilies, &Family::word, [&request](const Family &family) { request.family = family.code; },
        fmt::format("family of the low-pass prototype: {{}}; default {}", family_name(kDefaultFamily)))
        .type_name("NAME");
    add_count(app, "--poles", request.poles,
              fmt::format("poles of the low-pass prototype, default {}; band types have twice as many",
                          kDefaultPrototype.NumPoles));
    add_quantity(app, "--ripple", request.ripple, kDecibel,
                 fmt::format("chebyshev and elliptic: pass-band ripple in dB, default {}", kDefaultPrototype.Ripple));
    add_quantity(app, "--stopband", request.stop_band, kDecibel,
                 fmt::format("inverse-chebyshev and elliptic: stop-band attenuation in dB, default {}",
                             kDefaultPrototype.StopBandDb));
    add_quantity(app, "--gamma", request.gamma, kPlain,
                 fmt::format("adjustable: shape, -1 (gaussian) to 1 (steep), default {}", kDefaultPrototype.Gamma));
    add_quantity(app, "--gain", request.gain, kDecibel, "gain in the pass band in dB, default 0");
}

// ---- What belongs together -----------------------------------------------------------------------------------------

struct Given {
    const char *option;
    bool given;
};

void refuse_beside(const char *option, std::initializer_list<Given> others) {
    for (const Given &other : others)
        if (other.given) reject("{} and {} exclude each other", option, other.option);
}

void check_requirement(const FilterRequest &r) {
    refuse_beside("--pass and --stop", {{"--cutoff", r.cutoff.has_value()},
                                        {"--bandwidth", r.bandwidth.has_value()},
                                        {"--from", r.from.has_value()},
                                        {"--to", r.to.has_value()},
                                        {"--at", r.level.has_value()},
                                        {"--poles", r.poles.has_value()},
                                        {"--ripple", r.ripple.has_value()},
                                        {"--stopband", r.stop_band.has_value()}});
    const bool band = is_band_type(r.pass_type);
    if (r.pass_type == ptAllPass) reject("--pass and --stop: an allpass has no stop band");
    if (r.pass.size() != (band ? 2 : 1) || r.stop.size() != r.pass.size())
        reject("{} needs {}", pass_type_name(r.pass_type),
               band ? "--pass twice and --stop twice, for the lower and the upper edge"
                    : "--pass once and --stop once, such as --pass 40Hz:1dB --stop 60Hz:50dB");
    for (const Corner &corner : r.pass)
        if (!(corner.loss > 0)) reject("--pass: a loss of {} dB: must lie above 0 dB", corner.loss);
    for (const Corner &corner : r.stop)
        if (!(corner.loss > 0 && corner.loss <= 200))
            reject("--stop: a loss of {} dB: must lie above 0 dB, and be 200 dB at most", corner.loss);
}

void check_leading_sections(const FilterRequest &r) {
    refuse_beside("--leading-sections", {{"--at", r.level.has_value()},
                                         {"--from", r.from.has_value()},
                                         {"--to", r.to.has_value()},
                                         {"--pass", !r.pass.empty()},
                                         {"--stop", !r.stop.empty()}});
    if (!r.cutoff) reject("--leading-sections needs --cutoff: the frequency in Hz, such as --cutoff 40Hz");
}

void check_two_edges(const FilterRequest &r) {
    refuse_beside("--from and --to", {{"--cutoff", r.cutoff.has_value()}, {"--bandwidth", r.bandwidth.has_value()}});
    if (!r.from || !r.to) reject("--from and --to belong together: the lower and the upper edge in Hz");
    if (!(*r.from < *r.to)) reject("--from {} Hz --to {} Hz: the lower edge comes first", *r.from, *r.to);
}

void check_edges(const FilterRequest &r) {
    const bool band = is_band_type(r.pass_type);
    if (r.bandwidth && !band) reject("--bandwidth is for bandpass and notch");
    if ((r.from || r.to) && !band)
        reject("--from and --to are for bandpass and notch; {} takes --cutoff", pass_type_name(r.pass_type));
    if (r.leading_sections) return check_leading_sections(r);
    if (r.by_requirement()) return check_requirement(r);
    if (r.from || r.to) return check_two_edges(r);
    if (r.cutoff && (r.bandwidth || !band)) return;
    if (!band) reject("--cutoff is required: the frequency in Hz, such as --cutoff 40Hz");
    reject("{} needs its edges, --from 8Hz --to 12Hz, or its centre and width, --cutoff 10Hz --bandwidth 4Hz",
           pass_type_name(r.pass_type));
}

void check_settings(const FilterRequest &r) {
    constexpr mensura::sos::Range kRange = mensura::sos::kLevelRange;
    if (r.level && !mensura::sos::lies_inside(kRange, *r.level))
        reject("--at {} dB: must lie below {} and above {} dB", *r.level, kRange.most, kRange.least);
}

void refuse_outside(const char *option, std::optional<double> frequency, double rate) {
    if (!frequency || (*frequency > 0 && *frequency < 0.5 * rate)) return;
    if (std::isinf(rate)) reject("{} of {} Hz: must lie above 0", option, *frequency);
    reject("{} of {} Hz: must lie above 0 and below {} Hz, half the sampling rate", option, *frequency, 0.5 * rate);
}

// ---- As the library takes it ---------------------------------------------------------------------------------------

// The strictest loss of both edges holds for both.
mensura_sos_requirement requirement_of(const FilterRequest &request, double rate) {
    mensura_sos_requirement requirement{};
    requirement.size = sizeof requirement;
    requirement.pass_type = request.pass_type;
    requirement.passes = request.passes();
    requirement.rate = rate;
    requirement.loss_db = std::ranges::min(request.pass, {}, &Corner::loss).loss;
    requirement.attenuation_db = std::ranges::max(request.stop, {}, &Corner::loss).loss;
    for (std::size_t i = 0; i < request.pass.size(); ++i) {
        requirement.pass_edge[i] = request.pass[i].frequency;
        requirement.stop_edge[i] = request.stop[i].frequency;
    }
    if (request.pass.size() == 2) {
        std::ranges::sort(requirement.pass_edge);
        std::ranges::sort(requirement.stop_edge);
    }
    return requirement;
}

[[noreturn]] void reject_requirement(int code, const FilterRequest &request) {
    if (code == MENSURA_SOS_UNREACHABLE)
        reject("--pass and --stop: {}; the edges must lie farther apart, or the stop band lose less",
               request.family ? fmt::format("no number of poles of {} will do", family_name(*request.family))
                              : "no family will do");
    if (code == MENSURA_SOS_EDGES) {
        constexpr std::array kOrders = {
            "it passes what is below the stop edge", "it passes what is above the stop edge",
            "its pass edges lie between its stop edges", "its stop edges lie between its pass edges"};
        reject("--pass and --stop: the edges are in the wrong order for {}: {}", pass_type_name(request.pass_type),
               kOrders[static_cast<std::size_t>(request.pass_type)]);
    }
    if (code == MENSURA_SOS_LEVEL) reject("--pass and --stop: the stop band must lose more than the pass band");
    if (code == MENSURA_SOS_GAMMA) reject("--gamma {}: from -1 to 1", request.gamma.value_or(0));
    reject("--pass and --stop: {}", mensura_sos_message(code));
}

}  // namespace

const char *pass_type_name(int pass_type) { return kPassTypes[static_cast<std::size_t>(pass_type)].word; }
const char *family_name(int family) { return kFamilies[static_cast<std::size_t>(family)].word; }
bool is_band_type(int pass_type) { return mensura::iir::is_band_type(pass_type); }

Option add_pass_type(const Command &app, FilterRequest &request) {
    return add_choice(
        app, "TYPE", kPassTypes, &PassType::word, [&request](const PassType &type) { request.pass_type = type.code; },
        "{}");
}

void add_filter_options(const Command &app, FilterRequest &request) {
    add_edges(app, request);
    add_rate(app, request.rate, "sampling rate in Hz");
    add_prototype(app, request);
    app.add_flag("--zero-phase", request.zero_phase,
                 "runs forwards and backwards, without delay; all levels are those of both passes together");
    app.add_flag("--leading-sections", request.leading_sections,
                 "the sections that initTIIRFilter and CalcIIRFilterCoeff run, whose half-power point is not the "
                 "cut-off; --bandwidth is by default a twentieth of the sampling rate");
    app.add_flag("--force", request.force, "use a filter that is unstable or does not filter");
}

void check_request(const FilterRequest &request) {
    check_edges(request);
    check_settings(request);
    check_frequencies(request, HUGE_VAL);
}

void check_frequencies(const FilterRequest &request, double rate) {
    refuse_outside("--cutoff", request.cutoff, rate);
    refuse_outside("--bandwidth", request.bandwidth, rate);
    refuse_outside("--from", request.from, rate);
    refuse_outside("--to", request.to, rate);
    for (const Corner &corner : request.pass) refuse_outside("--pass", corner.frequency, rate);
    for (const Corner &corner : request.stop) refuse_outside("--stop", corner.frequency, rate);
}

mensura_sos_request sos_request(const FilterRequest &request, double rate) {
    mensura_sos_request result;
    checked(mensura_sos_default_request(&result, sizeof result));
    if (request.by_requirement()) {
        const mensura_sos_requirement requirement = requirement_of(request, rate);
        const int code = mensura_sos_order(&requirement, request.family.value_or(-1), request.gamma.value_or(0),
                                           &result, sizeof result);
        if (code < 0) reject_requirement(code, request);
        result.gain_db = request.gain.value_or(result.gain_db);
        return result;
    }
    result.pass_type = request.pass_type;
    result.family = request.family.value_or(kDefaultFamily);
    result.poles = request.poles.value_or(result.poles);
    result.passes = request.passes();
    result.band = request.from ? MENSURA_SOS_TWO_EDGES : MENSURA_SOS_CENTRE;
    result.rate = rate;
    result.edge[0] = request.from ? *request.from : *request.cutoff;
    result.edge[1] = request.from ? *request.to : request.bandwidth.value_or(0);
    result.level_db = request.level.value_or(result.level_db);
    result.ripple_db = request.ripple.value_or(result.ripple_db);
    result.stop_db = request.stop_band.value_or(result.stop_db);
    result.gamma = request.gamma.value_or(result.gamma);
    result.gain_db = request.gain.value_or(result.gain_db);
    return result;
}

IIRDesignSpec leading_spec(const FilterRequest &request, double rate) {
    IIRDesignSpec spec = mensura::iir::default_request(request.pass_type, 2 * *request.cutoff / rate);
    if (request.bandwidth) spec.NormBandwidth = 2 * *request.bandwidth / rate;
    spec.GainDb = request.gain.value_or(spec.GainDb);
    spec.Proto.Family = request.family.value_or(spec.Proto.Family);
    spec.Proto.NumPoles = request.poles.value_or(spec.Proto.NumPoles);
    spec.Proto.Ripple = request.ripple.value_or(spec.Proto.Ripple);
    spec.Proto.StopBandDb = request.stop_band.value_or(spec.Proto.StopBandDb);
    spec.Proto.Gamma = request.gamma.value_or(spec.Proto.Gamma);
    return spec;
}

int least_order(const FilterRequest &request, double rate, int family) {
    const mensura_sos_requirement requirement = requirement_of(request, rate);
    const int code =
        mensura_sos_order(&requirement, family, request.gamma.value_or(0), nullptr, sizeof(mensura_sos_request));
    if (code == MENSURA_SOS_UNREACHABLE) return 0;
    if (code < 0) reject_requirement(code, request);
    return code;
}

void reject_request(int code, const mensura_sos_request &request) {
    using mensura::sos::kGainRange, mensura::sos::kRippleRange, mensura::sos::kStopRange;
    const char *const family = family_name(request.family);
    switch (code) {
        case MENSURA_SOS_POLES:
            reject("--poles {}: {} has 1 to {}", request.poles, family, mensura::iir::max_poles(request.family));
        case MENSURA_SOS_LEVEL:
            if (!mensura::iir::depends_on(request.family, mensura::iir::kStopBand)) break;
            reject("--at {} dB: not below -{} dB, the stop band of {}", request.level_db, request.stop_db, family);
        case MENSURA_SOS_RIPPLE:
            reject("--ripple {} dB: from {} to {} dB", request.ripple_db, kRippleRange.least, kRippleRange.most);
        case MENSURA_SOS_STOP_BAND:
            reject("--stopband {} dB: from {} to {} dB, and above the ripple", request.stop_db, kStopRange.least,
                   kStopRange.most);
        case MENSURA_SOS_GAMMA: reject("--gamma {}: from -1 to 1", request.gamma);
        case MENSURA_SOS_GAIN:
            reject("--gain {} dB: from {} to {} dB", request.gain_db, kGainRange.least, kGainRange.most);
        case MENSURA_SOS_EDGES:
        case MENSURA_SOS_FREQUENCY:
            reject(
                "--cutoff {} Hz --bandwidth {} Hz: an edge does not lie above 0 and below {} Hz, half the sampling "
                "rate",
                request.edge[0], request.edge[1], 0.5 * request.rate);
        default: break;
    }
    reject("this {} {} cannot be made: {}", family, pass_type_name(request.pass_type), mensura_sos_message(code));
}

}  // namespace cli
