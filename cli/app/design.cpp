#include "cli/app/design.h"

#include "cli/app/diagnostics.h"
#include "iir/proto/limits.h"

namespace cli {

namespace {

void remark_on_clamps(const ProtoSpec &asked) {
    const ProtoSpec designed = mensura::iir::clamped(asked);
    const auto compare = [family = family_name(asked.Family)](const char *option, double wanted, double used) {
        if (wanted != used)
            remark("--{} {} is outside the range of {}: its prototype is made with {}", option, wanted, family, used);
    };
    compare("poles", asked.NumPoles, designed.NumPoles);
    compare("ripple", asked.Ripple, designed.Ripple);
    compare("stopband", asked.StopBandDb, designed.StopBandDb);
    compare("gamma", asked.Gamma, designed.Gamma);
}

}  // namespace

Design design_for(const FilterRequest &request, double rate) {
    const IIRDesignSpec spec = design_spec(request, rate);
    const IIRCoeffs cascade = CalcIIRFilterCoeff(spec);
    return {.rate = rate,
            .cutoff = *request.cutoff,
            .bandwidth = bandwidth_of(request, rate),
            .spec = spec,
            .cascade = cascade,
            .achieved = analyse(cascade, spec, rate)};
}

void remark_on(const Design &design, const std::string &prefix) {
    remark_on_clamps(design.spec.Proto);
    for (const std::string &warning : warnings_about(design.achieved)) remark("{}{}", prefix, warning);
}

}  // namespace cli
