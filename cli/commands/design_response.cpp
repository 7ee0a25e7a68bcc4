// What designs do to sines, steps and impulses, as mensura design prints it.
#include <mensura/sos.h>

#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

#include "cli/app/diagnostics.h"
#include "cli/commands/design_output.h"
#include "cli/table/csv.h"

namespace cli {

namespace {

constexpr double kDegrees = 180 / std::numbers::pi;  // in a radian

}  // namespace

void print_response(Output &out, const Design &design, int points) {
    const bool both = design.made.passes == 2;
    out.write("frequency_Hz,gain_dB,phase_deg,group_delay_s\n");
    for (int i = 0; i < points; ++i) {
        const double frequency = static_cast<double>(i) * (0.5 * design.rate) / points;
        double re = 0, im = 0, delay = 0;
        mensura_sos_response(design.sos(), design.count(), design.rate, &frequency, &re, &im, 1);
        mensura_sos_group_delay(design.sos(), design.count(), design.rate, &frequency, &delay, 1);
        const double gain = 20 * std::log10(std::hypot(re, im));
        if (both)
            write_row({frequency, 2 * gain, 0, 0}, out);
        else
            write_row({frequency, gain, std::atan2(im, re) * kDegrees, delay / design.rate}, out);
    }
}

void print_time_response(Output &out, const Design &design, Input input, int samples) {
    const auto response =
        time_response(design.sections, design.made.passes, design.gain(), input, static_cast<std::size_t>(samples));
    if (!response) fail("the filter does not come to rest");
    out.write("time_s,value\n");
    for (std::size_t i = 0; i < response->y.size(); ++i)
        write_row({static_cast<double>(response->first + static_cast<std::ptrdiff_t>(i)) / design.rate, response->y[i]},
                  out);
}

}  // namespace cli
