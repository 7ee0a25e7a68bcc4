#include "cli/app/progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace cli {

namespace {

constexpr auto kInterval = std::chrono::seconds(1);
constexpr const char *kClearLine = "\r\033[K";  // ECMA-48: to the first column, erase to the end of the line

}  // namespace

void Progress::show(std::size_t bytes, std::size_t total) {
    const auto now = std::chrono::steady_clock::now();
    if (now - shown_at_ < kInterval || isatty(STDERR_FILENO) == 0 || isatty(STDOUT_FILENO) != 0) return;
    erase();
    const auto done = static_cast<double>(bytes);
    const std::string amount = total > 0 ? fmt::format("{:.0f} %", 100 * done / static_cast<double>(total))
                                         : fmt::format("{:.1f} MB", 1e-6 * done);
    std::fputs(fmt::format("mensura: {}: {}", name_, amount).c_str(), stderr);
    on_screen_ = true;
    shown_at_ = now;
}

void Progress::erase() {
    if (on_screen_) std::fputs(kClearLine, stderr);
    on_screen_ = false;
}

}  // namespace cli
