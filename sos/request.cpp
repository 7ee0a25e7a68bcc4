#include "request.h"

#include "arguments.h"

namespace mensura::sos {

namespace {

int checked_kind(const mensura_sos_request &r) {
    if (r.size != static_cast<int>(sizeof r)) return MENSURA_SOS_SIZE;
    if (r.pass_type < ptLowPass || r.pass_type > ptAllPass) return MENSURA_SOS_TYPE;
    if (iir::find_family(r.family) == nullptr) return MENSURA_SOS_FAMILY;
    if (r.poles < 1 || r.poles > iir::max_poles(r.family)) return MENSURA_SOS_POLES;
    if (r.passes != 1 && r.passes != 2) return MENSURA_SOS_PASSES;
    return 0;
}

int checked_edges(const mensura_sos_request &r) {
    const bool band_type = iir::is_band_type(r.pass_type);
    if (band_type && r.band != MENSURA_SOS_TWO_EDGES && r.band != MENSURA_SOS_CENTRE) return MENSURA_SOS_EDGES;
    if (const int code = check_rate(r.rate); code != 0) return code;
    if (!is_between_zero_and_nyquist(r.edge[0], r.rate)) return MENSURA_SOS_FREQUENCY;
    if (band_type && !is_between_zero_and_nyquist(r.edge[1], r.rate)) return MENSURA_SOS_FREQUENCY;
    if (has_two_edges(r) && r.edge[0] >= r.edge[1]) return MENSURA_SOS_EDGES;
    return 0;
}

// Settings that the family does not depend on are not looked at.
int checked_levels(const mensura_sos_request &r) {
    const bool ripple = iir::depends_on(r.family, iir::kRipple);
    const bool stop = iir::depends_on(r.family, iir::kStopBand);
    if (!lies_inside(kLevelRange, r.level_db)) return MENSURA_SOS_LEVEL;
    if (ripple && !lies_in(kRippleRange, r.ripple_db)) return MENSURA_SOS_RIPPLE;
    if (stop && !lies_in(kStopRange, r.stop_db)) return MENSURA_SOS_STOP_BAND;
    if (ripple && stop && r.stop_db <= r.ripple_db) return MENSURA_SOS_STOP_BAND;
    if (stop && r.level_db < -r.stop_db) return MENSURA_SOS_LEVEL;
    if (iir::depends_on(r.family, iir::kGamma) && !lies_in(kGammaRange, r.gamma)) return MENSURA_SOS_GAMMA;
    if (!lies_in(kGainRange, r.gain_db)) return MENSURA_SOS_GAIN;
    return 0;
}

}  // namespace

int checked(const mensura_sos_request *request) {
    if (request == nullptr) return MENSURA_SOS_NULL;
    if (const int code = checked_kind(*request); code != 0) return code;
    if (const int code = checked_edges(*request); code != 0) return code;
    return checked_levels(*request);
}

}  // namespace mensura::sos
