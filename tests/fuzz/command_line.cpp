// The companion's command line: any arguments are parsed, and no command is run; numbers with units.
#include <CLI/CLI.hpp>

#include "cli/app/program.h"
#include "cli/app/quantity.h"
#include "input.h"

struct Parsed {};  // thrown in place of the work that would follow

void fuzz::test(Input &input) {
    const std::string quantity = input.ConsumeRandomLengthString(20);
    std::string complaint, line = "mensura\n" + input.ConsumeRemainingBytesAsString();  // an argument a line
    const std::optional<double> value = cli::parse_quantity(quantity, cli::kHertz, complaint);
    check(value ? std::isfinite(*value) && complaint.empty() : !complaint.empty());
    std::vector<char *> arguments{line.data()};
    for (std::size_t at = 0; (at = line.find('\n', at)) != std::string::npos;) {
        line[at++] = '\0';
        arguments.push_back(line.data() + at);
    }
    CLI::App program;
    cli::describe(program);
    program.parse_complete_callback([] { throw Parsed(); });
    try {
        const int status = cli::run(program, static_cast<int>(arguments.size()), arguments.data());
        check(status == 0 || status == 2);
    } catch (const Parsed &) {  // a call that is right
    }
}
