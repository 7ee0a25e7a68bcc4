// The pictures of mensura design.
#include <mensura/sos.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "cli/commands/design_output.h"

namespace cli {

namespace {

constexpr double kDegrees = 180 / std::numbers::pi;  // in a radian

// From a hundredth of the lowest edge up; gains below -100 dB are drawn at -100 dB.
double lowest_frequency(const Design &design) { return 0.01 * design.made.edge[0]; }

void add_response(const Design &design, Curve &gain, Curve &phase) {
    constexpr int kPoints = 1000;
    constexpr double kDepth = 100;  // dB
    const double nyquist = 0.5 * design.rate, lowest = lowest_frequency(design);
    for (int i = 0; i <= kPoints; ++i) {
        const double f = std::min(lowest * std::pow(nyquist / lowest, static_cast<double>(i) / kPoints), nyquist);
        double re = 0, im = 0;
        mensura_sos_response(design.sos(), design.count(), design.rate, &f, &re, &im, 1);
        const double magnitude = std::hypot(re, im);
        const double degrees = magnitude < 1e-15 ? std::nan("") : std::atan2(im, re) * kDegrees;
        if (i > 0 && std::abs(degrees - phase.y.back()) > 180) {  // no line where the phase jumps by 360 degrees
            phase.x.push_back(f);
            phase.y.push_back(std::nan(""));
        }
        gain.x.push_back(f);
        const double level = design.made.passes * 20 * std::log10(magnitude);
        const double shown = std::max(level, design.made.gain_db - kDepth);
        gain.y.push_back(std::round(1e9 * shown) / 1e9);  // so that an all-pass does not show its rounding errors
        phase.x.push_back(f);
        phase.y.push_back(design.made.passes == 2 ? 0 : degrees);
    }
}

}  // namespace

Figure response_figure(const std::vector<Design> &designs) {
    const Design &first = designs.front();
    std::vector<double> marks;
    for (const Level &edge : first.achieved.edges) marks.push_back(edge.frequency);
    const auto panel = [&](const char *label) {
        return Panel{.x_label = "frequency [Hz]",
                     .y_label = label,
                     .marks = marks,
                     .logarithmic = true,
                     .key_below = true,
                     .x_lowest = lowest_frequency(first),
                     .x_highest = 0.5 * first.rate};
    };
    Figure figure{.title = first.summary, .panels = {panel("gain [dB]")}};
    if (designs.size() == 1) figure.panels.push_back(panel("phase [degrees]"));
    for (const Design &design : designs) {
        const std::string name = family_name(design.made.family);
        Curve gain{.title = name}, phase{.title = name};
        add_response(design, gain, phase);
        figure.panels[0].curves.push_back(gain);
        if (designs.size() == 1) figure.panels[1].curves.push_back(phase);
    }
    return figure;
}

}  // namespace cli
