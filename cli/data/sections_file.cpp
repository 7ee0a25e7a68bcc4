#include "cli/data/sections_file.h"

#include <algorithm>
#include <cmath>

#include "cli/app/diagnostics.h"
#include "cli/input/source.h"
#include "cli/table/table.h"

namespace cli {

Sections read_sections(const std::string &file) {
    constexpr std::size_t kNumbers = std::tuple_size_v<Section>, kA0 = 3;
    Source source(file);
    TableReader table(source, {});
    Sections sections;
    while (table.next()) {
        if (table.kind() != LineKind::Data) continue;
        const std::vector<double> &row = table.values();
        const std::size_t line = table.line().number;
        if (row.size() != kNumbers)
            reject("{}:{}: has {} numbers; a section has 6, b0 b1 b2 a0 a1 a2", source.name(), line, row.size());
        for (std::size_t i = 0; i < kNumbers; ++i)
            if (std::isnan(row[i])) reject("{}:{}:{}: is not a number", source.name(), line, i + 1);
        if (row[kA0] != 1)
            reject("{}:{}:{}: a0 is {}; divide the section by it, so that a0 is 1", source.name(), line, kA0 + 1,
                   row[kA0]);
        std::ranges::copy(row, sections.emplace_back().begin());
    }
    return sections;
}

}  // namespace cli
