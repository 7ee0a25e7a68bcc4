#include "cli/files/temporary.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "cli/app/diagnostics.h"

namespace cli {

namespace {

std::array<char, PATH_MAX> named_temporary;  // the file that a signal has to remove; "": none

void forget_name() { named_temporary[0] = '\0'; }

void remember_name(const std::string &path) {
    if (path.size() < named_temporary.size()) std::memcpy(named_temporary.data(), path.c_str(), path.size() + 1);
}

// The file that a path names in the end, so that a link stays a link, even one to a file that does not exist yet.
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

Replacement::Replacement(const std::string &file)
    : file_(file),
      target_(resolved(file)),
      descriptor_(open(folder_of(target_).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600)) {
    if (descriptor_ < 0 && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL)) {  // not on this file system
        name_ = unused_name(target_);
        remember_name(name_);
        descriptor_ = open(name_.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0600);
    }
    if (descriptor_ < 0) fail("{}: {}", file_, std::strerror(errno));
}

Replacement::~Replacement() {
    close(descriptor_);
    if (!name_.empty()) unlink(name_.c_str());
    forget_name();
}

// A nameless file gets a name beside its target first, because a link cannot replace a file and a rename can.
void Replacement::publish() {
    const auto expect = [this](bool done) {
        if (!done) fail("{}: {}", file_, std::strerror(errno));
    };
    expect(fchmod(descriptor_, permissions_of(target_)) == 0);
    if (name_.empty()) {
        name_ = unused_name(target_);
        remember_name(name_);
        const std::string self = fmt::format("/proc/self/fd/{}", descriptor_);
        expect(linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name_.c_str(), AT_SYMLINK_FOLLOW) == 0);
    }
    expect(std::rename(name_.c_str(), target_.c_str()) == 0);
    name_.clear();
    forget_name();
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

void remove_named_temporary() {
    if (named_temporary[0] != '\0') unlink(named_temporary.data());
}

}  // namespace cli
