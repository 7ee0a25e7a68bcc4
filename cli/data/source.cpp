#include "cli/data/source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "cli/app/diagnostics.h"

namespace cli {

namespace {

constexpr std::size_t kPiece = 1 << 17, kLongestLine = 1 << 20;

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
    erase_progress();
    if (descriptor_ > STDERR_FILENO) close(descriptor_);
}

bool Source::more() {
    if (descriptor_ < 0) return false;
    show_progress();
    buffer_.erase(0, position_);
    position_ = 0;
    const std::size_t had = buffer_.size();
    buffer_.resize(had + kPiece);
    ssize_t got = 0;
    do got = read(descriptor_, buffer_.data() + had, kPiece);
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

// For people who watch: nothing in the first second, nothing where stderr is not a terminal, nothing among data.
void Source::show_progress() {
    const auto now = std::chrono::steady_clock::now();
    if (now - shown_at_ < std::chrono::seconds(1) || isatty(STDERR_FILENO) == 0 || isatty(STDOUT_FILENO) != 0) return;
    const double done = static_cast<double>(consumed_), all = static_cast<double>(size_);
    to_stderr(size_ > 0 ? fmt::format("mensura: {}: {:.0f} %", name_, 100 * done / all)
                        : fmt::format("mensura: {}: {:.1f} MB", name_, 1e-6 * done));
    progress_is_shown = true;
    shown_at_ = now;
}

bool LineReader::next(Line &line) {
    std::size_t length = source_.pending().find('\n'), seen = 0;
    while (length == std::string_view::npos) {
        seen = source_.pending().size();
        if (seen > kLongestLine) reject("{}:{}: longer than a million characters; not a CSV", name(), number_ + 1);
        if (!source_.more()) break;
        length = source_.pending().find('\n', seen);
    }
    const std::string_view pending = source_.pending();
    if (pending.empty()) return false;
    line.text = pending.substr(0, length);
    line.end = pending.substr(line.text.size(), 1);
    if (!line.text.empty() && line.text.back() == '\r') {
        line.text.remove_suffix(1);
        line.end = pending.substr(line.text.size(), line.end.size() + 1);
    }
    line.number = ++number_;
    if (line.text.find('\0') != std::string_view::npos) reject("{}:{}: holds zero bytes; not a text", name(), number_);
    source_.skip(line.text.size() + line.end.size());
    return true;
}

}  // namespace cli
