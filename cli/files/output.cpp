#include "cli/files/output.h"

#include <fcntl.h>
#include <fmt/compile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "cli/app/diagnostics.h"

namespace cli {

namespace {

constexpr std::size_t kPathCapacity = PATH_MAX;
std::array<char, kPathCapacity> named_temporary;  // what a signal has to remove; "" for nothing

void forget_temporary() { named_temporary[0] = '\0'; }

void remember_temporary(const std::string &path) {
    if (path.size() < named_temporary.size()) std::memcpy(named_temporary.data(), path.c_str(), path.size() + 1);
}

extern "C" void remove_temporary(int signal_number) {
    if (named_temporary[0] != '\0') unlink(named_temporary.data());
    std::signal(signal_number, SIG_DFL);
    std::raise(signal_number);
}

// The file that a path names in the end, so that a link stays a link, even one to a file that is yet to come.
std::string resolved(const std::string &file) {
    constexpr int kMostLinks = 40;
    std::filesystem::path path = file;
    std::error_code error;
    for (int i = 0; i < kMostLinks && std::filesystem::is_symlink(path, error); ++i)
        path = path.parent_path() / std::filesystem::read_symlink(path, error);
    return path.string();
}

std::string folder_of(const std::string &file) {
    const std::string folder = std::filesystem::path(file).parent_path().string();
    return folder.empty() ? "." : folder;
}

mode_t permissions_of(const std::string &file) {
    struct stat status = {};
    if (stat(file.c_str(), &status) == 0) return status.st_mode & 07777;
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

std::string unused_name(const std::string &file) {
    return fmt::format("{}/.{}.{}.tmp", folder_of(file), std::filesystem::path(file).filename().string(), getpid());
}

}  // namespace

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
    if (exists && !S_ISREG(status.st_mode)) {
        descriptor_ = open(file.c_str(), O_WRONLY | O_CLOEXEC);
    } else {
        target_ = resolved(file);
        descriptor_ = open(folder_of(target_).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
        if (descriptor_ < 0 && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL)) {
            temporary_ = unused_name(target_);
            remember_temporary(temporary_);
            descriptor_ = open(temporary_.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0600);
        }
    }
    if (descriptor_ < 0) fail("{}: {}", file, std::strerror(errno));
}

Output::~Output() {
    if (descriptor_ > STDERR_FILENO) close(descriptor_);
    if (!temporary_.empty()) unlink(temporary_.c_str());
    forget_temporary();
}

void Output::number(double value) {
    std::array<char, 32> text;
    const auto end = fmt::format_to(text.data(), FMT_COMPILE("{}"), value);
    buffer_.append(text.data(), end);
}

void Output::flush() {
    std::string_view rest = buffer_;
    while (!rest.empty()) {
        const ssize_t written = ::write(descriptor_, rest.data(), rest.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0 && errno == EPIPE) fail("{}: the reader has closed the pipe", name_);
        if (written < 0) fail("{}: {}", name_, std::strerror(errno));
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
    buffer_.clear();
}

void Output::commit() {
    flush();
    if (!target_.empty()) publish();
}

// A nameless file gets a name beside its target first, because a link cannot replace a file and a rename can.
void Output::publish() {
    if (fchmod(descriptor_, permissions_of(target_)) != 0) fail("{}: {}", name_, std::strerror(errno));
    if (temporary_.empty()) {
        temporary_ = unused_name(target_);
        remember_temporary(temporary_);
        const std::string self = fmt::format("/proc/self/fd/{}", descriptor_);
        if (linkat(AT_FDCWD, self.c_str(), AT_FDCWD, temporary_.c_str(), AT_SYMLINK_FOLLOW) != 0)
            fail("{}: {}", name_, std::strerror(errno));
    }
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) fail("{}: {}", name_, std::strerror(errno));
    temporary_.clear();
    forget_temporary();
}

void copy_contents(int from, Output &to) {
    if (lseek(from, 0, SEEK_SET) != 0) fail("{}: {}", to.name(), std::strerror(errno));
    copy_rest(from, to);
}

void copy_rest(int from, Output &to) {
    std::array<char, 1 << 16> piece;
    for (ssize_t got = 0; (got = read(from, piece.data(), piece.size())) != 0;) {
        if (got < 0) fail("{}: {}", to.name(), std::strerror(errno));
        to.write({piece.data(), static_cast<std::size_t>(got)});
        to.flush();
    }
}

int nameless_file() {
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    std::string path = ((error ? "/tmp" : folder) / "mensura.").string() + std::string(6, 'X');
    const int descriptor = mkostemp(path.data(), O_CLOEXEC);
    if (descriptor < 0) fail("{}: {}", path, std::strerror(errno));
    unlink(path.c_str());
    return descriptor;
}

void open_standard_descriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(descriptor, F_GETFD) < 0) static_cast<void>(open("/dev/null", O_RDWR));
}

void remove_temporary_on_signals() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        if (std::signal(number, remove_temporary) == SIG_IGN) std::signal(number, SIG_IGN);  // as under nohup
    std::signal(SIGPIPE, SIG_IGN);  // a closed pipe is an error like a full disk
}

}  // namespace cli
