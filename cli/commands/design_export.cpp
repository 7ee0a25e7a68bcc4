// Sections for other programs: CSV and C.
#include <fmt/format.h>

#include "cli/commands/design_output.h"
#include "cli/table/csv.h"

namespace cli {

namespace {

constexpr const char *kHeader = R"(/* {summary}
 * Sampled at {rate} Hz.  Made by mensura {version}.
 *
 *     double state[FILTER_SECTIONS][4] = {{{{0}}}};
 *     for (size_t i = 0; i < n; ++i) y[i] = filter(state, x[i]);
 *
 * {passes}
 * A second filter in the same C file needs other names: replace filter( and FILTER_ in its header.
 */
#ifndef FILTER_H
#define FILTER_H

enum {{ FILTER_SECTIONS = {count} }};

/* The next sample of the output.
 * A section's state is its input one and two samples ago and its output one and two samples ago; all zero is rest.
 * The result has the bits of mensura_sos_filter if the compiler does not fuse products and sums: -ffp-contract=off. */
static inline double filter(double state[FILTER_SECTIONS][4], double x) {{
    static const double sos[FILTER_SECTIONS][5] = {{ /* b0, b1, b2, a1, a2 */
{rows}    }};
    for (int k = 0; k < FILTER_SECTIONS; ++k) {{
        const double *const c = sos[k];
        double *const s = state[k];
        const double y = c[0] * x + c[1] * s[0] + c[2] * s[1] - c[3] * s[2] - c[4] * s[3];
        s[1] = s[0];
        s[0] = x;
        s[3] = s[2];
        s[2] = y;
        x = y;
    }}
    return x;
}}

#endif
)";

}  // namespace

void export_sections(Output &out, const Design &design) {
    for (const Section &section : design.sections) write_row(section, out);
}

void export_c(Output &out, const Design &design) {
    std::string rows;
    for (const auto &[b0, b1, b2, a0, a1, a2] : design.sections)
        rows += fmt::format("        {{{}, {}, {}, {}, {}}},\n", b0, b1, b2, a1, a2);
    const char *const passes = design.made.passes == 2
                                   ? "The levels are those of two passes: run it over the record, and backwards."
                                   : "Whole records and pieces of them give the same output.";
    out.write(fmt::format(kHeader, fmt::arg("summary", design.summary), fmt::arg("rate", design.rate),
                          fmt::arg("version", MENSURA_CLI_VERSION), fmt::arg("passes", passes),
                          fmt::arg("count", design.count()), fmt::arg("rows", rows)));
}

}  // namespace cli
