// Tables of results as text (CSV).
#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <vector>

#include "cli/files/output.h"

namespace cli {

// A name as a cell: in quotes if it has to be, the quotes in it doubled.
std::string cell_text(const std::string &name, char separator);

// A row of numbers; flushes `out` when it is full.
void write_row(std::span<const double> numbers, Output &out);
void write_row(std::initializer_list<double> numbers, Output &out);

// Columns of equal length under their names.
struct NumberTable {
    std::vector<std::string> names = {};
    std::vector<std::vector<double>> columns = {};
};
void write_csv(const NumberTable &table, Output &out);

}  // namespace cli
