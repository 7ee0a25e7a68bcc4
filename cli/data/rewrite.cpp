#include "cli/data/rewrite.h"

#include <cstddef>
#include <span>
#include <vector>

#include "cli/files/output.h"
#include "cli/plot/comparison.h"

namespace cli {

void rewrite_record(Record &record, const Files &files, const Change &change, const std::string &title,
                    const Rename &rename) {
    remark_missing(record);
    Comparison comparison(files.plot);
    std::vector<std::string> names, new_names;
    for (std::size_t i = 0; i < record.channels.size(); ++i) {
        Channel &channel = record.channels[i];
        const std::vector<double> before = files.plot.wanted() ? channel.samples : std::vector<double>();
        for (const Piece &piece : channel.pieces)
            change(channel, std::span(channel.samples).subspan(piece.begin, piece.end - piece.begin));
        for (std::size_t k = 0; k < before.size(); ++k) comparison.add(i, before[k], channel.samples[k]);
        names.push_back(channel.name);
        if (rename) new_names.push_back(rename(channel.name));
    }
    Output out(data_file(files.plot, files.output));
    record.rename = rename;
    write_record(record, out);
    out.commit();
    comparison.draw(title, names, record.rate, new_names);
}

}  // namespace cli
