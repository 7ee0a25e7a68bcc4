// A folder of a test's own.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace support {

// The current folder, empty at first, until the test ends and all in it goes.
class Folder {
  public:
    Folder() {
        if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no folder " + path_);
        std::filesystem::current_path(path_);
    }
    ~Folder() {
        std::filesystem::current_path(home_);
        std::filesystem::remove_all(path_);
    }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;

  private:
    std::filesystem::path home_ = std::filesystem::current_path();
    std::string path_ = (std::filesystem::temp_directory_path() / "mensura_").string() + std::string(6, 'X');
};

}  // namespace support
