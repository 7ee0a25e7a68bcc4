#include "cli/table/csv.h"

#include <cstddef>

namespace cli {

std::string cell_text(const std::string &name, char separator) {
    if (name.find_first_of(std::string{separator, '"', '\n'}) == std::string::npos) return name;
    std::string text = "\"";
    for (const char c : name) text += c == '"' ? "\"\"" : std::string(1, c);
    return text + '"';
}

void write_row(std::span<const double> numbers, Output &out) {
    for (const char *separator = ""; const double number : numbers) {
        out.write(separator);
        out.number(number);
        separator = ",";
    }
    out.write("\n");
    if (out.full()) out.flush();
}

void write_row(std::initializer_list<double> numbers, Output &out) {
    write_row(std::span(numbers.begin(), numbers.size()), out);
}

void write_csv(const NumberTable &table, Output &out) {
    for (const char *separator = ""; const std::string &name : table.names) {
        out.write(separator);
        out.write(cell_text(name, ','));
        separator = ",";
    }
    out.write("\n");
    std::vector<double> row(table.columns.size());
    for (std::size_t i = 0; i < table.columns.front().size(); ++i) {
        for (std::size_t k = 0; k < row.size(); ++k) row[k] = table.columns[k][i];
        write_row(row, out);
    }
}

}  // namespace cli
