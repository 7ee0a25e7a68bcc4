// The companion's reader of tables: any text, any choice of columns and marks, and the same table written and read again.
#include <unistd.h>

#include <array>

#include "cli/app/diagnostics.h"
#include "cli/data/record.h"
#include "cli/table/table.h"
#include "input.h"

using namespace fuzz;

// All numbers of a table, which is written into `out` line by line.  The decimal mark that it shows is set for the copy,
// in which it may be lost: 2.0 becomes 2.
static Doubles copy_table(const std::string &text, cli::InputOptions &options, cli::Faults faults, cli::Output &out) {
    cli::Source source("table", text);
    cli::TableReader table(source, options, faults);
    Doubles all;
    std::size_t rows = 0;
    while (table.next()) {
        if (table.kind() != cli::LineKind::Data) {
            table.write_line(out);
            continue;
        }
        if (table.has_time()) table.time();
        check(table.values().size() == table.columns().size() && table.rows() == ++rows);
        all.insert(all.end(), table.values().begin(), table.values().end());
        table.write_row(out, table.values());
    }
    options.decimal = table.decimal();
    out.flush();
    return all;
}

void fuzz::test(Input &input) {
    cli::InputOptions options{.columns = {input.ConsumeRandomLengthString(8)}};
    if (options.columns[0].empty()) options.columns.clear();
    options.decimal = std::array{'\0', '.', ',', '\0'}[input.ConsumeIntegralInRange<std::size_t>(0, 3)];
    const cli::Faults faults = input.ConsumeBool() ? cli::Faults::Report : cli::Faults::Refuse;
    const std::string text = input.ConsumeRemainingBytesAsString();
    cli::Output out("/tmp/never_committed"), again("/tmp/never_committed_again");
    try {
        const Doubles before = copy_table(text, options, faults, out);
        std::string copy(static_cast<std::size_t>(lseek(out.descriptor(), 0, SEEK_END)), ' ');
        check(pread(out.descriptor(), copy.data(), copy.size(), 0) == static_cast<ssize_t>(copy.size()));
        const Doubles after = copy_table(copy, options, faults, again);
        // Which of two rows is the torn one may look different in the copy, where the numbers have fewer characters.
        if (faults == cli::Faults::Refuse) check(same_bits(before, after));
        cli::Source source("table", text);
        const cli::Record record = cli::read_record(source, options);
        for (const cli::Channel &channel : record.channels) check(channel.samples.size() == record.length());
    } catch (const cli::Failure &) {  // tells of bad input
    }
}
