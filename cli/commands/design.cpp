// mensura design: a filter as requested, as designed, and what it achieves.
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/app/commands.h"
#include "cli/app/design.h"
#include "cli/app/diagnostics.h"
#include "cli/app/names.h"
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
    "  mensura design lowpass --cutoff 6Hz --poles 4 --zero-phase --rate 200Hz\n"
    "  mensura design bandpass --from 0.5Hz --to 40Hz --rate 360Hz --family papoulis --json\n"
    "  mensura design lowpass --pass 40Hz:1dB --stop 60Hz:50dB --rate 360Hz\n"
    "  mensura design lowpass --cutoff 40Hz --rate 360Hz --export c > filter.h\n"
    "  mensura design lowpass --cutoff 40Hz --rate 360Hz --all-families --show step --plot=steps.svg\n";

constexpr int kMostRows = 10'000'000;

enum class Form { Text, Json, Sections, C, Response, Step, Impulse, Families };
enum class Picture { Response, Step, Impulse, Roots };

struct ExportName {
    const char *word;
    Form form;
};
constexpr ExportName kExports[] = {{"sos", Form::Sections}, {"c", Form::C}, {"json", Form::Json}};

struct PictureName {
    const char *word;
    Picture picture;
};
constexpr PictureName kPictures[] = {
    {"response", Picture::Response}, {"step", Picture::Step}, {"poles", Picture::Roots}};

struct Options {
    FilterRequest request;
    Form form = Form::Text;
    bool exported = false;
    int rows = 0;  // of a response
    std::string output;
    std::optional<Picture> picture;
    PlotOptions plot;
};

double rate_of(const FilterRequest &request) {
    if (!request.rate) reject("--rate is required: the sampling rate in Hz, such as --rate 360Hz");
    return *request.rate;
}

// The request for one of the families, without the settings that it does not have.
FilterRequest for_family(FilterRequest request, const mensura::iir::Family &family) {
    request.family = family.code;
    if ((family.settings & mensura::iir::kRipple) == 0) request.ripple.reset();
    if ((family.settings & mensura::iir::kStopBand) == 0) request.stop_band.reset();
    if ((family.settings & mensura::iir::kGamma) == 0) request.gamma.reset();
    return request;
}

// Families that cannot be made as requested are left out.
std::vector<Design> design_families(const FilterRequest &request) {
    std::vector<Design> designs;
    const double rate = rate_of(request);
    check_frequencies(request, rate);
    for (const mensura::iir::Family &family : mensura::iir::kFamilies) try {
            designs.push_back(design_for(for_family(request, family), rate));
        } catch (const Failure &failure) {
            remark("{} is left out: {}", family.word, failure.what());
        }
    if (designs.empty()) reject("no family can be made as requested");
    return designs;
}

FamilyOrders orders_for(const FilterRequest &request) {
    FamilyOrders orders;
    if (!request.by_requirement()) return orders;
    for (const mensura::iir::Family &family : mensura::iir::kFamilies)
        orders.push_back({family.code, least_order(request, rate_of(request), family.code)});
    return orders;
}

std::vector<Design> designs_for(const Options &options) {
    check_request(options.request);
    if (options.form == Form::Families) return design_families(options.request);
    return {design_for(options.request, rate_of(options.request))};
}

// Other programs get no filter that should not be used.
void comment_on(const Options &options, const std::vector<Design> &designs) {
    if (options.exported) return refuse_unusable(designs.front(), options.request.force);
    for (const Design &design : designs)
        remark_on(design, designs.size() > 1 ? fmt::format("{}: ", family_name(design.made.family)) : "");
}

void print(Output &out, const Options &options, const std::vector<Design> &designs) {
    const Design &design = designs.front();
    switch (options.form) {
        case Form::Text: return print_text(out, design, orders_for(options.request));
        case Form::Json: return print_json(out, design, orders_for(options.request));
        case Form::Sections: return export_sections(out, design);
        case Form::C: return export_c(out, design);
        case Form::Response: return print_response(out, design, options.rows);
        case Form::Step: return print_time_response(out, design, Input::Step, options.rows);
        case Form::Impulse: return print_time_response(out, design, Input::Impulse, options.rows);
        case Form::Families: return print_families(out, designs);
    }
}

