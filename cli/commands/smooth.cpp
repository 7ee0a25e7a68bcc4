// mensura smooth: least-squares smoothing of every column.
#include <mensura/smooth.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "cli/app/commands.h"
#include "cli/app/diagnostics.h"
#include "cli/app/options.h"
#include "cli/app/quantity.h"
#include "cli/data/record.h"
#include "cli/data/rewrite.h"
#include "cli/input/source.h"
#include "cli/sound/sound.h"

namespace cli {

namespace {

constexpr const char *kExamples =
    "  mensura smooth --degree 3 --window 7 ecg.csv > smooth.csv\n"
    "  mensura smooth --degree 1 --window 11 --column temperature --plot=room.svg -o smooth.csv room.csv\n";

struct Smoother {
    int degree, window;
    void (*function)(const double *x, double *y, int n);
};

constexpr Smoother kSmoothers[] = {{1, 3, linearSmooth3},    {1, 5, linearSmooth5},   {1, 7, linearSmooth7},
                                   {1, 9, linearSmooth9},    {1, 11, linearSmooth11}, {2, 5, quadraticSmooth5},
                                   {2, 7, quadraticSmooth7}, {3, 5, cubicSmooth5},    {3, 7, cubicSmooth7}};

struct Options {
    Files files;
    int degree = 0, window = 0;
};

// "degree 1: window 3, 5, 7, 9, 11; degree 2: ..."
std::string all_smoothers() {
    std::string text;
    int degree = 0;
    for (const Smoother &smoother : kSmoothers) {
        if (smoother.degree == degree)
            text += fmt::format(", {}", smoother.window);
        else
            text += fmt::format("{}degree {}: window {}", degree > 0 ? "; " : "", smoother.degree, smoother.window);
        degree = smoother.degree;
    }
    return text;
}

const Smoother &chosen(const Options &options) {
    const auto *const smoother = std::ranges::find_if(kSmoothers, [&options](const Smoother &candidate) {
        return candidate.degree == options.degree && candidate.window == options.window;
    });
    if (smoother == std::end(kSmoothers))
        reject("no smoother of degree {} and window {}; there are {}", options.degree, options.window, all_smoothers());
    return *smoother;
}

void run(const Options &options) {
    const Smoother &smoother = chosen(options);
    Source source(options.files.input.file);
    refuse_sound(source);
    Record record = read_record(source, options.files.input);
    const auto window = static_cast<std::size_t>(smoother.window);
    if (record.length() < window)
        remark("{}: nothing is smoothed: the window is longer than the record of {}", record.name, record.length());
    const Change change = [&smoother](const Channel &, std::span<double> piece) {
        const std::vector<double> x(piece.begin(), piece.end());
        smoother.function(x.data(), piece.data(), static_cast<int>(x.size()));
    };
    rewrite_record(record, options.files, change,
                   fmt::format("smoothed, degree {}, window {}", smoother.degree, smoother.window),
                   record.length() < window ? 0 : window);
}

}  // namespace

void add_smooth(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app = program.add_command(
        "smooth", "smooth the columns of a table by polynomials that are fitted to a moving window", kExamples);
    add_count(app, "--degree", options->degree, fmt::format("degree of the polynomial; available: {}", all_smoothers()))
        .required();
    add_count(app, "--window", options->window, "samples that a polynomial is fitted to").required();
    add_files(app, options->files);
    app.callback([options] { run(*options); });
}

}  // namespace cli
