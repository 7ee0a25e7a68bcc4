#include "cli/input/source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <span>
#include <utility>

#include "cli/app/diagnostics.h"
#include "cli/app/progress.h"

namespace cli {

namespace {

std::string name_of(const std::string &file) { return is_standard_input(file) ? "standard input" : file; }

// The bytes of a descriptor, which it closes.
class File final : public Stage {
  public:
    File(std::string name, int descriptor) : name_(std::move(name)), descriptor_(descriptor) {
        if (descriptor_ == STDIN_FILENO && isatty(STDIN_FILENO) != 0) throw InputIsTerminal();
        struct stat status = {};
        if (descriptor_ < 0 || fstat(descriptor_, &status) != 0) reject("{}: {}", name_, std::strerror(errno));
        if (S_ISDIR(status.st_mode)) reject("{}: is a directory; name a file", name_);
        if (S_ISREG(status.st_mode)) size_ = static_cast<std::size_t>(status.st_size);
    }
    ~File() override {
        if (descriptor_ > STDERR_FILENO) close(descriptor_);
    }

    std::size_t expected() const override { return size_ - std::min(size_, done_); }

    std::size_t read(std::span<char> block) override {
        progress_.show(done_, size_);
        ssize_t got = 0;
        do got = ::read(descriptor_, block.data(), block.size());
        while (got < 0 && errno == EINTR);
        if (got < 0) reject("{}: {}", name_, std::strerror(errno));
        done_ += static_cast<std::size_t>(got);
        return static_cast<std::size_t>(got);
    }

  private:
    std::string name_;
    int descriptor_;
    std::size_t done_ = 0, size_ = 0;  // size 0: not known
    Progress progress_{name_};
};

}  // namespace

bool is_standard_input(const std::string &file) { return file.empty() || file == "-"; }

Source::Source(const std::string &file)
    : name_(name_of(file)),
      descriptor_(is_standard_input(file) ? STDIN_FILENO : open(file.c_str(), O_RDONLY | O_CLOEXEC)),
      bytes_(std::make_unique<File>(name_, descriptor_)) {}

Source::Source(const std::string &name, std::string_view text) : name_(name), bytes_(text), recognised_(true) {}

void Source::recognise() {
    if (!std::exchange(recognised_, true)) plain_ = !decode(bytes_, name_);
}

bool Source::is_plain() {
    recognise();
    return descriptor_ >= 0 && plain_;
}

bool Source::more() {
    const std::size_t had = pending().size();
    recognise();
    return pending().size() > had || bytes_.more();
}

std::string Source::rest() {
    recognise();
    return bytes_.rest();
}

}  // namespace cli
