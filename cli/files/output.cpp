#include "cli/files/output.h"

#include <fcntl.h>
#include <fmt/compile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <limits>

#include "cli/app/diagnostics.h"

namespace cli {

Output::Output(const std::string &file) : name_(file) {
    if (file.empty() || file == "-") {
        name_ = "standard output";
        descriptor_ = STDOUT_FILENO;
        return;
    }
    struct stat status = {};
    const bool exists = stat(file.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) reject("{}: is a directory; name a file", file);
    if (exists && access(file.c_str(), W_OK) != 0) fail("{}: {}", file, std::strerror(errno));
    if (exists && !S_ISREG(status.st_mode))
        descriptor_ = open(file.c_str(), O_WRONLY | O_CLOEXEC);
    else
        descriptor_ = replacement_.emplace(file).descriptor();
    if (descriptor_ < 0) fail("{}: {}", file, std::strerror(errno));
}

Output::~Output() {
    if (!replacement_ && descriptor_ > STDERR_FILENO) close(descriptor_);
}

void Output::number(double value, char decimal) {
    if (std::isnan(value)) value = std::numeric_limits<double>::quiet_NaN();  // without a sign, which says nothing
    constexpr std::size_t kLongest = 32;
    char *const text = room(kLongest), *const end = fmt::format_to(text, FMT_COMPILE("{}"), value);
    if (decimal != '.') std::replace(text, end, '.', decimal);
    used_ += static_cast<std::size_t>(end - text);
}

void Output::flush() {
    std::string_view rest(buffer_.data(), used_);
    while (!rest.empty()) {
        const ssize_t written = ::write(descriptor_, rest.data(), rest.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0 && errno == EPIPE && descriptor_ == STDOUT_FILENO) throw ReaderGone();
        if (written < 0 && errno == EPIPE) fail("{}: the reader has closed the pipe", name_);
        if (written < 0) fail("{}: {}", name_, std::strerror(errno));
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
    used_ = 0;
}

void Output::commit() {
    flush();
    if (replacement_) replacement_->publish();
}

void copy_contents(int from, Output &to) {
    if (lseek(from, 0, SEEK_SET) != 0) fail("{}: {}", to.name(), std::strerror(errno));
    copy_rest(from, to);
}

void copy_rest(int from, Output &to) {
    std::array<char, 1 << 16> block;
    for (ssize_t got = 0; (got = read(from, block.data(), block.size())) != 0;) {
        if (got < 0) fail("{}: {}", to.name(), std::strerror(errno));
        to.write({block.data(), static_cast<std::size_t>(got)});
        to.flush();
    }
}

}  // namespace cli
