#include "cli/app/diagnostics.h"

#include <cstdio>

#include "cli/app/progress.h"

namespace cli {

void to_stderr(const std::string &text) {
    Progress::erase();
    std::fputs(text.c_str(), stderr);
}

void report(const std::string &line) { to_stderr("mensura: " + line + "\n"); }

}  // namespace cli
