// Data windows.
#pragma once

#include <mensura/spectral.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace cli {

// A kind, the fraction of the samples left flat in the middle, and the shape parameter.
struct Window {
    int kind = wkRectangle;
    std::optional<double> alpha = {}, beta = {};
};

inline constexpr double kLargestAlpha = 1, kLargestBeta = 10;  // the smallest of both is 0

const char *window_name(int kind);
std::string window_names();
std::vector<std::string> window_words();
int window_kind(const std::string &option, const std::string &name);  // refuses a name that no window has

// "kaiser 8, sinc 1, ...": the windows that have the setting --beta, and its defaults.
std::string beta_defaults();

// Reports on stderr which settings are out of range, and which the window does not have.
void remark_on(const Window &window);

// With unity gain, the weights are divided by their mean.
std::vector<double> weights_of(const Window &window, std::size_t samples, bool unity_gain);

}  // namespace cli
