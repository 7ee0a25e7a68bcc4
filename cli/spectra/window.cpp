#include "cli/spectra/window.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <new>

#include "cli/app/diagnostics.h"
#include "cli/app/names.h"

namespace cli {

namespace {

struct NamedWindow {
    const char *name;
    int kind;
    bool has_alpha = true;
    std::optional<double> beta = {};  // default, for windows that have this setting
};

// The first name of a kind is the one shown.
constexpr NamedWindow kWindows[] = {{"rectangle", wkRectangle, false},
                                    {"hanning", wkHanning},
                                    {"hann", wkHanning},
                                    {"hamming", wkHamming},
                                    {"blackman", wkBlackman},
                                    {"blackman-harris", wkBlackmanHarris},
                                    {"blackman-nuttall", wkBlackmanNuttall},
                                    {"nuttall", wkNuttall},
                                    {"flattop", wkFlatTop, false},
                                    {"kaiser", wkKaiser, false, 8.0},
                                    {"kaiser-bessel", wkKaiserBessel},
                                    {"triangle", wkTriangle},
                                    {"gauss", wkGauss},
                                    {"sinc", wkSinc, true, 1.0},
                                    {"sine", wkSine, true, 1.0}};

const NamedWindow &row_of(int kind) { return *std::ranges::find(kWindows, kind, &NamedWindow::kind); }

void remark_on_setting(const char *option, std::optional<double> value, double highest, bool used, int kind) {
    if (!value) return;
    if (!used)
        remark("{} is not used by the window {}", option, window_name(kind));
    else if (const double clamped = std::clamp(*value, 0.0, highest); clamped != *value)
        remark("{} {} is outside the range of 0 to {}: {} is taken", option, *value, highest, clamped);
}

}  // namespace

const char *window_name(int kind) { return row_of(kind).name; }

std::string window_names() { return joined(kWindows, &NamedWindow::name, " or "); }

std::vector<std::string> window_words() { return words_of(kWindows, &NamedWindow::name); }

int window_kind(const std::string &option, const std::string &name) {
    return row_named(option, name, kWindows, &NamedWindow::name).kind;
}

std::string beta_defaults() {
    std::string text;
    for (const NamedWindow &window : kWindows)
        if (window.beta) text += fmt::format("{}{} {}", text.empty() ? "" : ", ", window.name, *window.beta);
    return text;
}

void remark_on(const Window &window) {
    const NamedWindow &row = row_of(window.kind);
    remark_on_setting("--alpha", window.alpha, kLargestAlpha, row.has_alpha, window.kind);
    remark_on_setting("--beta", window.beta, kLargestBeta, row.beta.has_value(), window.kind);
}

// When WindowData finds no memory it leaves all weights at 1, and malloc sets errno.
std::vector<double> weights_of(const Window &window, std::size_t samples, bool unity_gain) {
    constexpr int kMost = std::numeric_limits<int>::max();
    if (samples > static_cast<std::size_t>(kMost)) reject("{} samples are too many: {} at most", samples, kMost);
    const double beta = window.beta.value_or(row_of(window.kind).beta.value_or(0));
    std::vector<double> weights(samples, 1.0);
    errno = 0;
    WindowData(weights.data(), static_cast<int>(samples), window.kind, window.alpha.value_or(0), beta,
               unity_gain ? 1 : 0);
    const bool unchanged = std::ranges::all_of(weights, [](double weight) { return weight == 1; });
    if (errno == ENOMEM && unchanged) throw std::bad_alloc();
    return weights;
}

}  // namespace cli
