// Filters designed as requested: checked, prototype, transformed, rounded, verified.
#include <mensura/sos.h>

#include <array>
#include <cmath>
#include <span>

#include "proto/prototype.h"
#include "request.h"
#include "sections.h"
#include "transform.h"
#include "tuning.h"

namespace mensura::sos {

namespace {

// Of a denominator, relatively: 0.005 dB, because two neighbours add up.  A resonance that is shifted further shifts the
// peak to which levels relate.
constexpr Real kMostShift = 5.8e-4L;

// A level in dB as a ratio of amplitudes, for one of the passes.
Real amplitude(double db, int passes) { return std::pow(Real{10}, static_cast<Real>(db) / (20 * passes)); }

// False where the rounding to doubles has spoilt the filter.
bool make_sections(const mensura_sos_request &request, const Prototype &prototype, Real level,
                   std::span<Section> sections) {
    const Edges edges = prewarped_edges(request);
    const IdealCascade ideal = transformed(prototype, request.pass_type, edges);
    const Real gain = amplitude(request.gain_db, request.passes);
    if (request.pass_type == ptAllPass) {
        round_all_pass(ideal, gain, sections);
        return are_stable(sections) && largest_shift(ideal, sections) <= kMostShift;
    }
    const Target target{edges, gain * level * prototype.peak, reference_frequency(request.pass_type, edges), gain};
    round_sections(ideal, target.reference, target.gain, sections);
    return largest_shift(ideal, sections) <= kMostShift && settle_edges(ideal, target, sections) &&
           are_stable(sections);
}

int sections_of(const mensura_sos_request &request) {
    return iir::is_band_type(request.pass_type) ? request.poles : (request.poles + 1) / 2;
}

}  // namespace

}  // namespace mensura::sos

using namespace mensura::sos;

int mensura_sos_default_request(mensura_sos_request *request, int size) {
    if (request == nullptr) return MENSURA_SOS_NULL;
    if (size != static_cast<int>(sizeof *request)) return MENSURA_SOS_SIZE;
    *request = {.size = size,
                .pass_type = ptLowPass,
                .family = pfButterworth,
                .poles = 6,
                .passes = 1,
                .band = MENSURA_SOS_TWO_EDGES,
                .rate = 0,
                .edge = {0, 0},
                .level_db = -3.0102999566398120,  // half the power: 10 log10(1/2)
                .ripple_db = 0.1,
                .stop_db = 60,
                .gamma = 0,
                .gain_db = 0};
    return 0;
}

int mensura_sos_design(const mensura_sos_request *request, double *sos, int capacity) {
    if (sos == nullptr) return MENSURA_SOS_NULL;
    if (const int code = checked(request); code != 0) return code;
    const int count = sections_of(*request);
    if (capacity < count) return MENSURA_SOS_CAPACITY;
    const Real level = amplitude(request->level_db, request->passes);
    Prototype prototype;
    if (level >= 1) return MENSURA_SOS_LEVEL;  // rounded: a level of less than 1e-18 dB
    if (!make_prototype(*request, level, prototype)) return MENSURA_SOS_PRECISION;
    std::array<Section, MENSURA_SOS_MAX_SECTIONS> sections;
    const auto used = std::span(sections).first(static_cast<std::size_t>(count));
    if (!make_sections(*request, prototype, level, used)) return MENSURA_SOS_PRECISION;
    for (const Section &s : used)
        for (const double coefficient : {s.b0, s.b1, s.b2, s.a0, s.a1, s.a2}) *sos++ = coefficient;
    return count;
}
