// How a table is written: what is between its cells, and the decimal mark in its numbers.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace cli {

// The separator that a table's first line shows: the first of tab, semicolon and comma that it holds outside of quotes,
// else blanks, ' '.  A comma is none where it stands in numbers between blanks, as in "1,5 2,5".  `decimal` is the mark
// that the user has set, or '\0'.
char separator_in(std::string_view line, char decimal);

// The decimal mark that the numbers in cells show; '\0': there is none in them.  A comma only if no number has a point.
char decimal_mark_in(std::span<const std::string_view> cells);

// That of the lines in a text that are whole and have so many cells.
char decimal_mark_in(std::string_view text, char separator, std::size_t width);

// The finite number in a cell, written with this decimal mark.
std::optional<double> number_in(std::string_view cell, char decimal);

// Whether a cell's content is a number with separators between its thousands, such as 1.234,56 or 1 234.
bool has_thousands(std::string_view text);

// A line that holds no cells: empty, or after "#", "//" or "% ".
bool is_remark(std::string_view line);

}  // namespace cli
