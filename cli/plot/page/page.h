// A figure as a page of HTML that can be zoomed.
#pragma once

#include <string>

#include "cli/plot/figure.h"

namespace cli {

// The page holds all that it needs, and its policy forbids it to fetch anything.
std::string html_page(const Figure &figure);

}  // namespace cli
