// mensura design: a filter as requested, as designed, and what it achieves.
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/app/commands.h"
#include "cli/app/design.h"
#include "cli/app/diagnostics.h"
#include "cli/app/options.h"
#include "cli/app/quantity.h"
#include "cli/app/request.h"
#include "cli/commands/design_output.h"
#include "cli/files/output.h"
#include "cli/plot/draw.h"
#include "iir/proto/limits.h"

namespace cli {

namespace {

constexpr const char *kExamples =
    "  mensura design lowpass --cutoff 40Hz --rate 360Hz\n"
    "  mensura design bandpass --cutoff 1kHz --bandwidth 100Hz --rate 8kHz --family papoulis --poles 4 --json\n"
    "  mensura design lowpass --cutoff 40Hz --rate 360Hz --plot=response.svg\n"
    "  mensura design lowpass --cutoff 40Hz --rate 360Hz --all-families --plot=families.svg\n"
    "  mensura design highpass --cutoff 0.5Hz --rate 360Hz --response 1000 > response.csv\n";

constexpr int kMostFrequencies = 10'000'000;

struct Options {
    FilterRequest request;
    bool json = false, all_families = false;
    std::optional<int> response;
    std::string output;
    PlotOptions plot;
};

Design design_at_rate(const FilterRequest &request) {
    if (!request.rate) reject("--rate is required: the sampling rate in Hz, such as --rate 360Hz");
    return design_for(request, *request.rate);
}

std::vector<Design> design_families(FilterRequest request) {
    std::vector<Design> designs;
    for (const mensura::iir::Family &family : mensura::iir::kFamilies) {
        request.prototype.Family = family.code;
        designs.push_back(design_at_rate(request));
    }
    return designs;
}

void print(Output &out, const Options &options, const std::vector<Design> &designs) {
    if (options.all_families)
        print_families(out, designs);
    else if (options.json)
        print_json(out, designs.front());
    else if (options.response)
        print_response(out, designs.front(), *options.response);
    else
        print_text(out, designs.front());
}

void run(const Options &options) {
    if (options.response && (*options.response < 1 || *options.response > kMostFrequencies))
        reject("--response {}: from 1 to {} frequencies are possible", *options.response, kMostFrequencies);
    const std::vector<Design> designs =
        options.all_families ? design_families(options.request) : std::vector{design_at_rate(options.request)};
    for (const Design &design : designs)
        remark_on(design, options.all_families ? fmt::format("{}: ", family_name(design.spec.Proto.Family)) : "");
    Output out(data_file(options.plot, options.output));
    print(out, options, designs);
    out.commit();
    if (options.plot.wanted()) draw(figure_of(designs), options.plot);
}

}  // namespace

void add_design(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app = program.add_command("design", "design a filter and measure what it achieves", kExamples);
    add_filter_request(app, options->request);
    app.add_flag("--json", options->json,
                 "print everything as JSON; null stands for minus infinity or for a value that is not defined");
    add_count(app, "--response", options->response,
              "print the response at N frequencies from DC up: Hz, dB, degrees (CSV)")
        .type_name("N")
        .excludes({"--json"});
    app.add_flag("--all-families", options->all_families, "compare the families in one table and one picture")
        .excludes({"--family", "--json", "--response"});
    add_output(app, options->output);
    add_plot_options(app, options->plot);
    app.callback([options] { run(*options); });
}

}  // namespace cli
