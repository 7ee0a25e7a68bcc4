// The companion's columns of times: any cells, and records and streams that have them.
#include <algorithm>

#include "cli/app/diagnostics.h"
#include "cli/data/record.h"
#include "cli/table/table.h"
#include "cli/times/row_gaps.h"
#include "cli/times/time_cells.h"
#include "input.h"

using namespace fuzz;

static void check_cells(const std::string &name, const std::string &text, char decimal) {
    cli::TimeCells cells(cli::time_name(name).value_or(cli::TimeName{}), decimal);
    cli::time_unit(name);
    for (std::size_t from = 0; from < text.size();) {
        const std::size_t to = std::min(text.find_first_of(",\n", from), text.size());
        if (const auto time = cells.parse(std::string_view(text).substr(from, to - from))) check(std::isfinite(*time));
        from = to + 1;
    }
}

static void check_record(const std::string &text, const cli::InputOptions &input) {
    cli::Source source("table", text);
    const cli::Record record = cli::read_record(source, input);
    check(std::isfinite(record.rate) && record.rate >= 0);
    for (const cli::Channel &channel : record.channels) {
        check(channel.samples.size() == record.length());
        std::size_t end = 0;
        for (const cli::Piece &piece : channel.pieces) {
            check(piece.begin >= end && piece.begin < piece.end && piece.end <= record.length());
            end = piece.end;
            for (std::size_t i = piece.begin; i < end; ++i) check(!std::isnan(channel.samples[i]));
        }
    }
    for (std::size_t row = 1; row < record.sample_of_row.size(); ++row)
        check(record.sample_of_row[row] > record.sample_of_row[row - 1] && record.sample_of_row[row] < record.length());
}

static void check_stream(const std::string &text, const cli::InputOptions &input) {
    cli::Source source("table", text);
    cli::TableReader table(source, input);
    cli::RowGaps gaps(table, input, "table");
    while (table.next())
        if (table.kind() == cli::LineKind::Data) check(gaps.next().rows < 2000000000000000U);
    gaps.finish();
}

void fuzz::test(Input &input) {
    cli::InputOptions options;
    options.gaps = input.PickValueInArray({cli::GapPolicy::Hold, cli::GapPolicy::Split, cli::GapPolicy::Error});
    options.decimal = input.PickValueInArray({'\0', '.', ','});
    if (input.ConsumeBool()) options.rate = 1000;
    const std::string name = input.ConsumeRandomLengthString(24), text = input.ConsumeRemainingBytesAsString();
    check_cells(name, text, options.decimal);
    for (const auto check_all : {check_record, check_stream}) {
        try {
            check_all(text, options);
        } catch (const cli::Failure &) {  // tells of bad input
        }
    }
}
