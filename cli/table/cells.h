// The cells of a line of a table, found in place.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace cli {

// Puts the cells of a line into `cells`, with the blanks and quotes around their contents; runs of blanks count as one
// separator.  False: a quote is not closed, and only the cells before it are there.
bool split(std::string_view line, char separator, std::vector<std::string_view> &cells);

// A cell's content: without blanks and without the quotes around it.
std::string_view content(std::string_view cell);

// Whether a cell is empty, or says that there is no number.
bool is_missing(std::string_view cell);

// The name in a cell; in a quoted cell, two quotes stand for one.
std::string name_in(std::string_view cell);

}  // namespace cli
