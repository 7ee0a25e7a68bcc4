#include "cli/app/diagnostics.h"

#include <cctype>
#include <cstdio>

#include "cli/app/progress.h"

namespace cli {
namespace {

// Cells and names of files are quoted in messages: an escape sequence in them must not command the terminal.
std::string printable_line(std::string text) {
    for (char &c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (std::isspace(code) != 0)
            c = ' ';
        else if (code < 0x20 || code == 0x7F)
            c = '?';
    }
    return text;
}

}  // namespace

void to_stderr(const std::string &text) {
    Progress::erase();
    std::fputs(text.c_str(), stderr);
}

void report(const std::string &line) { to_stderr("mensura: " + printable_line(line) + "\n"); }

}  // namespace cli
