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

double rate_of(const FilterRequest &request) {
    if (!request.rate) reject("--rate is required: the sampling rate in Hz, such as --rate 360Hz");
    return *request.rate;
}

// Families for which the settings are refused are left out.
std::vector<Design> design_families(FilterRequest request) {
    std::vector<Design> designs;
    for (const mensura::iir::Family &family : mensura::iir::kFamilies) {
        request.family = family.code;
        try {
            designs.push_back(design_for(request, rate_of(request)));
        } catch (const Failure &failure) {
            if (&family == &mensura::iir::kFamilies.back() && designs.empty()) throw;
            remark("{} is left out: {}", family.word, failure.what());
        }
    }
    return designs;
}

FamilyOrders orders_for(const FilterRequest &request) {
    FamilyOrders orders;
    if (request.by_requirement())
        for (const mensura::iir::Family &family : mensura::iir::kFamilies)
            orders.push_back({family.code, least_order(request, rate_of(request), family.code)});
    return orders;
}

void print(Output &out, const Options &options, const std::vector<Design> &designs) {
    if (options.all_families) return print_families(out, designs);
    const Design &design = designs.front();
    if (options.json) return print_json(out, design, orders_for(options.request));
    if (options.response) return print_response(out, design, *options.response);
    print_text(out, design, orders_for(options.request));
}

void run(const Options &options) {
    if (options.response && (*options.response < 1 || *options.response > kMostFrequencies))
        reject("--response {}: from 1 to {} frequencies are possible", *options.response, kMostFrequencies);
    check_request(options.request);
    const std::vector<Design> designs = options.all_families
                                            ? design_families(options.request)
                                            : std::vector{design_for(options.request, rate_of(options.request))};
    for (const Design &design : designs)
        remark_on(design, options.all_families ? fmt::format("{}: ", family_name(design.made.family)) : "");
    Output out(data_file(options.plot, options.output));
    print(out, options, designs);
    out.commit();
    if (options.plot.wanted()) draw(response_figure(designs), options.plot);
}

}  // namespace

void add_design(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app = program.add_command("design", "design a filter and measure what it achieves", kExamples);
    add_pass_type(app, options->request).required();
    add_filter_options(app, options->request);
    app.add_flag("--json", options->json,
                 "print everything as JSON; null stands for minus infinity or for a value that is not defined");
    add_count(app, "--response", options->response,
              "print the response at N frequencies from DC up: Hz, dB, degrees, s (CSV)")
        .type_name("N")
        .excludes({"--json"});
    app.add_flag("--all-families", options->all_families, "compare the families in one table and one picture")
        .excludes({"--family", "--json", "--response"});
    add_output(app, options->output);
    add_plot_options(app, options->plot);
    app.callback([options] { run(*options); });
}

}  // namespace cli
