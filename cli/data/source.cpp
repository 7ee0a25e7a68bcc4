#include "cli/data/source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "cli/app/diagnostics.h"

namespace cli {

namespace {

constexpr std::size_t kBlock = 1 << 17;

bool is_standard_input(const std::string &file) { return file.empty() || file == "-"; }

}  // namespace

Source::Source(const std::string &file)
    : name_(is_standard_input(file) ? "standard input" : file),
      descriptor_(is_standard_input(file) ? STDIN_FILENO : open(file.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (descriptor_ == STDIN_FILENO && isatty(STDIN_FILENO) != 0) throw InputIsTerminal();
    struct stat status = {};
    if (descriptor_ < 0 || fstat(descriptor_, &status) != 0) reject("{}: {}", name_, std::strerror(errno));
    if (S_ISDIR(status.st_mode)) reject("{}: is a directory; name a file", name_);
    if (S_ISREG(status.st_mode)) size_ = static_cast<std::size_t>(status.st_size);
}

Source::Source(const std::string &name, std::string text) : name_(name), buffer_(std::move(text)) {}

Source::~Source() {
    if (descriptor_ > STDERR_FILENO) close(descriptor_);
}

bool Source::more() {
    if (descriptor_ < 0) return false;
    progress_.show(consumed_, size_);
    buffer_.erase(0, position_);
    position_ = 0;
    const std::size_t had = buffer_.size();
    buffer_.resize(had + kBlock);
    ssize_t got = 0;
    do got = read(descriptor_, buffer_.data() + had, kBlock);
    while (got < 0 && errno == EINTR);
    buffer_.resize(had + static_cast<std::size_t>(got > 0 ? got : 0));
    if (got < 0) reject("{}: {}", name_, std::strerror(errno));
    consumed_ += static_cast<std::size_t>(got);
    return got > 0;
}

std::string Source::rest() {
    while (more()) {
    }
    return std::string(pending());
}

}  // namespace cli
