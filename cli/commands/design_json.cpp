// The JSON that mensura design --json prints.
#include <mensura/iir.h>

#include <nlohmann/json.hpp>
#include <vector>

#include "cli/app/request.h"
#include "cli/commands/design_output.h"
#include "iir/direct_form.h"
#include "iir/proto/limits.h"

namespace cli {

namespace {

using nlohmann::ordered_json;

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

}  // namespace

void print_json(Output &out, const Design &design) {
    const Achieved &a = design.achieved;
    const ordered_json document{{"asked", asked_json(design)},
                                {"designed", prototype_json(mensura::iir::clamped(design.spec.Proto))},
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

}  // namespace cli
