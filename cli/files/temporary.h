// Temporary files.
#pragma once

#include <string>

namespace cli {

// A file that takes the place of its target when it is complete; until then the target keeps its old content.
class Replacement {
  public:
    explicit Replacement(const std::string &file);
    ~Replacement();  // without publish(): the file vanishes
    Replacement(const Replacement &) = delete;
    Replacement &operator=(const Replacement &) = delete;

    int descriptor() const { return descriptor_; }
    void publish();

  private:
    std::string file_, target_;  // as given; the file that is replaced, which differs if that is a link
    std::string name_;           // of the temporary file, "" while it has none
    int descriptor_ = -1;
};

// A nameless file that vanishes with its descriptor.
int nameless_file();

// Removes the file of a Replacement that has a name.  For signal handlers.
void remove_named_temporary();

}  // namespace cli
