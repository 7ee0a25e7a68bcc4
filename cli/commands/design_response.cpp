// The response of designs, as mensura design prints and draws it.
#include <fmt/format.h>
#include <mensura/iir.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <string>
#include <vector>

#include "cli/app/request.h"
#include "cli/commands/design_output.h"
#include "cli/data/csv.h"
#include "iir/direct_form.h"
#include "sos/cascade.h"
#include "sos/measure.h"

namespace cli {

namespace {

namespace sos = mensura::sos;

constexpr double kDegrees = 180 / std::numbers::pi;  // in a radian

// From a hundredth of the cut-off up; gains below -100 dB are drawn at -100 dB.
void add_response(const Design &design, Curve &gain, Curve &phase) {
    const sos::RecordSections sections(design.cascade);
    constexpr int kPoints = 1000;
    constexpr double kDepth = 100;  // dB
    const double nyquist = 0.5 * design.rate, lowest = 0.01 * design.cutoff;
    for (int i = 0; i <= kPoints; ++i) {
        const double f = lowest * std::pow(nyquist / lowest, static_cast<double>(i) / kPoints);
        const std::complex<double> h = sos::response(sections.cascade(), f, design.rate);
        const double degrees = std::abs(h) < 1e-15 ? std::nan("") : std::arg(h) * kDegrees;
        if (i > 0 && std::abs(degrees - phase.y.back()) > 180) {  // no line where the phase jumps by 360 degrees
            phase.x.push_back(f);
            phase.y.push_back(std::nan(""));
        }
        gain.x.push_back(f);
        const double shown = std::max(sos::decibels(std::abs(h)), design.achieved.asked_db - kDepth);
        gain.y.push_back(std::round(1e9 * shown) / 1e9);  // so that an all-pass does not show its rounding errors
        phase.x.push_back(f);
        phase.y.push_back(degrees);
    }
}

}  // namespace

void print_response(Output &out, const Design &design, int points) {
    std::vector<double> re(static_cast<std::size_t>(points)), im(re.size());
    IIRFreqResponse(design.cascade, static_cast<int>(mensura::iir::sections_to_run(design.cascade)), re.data(),
                    im.data(), points);
    out.write("frequency_Hz,gain_dB,phase_deg\n");
    for (std::size_t i = 0; i < re.size(); ++i) {
        const double frequency = static_cast<double>(i) * (0.5 * design.rate) / points;
        write_row({frequency, sos::decibels(std::hypot(re[i], im[i])), std::atan2(im[i], re[i]) * kDegrees}, out);
    }
}

Figure figure_of(const std::vector<Design> &designs) {
    const Design &first = designs.front();
    const auto panel = [&first](const char *label) {
        return Panel{.x_label = "frequency [Hz]",
                     .y_label = label,
                     .marks = {first.cutoff},
                     .logarithmic = true,
                     .key_below = true,
                     .x_lowest = 0.01 * first.cutoff,
                     .x_highest = 0.5 * first.rate};
    };
    Figure figure{.panels = {panel("gain [dB]")}};
    if (designs.size() == 1) figure.panels.push_back(panel("phase [degrees]"));
    for (const Design &design : designs) {
        const std::string name = family_name(design.spec.Proto.Family);
        Curve gain{.title = name}, phase{.title = name};
        add_response(design, gain, phase);
        figure.panels[0].curves.push_back(gain);
        if (designs.size() == 1) figure.panels[1].curves.push_back(phase);
    }
    figure.title =
        fmt::format("{}{}, {} poles, cut-off {:.6g} Hz, sampled at {:.6g} Hz",
                    designs.size() == 1 ? family_name(first.spec.Proto.Family) + std::string(" ") : "",
                    pass_type_name(first.spec.PassType), first.spec.Proto.NumPoles, first.cutoff, first.rate);
    figure.panels[0].title = designs.size() == 1 ? "" : figure.title;
    return figure;
}

}  // namespace cli