// What is printed, unless --show says otherwise.
Picture picture_of(const Options &options) {
    if (options.picture) return *options.picture;
    if (options.form == Form::Step) return Picture::Step;
    return options.form == Form::Impulse ? Picture::Impulse : Picture::Response;
}

Figure figure_of(const Options &options, const std::vector<Design> &designs) {
    const bool printed = options.form == Form::Step || options.form == Form::Impulse;
    const auto samples = static_cast<std::size_t>(printed ? options.rows : 0);
    switch (picture_of(options)) {
        case Picture::Step: return time_figure(designs, Input::Step, samples);
        case Picture::Impulse: return time_figure(designs, Input::Impulse, samples);
        case Picture::Roots: return root_figure(designs.front());
        default: return response_figure(designs, options.plot);
    }
}

void run(const Options &options) {
    if (options.picture == Picture::Roots && options.form == Form::Families)
        reject("--show poles is for one family, not for --all-families");
    if (options.picture && !options.plot.wanted()) reject("--show is for --plot and --plot-script");
    check_axis(options.plot);
    if (options.plot.axis != PlotOptions::Automatic && picture_of(options) != Picture::Response)
        reject("--axis is for --show response");
    std::vector<Design> designs = designs_for(options);
    comment_on(options, designs);
    for (Design &design : designs) {
        if (!design.leading) measure_half_power(design);
        measure_step(design);
    }
    Output out(data_file(options.plot, options.output));
    print(out, options, designs);
    out.commit();
    if (options.plot.wanted()) draw(figure_of(options, designs), options.plot);
}

// An option that chooses what is printed in so many rows.
Option add_rows(const Command &app, const std::string &name, Options &options, Form form, const std::string &help) {
    const auto take = [name, form, &options](int rows) {
        if (rows < 1 || rows > kMostRows)
            reject_option(name, fmt::format("{} rows; 1 to {} are possible", rows, kMostRows));
        options.form = form;
        options.rows = rows;
    };
    return add_count(app, name, std::function<void(int)>(take), help);
}

void add_forms(const Command &app, Options &options) {
    app.add_flag(
        "--json", [&options] { options.form = Form::Json; },
        "print everything as JSON; null stands for minus infinity or for a value that is not defined");
    const auto take_export = [&options](const ExportName &name) {
        options.form = name.form;
        options.exported = true;
    };
    add_choice(app, "--export", kExports, &ExportName::word, take_export,
               "print the sections for other programs: {}; sos is lines b0,b1,b2,a0,a1,a2 for SciPy and MATLAB, c a "
               "header with a C function")
        .type_name("FORM")
        .excludes({"--json"});
    add_rows(app, "--response", options, Form::Response,
             "print the response at N frequencies from DC up: Hz, dB, degrees, group delay in s (CSV)")
        .excludes({"--json", "--export"});
    add_rows(app, "--step", options, Form::Step,
             "print N samples of the response to a step (CSV); with --zero-phase around the step")
        .excludes({"--json", "--export", "--response"});
    add_rows(app, "--impulse", options, Form::Impulse, "print N samples of the response to an impulse (CSV)")
        .excludes({"--json", "--export", "--response", "--step"});
    app.add_flag(
           "--all-families", [&options] { options.form = Form::Families; },
           "compare the families in one table and one picture")
        .excludes({"--family", "--json", "--export", "--response", "--step", "--impulse"});
}

}  // namespace

void add_design(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app = program.add_command("design", "design a filter and measure what it achieves", kExamples);
    add_pass_type(app, options->request).required();
    add_filter_options(app, options->request);
    add_forms(app, *options);
    add_output(app, options->output);
    add_plot_options(app, options->plot);
    add_axis_option(app, options->plot);
    add_choice(
        app, "--show", kPictures, &PictureName::word,
        [options](const PictureName &name) { options->picture = name.picture; },
        "what --plot draws: {}; default what --step or --impulse prints, else response")
        .type_name("WHAT");
    app.callback([options] { run(*options); });
}

}  // namespace cli
