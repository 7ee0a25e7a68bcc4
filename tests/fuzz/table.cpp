// The companion's reader of tables: any text, any choice of columns, and the same table written and read again.
#include <unistd.h>

#include "cli/app/diagnostics.h"
#include "cli/data/record.h"
#include "cli/data/table.h"
#include "input.h"

using namespace fuzz;

// All numbers of a table, which is written into `out` line by line.
static Doubles copy_table(const std::string &text, const std::vector<std::string> &wanted, cli::Output &out) {
    cli::Source source("table", text);
    cli::TableReader table(source, {.columns = wanted});
    Doubles all;
    while (table.next()) {
        if (table.kind() != cli::LineKind::Data) {
            table.write_line(out);
            continue;
        }
        check(table.values().size() == table.columns().size());
        all.insert(all.end(), table.values().begin(), table.values().end());
        table.write_row(out, table.values());
    }
    check(table.rows() * table.columns().size() == all.size());
    out.flush();
    return all;
}

void fuzz::test(Input &input) {
    std::vector<std::string> wanted{input.ConsumeRandomLengthString(8)};
    if (wanted[0].empty()) wanted.clear();
    const std::string text = input.ConsumeRemainingBytesAsString();
    cli::Output out("/tmp/never_committed"), again("/tmp/never_committed_again");
    try {
        const Doubles before = copy_table(text, wanted, out);
        std::string copy(static_cast<std::size_t>(lseek(out.descriptor(), 0, SEEK_END)), ' ');
        check(pread(out.descriptor(), copy.data(), copy.size(), 0) == static_cast<ssize_t>(copy.size()));
        check(same_bits(before, copy_table(copy, wanted, again)));
        cli::Source source("table", text);
        const cli::Record record = cli::read_record(source, {.columns = wanted});
        for (const cli::Channel &channel : record.channels) check(channel.samples.size() == record.length());
    } catch (const cli::Failure &) {  // tells of bad input
    }
}
