// The JSON that mensura design --json prints.
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "cli/app/request.h"
#include "cli/commands/design_output.h"
#include "cli/data/json.h"

namespace cli {

namespace {

using nlohmann::ordered_json;

template <class Value>
void add(ordered_json &json, const char *name, const std::optional<Value> &value) {
    if (value) json[name] = *value;
}

ordered_json corners_json(const std::vector<Corner> &corners) {
    ordered_json list = ordered_json::array();
    for (const Corner &corner : corners) list.push_back({{"at_Hz", corner.frequency}, {"loss_dB", corner.loss}});
    return list;
}

// What was given on the command line, and no more.
ordered_json asked_json(const Design &design) {
    const FilterRequest &request = design.request;
    ordered_json asked{{"type", pass_type_name(request.pass_type)}, {"rate_Hz", design.rate}};
    add(asked, "cutoff_Hz", request.cutoff);
    add(asked, "bandwidth_Hz", request.bandwidth);
    add(asked, "from_Hz", request.from);
    add(asked, "to_Hz", request.to);
    add(asked, "at_dB", request.level);
    if (request.by_requirement()) asked["pass"] = corners_json(request.pass);
    if (request.by_requirement()) asked["stop"] = corners_json(request.stop);
    if (request.family) asked["family"] = family_name(*request.family);
    add(asked, "poles", request.poles);
    add(asked, "ripple_dB", request.ripple);
    add(asked, "stopband_dB", request.stop_band);
    add(asked, "gamma", request.gamma);
    add(asked, "gain_dB", request.gain);
    asked["zero_phase"] = request.zero_phase;
    asked["leading_sections"] = request.leading_sections;
    return asked;
}

ordered_json designed_json(const mensura_sos_request &made) {
    return {{"type", pass_type_name(made.pass_type)},
            {"family", family_name(made.family)},
            {"poles", made.poles},
            {"passes", made.passes},
            {"level_dB", made.level_db},
            {"ripple_dB", made.ripple_db},
            {"stopband_dB", made.stop_db},
            {"gamma", made.gamma},
            {"gain_dB", made.gain_db}};
}

ordered_json sections_json(const Sections &sections) {
    ordered_json list = ordered_json::array();
    for (const auto &[b0, b1, b2, a0, a1, a2] : sections)
        list.push_back({{"b0", b0}, {"b1", b1}, {"b2", b2}, {"a0", a0}, {"a1", a1}, {"a2", a2}});
    return list;
}

ordered_json orders_json(const FamilyOrders &orders) {
    ordered_json list = ordered_json::array();
    for (const auto &[family, poles] : orders)
        list.push_back({{"family", family_name(family)}, {"poles", poles > 0 ? ordered_json(poles) : nullptr}});
    return list;
}

ordered_json bands_json(const std::vector<Band> &bands) {
    ordered_json list = ordered_json::array();
    for (const Band &band : bands)
        list.push_back(
            {{"from_Hz", band.from}, {"to_Hz", band.to}, {"lowest_dB", band.lowest}, {"highest_dB", band.highest}});
    return list;
}

ordered_json achieved_json(const Design &design) {
    const Achieved &a = design.achieved;
    ordered_json edges = ordered_json::array();
    for (const Level &edge : a.edges) edges.push_back({{"at_Hz", edge.frequency}, {"level_dB", edge.db}});
    return {{"gain_dB", a.gain_db},
            {"reference_dB", a.reference_db},
            {"edges", edges},
            {"half_power_Hz", a.half_power},
            {"pass_band", bands_json(a.pass)},
            {"stop_band", bands_json(a.stop)},
            {"step_overshoot", design.step ? ordered_json(design.step->overshoot) : nullptr},
            {"step_settling_s", design.step ? ordered_json(design.step->settling / design.rate) : nullptr},
            {"group_delay_s", a.delay},
            {"largest_pole_radius", a.pole_radius}};
}

}  // namespace

void print_json(Output &out, const Design &design, const FamilyOrders &orders) {
    ordered_json document{{"summary", design.summary},
                          {"asked", asked_json(design)},
                          {"designed", designed_json(design.made)},
                          {"sections", sections_json(design.sections)},
                          {"achieved", achieved_json(design)},
                          {"warnings", warnings_about(design.achieved)}};
    if (!orders.empty()) document["families"] = orders_json(orders);
    write_json(std::move(document), out);
}

}  // namespace cli
