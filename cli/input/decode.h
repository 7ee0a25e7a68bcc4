// Stages that bytes pass through while they are read: unpacked (gzip, zstd), then as UTF-8 (from UTF-16).
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cli {

// Where bytes come from: a file, or another stage whose bytes this one changes.
class Stage {
  public:
    Stage() = default;
    virtual ~Stage() = default;
    Stage(const Stage &) = delete;
    Stage &operator=(const Stage &) = delete;

    // Waits for bytes and puts those that are there into the block; returns how many, 0 only at the end.  Bad bytes are
    // refused once all before them have been handed out.
    virtual std::size_t read(std::span<char> block) = 0;
    // How many bytes are still to come, 0: not known.
    virtual std::size_t expected() const { return 0; }
};

// The bytes of a stage, as far as they have been read and not yet used.
class Bytes {
  public:
    explicit Bytes(std::unique_ptr<Stage> from) : from_(std::move(from)) {}
    // These and no others; they must outlive it.
    explicit Bytes(std::string_view all) : pending_(all) {}

    std::string_view pending() const { return pending_; }
    void skip(std::size_t count) { pending_.remove_prefix(count); }
    // Waits for more bytes and appends them to the pending ones; false at the end.
    bool more();
    // Everything still to come.
    std::string rest();

  private:
    std::unique_ptr<Stage> from_;
    std::vector<char> buffer_;
    std::string_view pending_;
};

// Puts the stages before the bytes that their beginning calls for, and waits for no more bytes than it takes to see
// that; false if they need none.  `name` is for messages.
bool decode(Bytes &bytes, const std::string &name);

std::unique_ptr<Stage> gunzip(Bytes packed, const std::string &name);
std::unique_ptr<Stage> unzstd(Bytes packed, const std::string &name);
std::unique_ptr<Stage> little_endian_utf16(Bytes text, const std::string &name);
std::unique_ptr<Stage> big_endian_utf16(Bytes text, const std::string &name);

}  // namespace cli
