// The least order that meets a requirement: each order is designed and measured.
#include <mensura/sos.h>

#include <algorithm>
#include <array>
#include <limits>
#include <span>

#include "arguments.h"
#include "request.h"

namespace mensura::sos {

namespace {

// Sections of doubles may miss a requirement by a thousandth of the loss, 0.001 dB at most: those of edges far below the
// rate have levels that are off by so much.
constexpr double kRounding = 1e-3;
constexpr int kAnyFamily = -1;

// ---- Requirements --------------------------------------------------------------------------------------------------

bool are_ascending(std::span<const double> f) {
    return std::ranges::adjacent_find(f, std::ranges::greater_equal{}) == f.end();
}

bool edges_in_order(const mensura_sos_requirement &r) {
    const double *const pass = r.pass_edge;
    const double *const stop = r.stop_edge;
    switch (r.pass_type) {
        case ptLowPass: return pass[0] < stop[0];
        case ptHighPass: return stop[0] < pass[0];
        case ptBandPass: return are_ascending(std::array{stop[0], pass[0], pass[1], stop[1]});
        default: return are_ascending(std::array{pass[0], stop[0], stop[1], pass[1]});
    }
}

int checked_edges(const mensura_sos_requirement &r) {
    if (const int code = check_rate(r.rate); code != 0) return code;
    const std::size_t count = iir::is_band_type(r.pass_type) ? 2 : 1;
    const auto is_frequency = [&r](double f) { return is_between_zero_and_nyquist(f, r.rate); };
    if (!std::ranges::all_of(std::span(r.pass_edge).first(count), is_frequency)) return MENSURA_SOS_FREQUENCY;
    if (!std::ranges::all_of(std::span(r.stop_edge).first(count), is_frequency)) return MENSURA_SOS_FREQUENCY;
    return edges_in_order(r) ? 0 : MENSURA_SOS_EDGES;
}

int checked(const mensura_sos_requirement &r) {
    if (r.size != static_cast<int>(sizeof r) || r.reserved != 0) return MENSURA_SOS_SIZE;
    if (r.pass_type < ptLowPass || r.pass_type >= ptAllPass) return MENSURA_SOS_TYPE;
    if (r.passes != 1 && r.passes != 2) return MENSURA_SOS_PASSES;
    if (const int code = checked_edges(r); code != 0) return code;
    const bool levels = r.loss_db > 0 && r.loss_db < r.attenuation_db && r.attenuation_db <= kStopRange.most;
    return levels ? 0 : MENSURA_SOS_LEVEL;
}

// ---- Judging a filter ----------------------------------------------------------------------------------------------

struct Band {
    double from, to;
};

struct Bands {
    std::array<Band, 2> pass, stop;  // a single band stands there twice
};

Bands bands_of(const mensura_sos_requirement &r) {
    const double *const pass = r.pass_edge;
    const double *const stop = r.stop_edge;
    const double nyquist = 0.5 * r.rate;
    const auto outside = [nyquist](const double *edge) {
        return std::array<Band, 2>{{{0, edge[0]}, {edge[1], nyquist}}};
    };
    const auto single = [](double from, double to) { return std::array<Band, 2>{{{from, to}, {from, to}}}; };
    switch (r.pass_type) {
        case ptLowPass: return {single(0, pass[0]), single(stop[0], nyquist)};
        case ptHighPass: return {single(pass[0], nyquist), single(0, stop[0])};
        case ptBandPass: return {single(pass[0], pass[1]), outside(stop)};
        default: return {outside(pass), single(stop[0], stop[1])};
    }
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Extremes {
    double lowest = kInfinity, highest = -kInfinity;  // of no band
};

// In dB of one pass.  What cannot be measured is as bad as can be.
Extremes extremes_of(std::span<const Band, 2> bands, const double *sos, int sections, double rate) {
    Extremes all;
    const bool twice = bands[0].from == bands[1].from;
    for (const Band &band : bands.first(twice ? 1 : 2)) {
        Extremes one;
        if (mensura_sos_extremes(sos, sections, rate, band.from, band.to, &one.lowest, &one.highest) != 0)
            return {-kInfinity, kInfinity};
        all = {std::min(all.lowest, one.lowest), std::max(all.highest, one.highest)};
    }
    return all;
}

bool meets(const mensura_sos_requirement &r, const double *sos, int sections) {
    const Bands bands = bands_of(r);
    const double rounding = kRounding * std::min(r.loss_db, 1.0);
    const auto is_stopped = [&](const Extremes &stop, double peak) {
        return r.passes * (peak - stop.highest) >= r.attenuation_db - rounding;
    };
    // First without a search: a pass band that meets the requirement holds the gain of 0 dB at the reference frequency,
    // so it rises above that by no more than the loss.
    const double highest_peak = (r.loss_db + rounding) / r.passes;
    const double first = r.stop_edge[0];
    const double last = r.stop_edge[iir::is_band_type(r.pass_type) ? 1 : 0];
    const std::array<Band, 2> edges = {{{first, first}, {last, last}}};
    if (!is_stopped(extremes_of(edges, sos, sections, r.rate), highest_peak)) return false;
    const Extremes stop = extremes_of(bands.stop, sos, sections, r.rate);
    if (!is_stopped(stop, highest_peak)) return false;
    const Extremes pass = extremes_of(bands.pass, sos, sections, r.rate);
    return r.passes * (pass.highest - pass.lowest) <= r.loss_db + rounding && is_stopped(stop, pass.highest);
}

// ---- Searching -----------------------------------------------------------------------------------------------------

mensura_sos_request request_for(const mensura_sos_requirement &r, int family, double gamma) {
    mensura_sos_request request;
    mensura_sos_default_request(&request, sizeof request);
    request.pass_type = r.pass_type;
    request.family = family;
    request.passes = r.passes;
    request.rate = r.rate;
    request.edge[0] = r.pass_edge[0];
    request.edge[1] = iir::is_band_type(r.pass_type) ? r.pass_edge[1] : 0;
    request.level_db = -r.loss_db;
    request.ripple_db = std::clamp(r.loss_db, kRippleRange.least, kRippleRange.most);
    request.stop_db = std::clamp(r.attenuation_db, kStopRange.least, kStopRange.most);
    request.gamma = gamma;
    return request;
}

// Sets the poles of a request to the least that will do, at most `most` of them; false if there is no such order.
bool find_order(const mensura_sos_requirement &r, int most, mensura_sos_request &request) {
    std::array<double, std::size_t{6} * MENSURA_SOS_MAX_SECTIONS> sos;
    for (request.poles = 1; request.poles <= std::min(most, iir::max_poles(request.family)); ++request.poles) {
        const int sections = mensura_sos_design(&request, sos.data(), MENSURA_SOS_MAX_SECTIONS);
        if (sections > 0 && meets(r, sos.data(), sections)) return true;
    }
    return false;
}

}  // namespace

}  // namespace mensura::sos

using namespace mensura::sos;
namespace iir = mensura::iir;

int mensura_sos_order(const mensura_sos_requirement *requirement, int family, double gamma,
                      mensura_sos_request *request, int size) {
    if (requirement == nullptr) return MENSURA_SOS_NULL;
    if (request != nullptr && size != static_cast<int>(sizeof *request)) return MENSURA_SOS_SIZE;
    if (const int code = checked(*requirement); code != 0) return code;
    if (family != kAnyFamily && iir::find_family(family) == nullptr) return MENSURA_SOS_FAMILY;
    const bool adjustable = family == kAnyFamily || iir::depends_on(family, iir::kGamma);
    if (adjustable && !lies_in(kGammaRange, gamma)) return MENSURA_SOS_GAMMA;

    int least = MENSURA_SOS_UNREACHABLE;
    int most = iir::kMaxPoles;
    for (const iir::Family &candidate : iir::kFamilies) {
        if (family != kAnyFamily && family != candidate.code) continue;
        mensura_sos_request found = request_for(*requirement, candidate.code, adjustable ? gamma : 0);
        if (!find_order(*requirement, most, found)) continue;
        least = found.poles;
        most = least - 1;
        if (request != nullptr) *request = found;
    }
    return least;
}
