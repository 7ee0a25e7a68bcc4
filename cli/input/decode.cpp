#include "cli/input/decode.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "cli/app/diagnostics.h"

namespace cli {

namespace {

constexpr std::size_t kBlock = 1 << 17;

struct Format {
    std::string_view beginning;
    std::unique_ptr<Stage> (*stage)(Bytes bytes, const std::string &name);
};

std::unique_ptr<Stage> refuse_zip(Bytes, const std::string &name) {
    reject("{}: is a zip archive, perhaps of a spreadsheet (.xlsx, .ods); export the table as CSV", name);
}

// RFC 1952; RFC 8878: a frame of data, and one to skip, with which files of several threads begin.
constexpr Format kPacked[] = {
    {"\x1F\x8B", gunzip}, {"\x28\xB5\x2F\xFD", unzstd}, {"\x50\x2A\x4D\x18", unzstd}, {"PK\3\4", refuse_zip}};
// The byte-order mark U+FEFF.
constexpr Format kEncodings[] = {{"\xFF\xFE", little_endian_utf16}, {"\xFE\xFF", big_endian_utf16}};

bool begins_like(std::string_view pending, const Format &format) {
    const std::size_t count = std::min(pending.size(), format.beginning.size());
    return pending.substr(0, count) == format.beginning.substr(0, count);
}

bool decode(Bytes &bytes, std::span<const Format> formats, const std::string &name) {
    for (const Format &format : formats) {
        while (bytes.pending().size() < format.beginning.size() && begins_like(bytes.pending(), format) &&
               bytes.more()) {
        }
        if (!bytes.pending().starts_with(format.beginning)) continue;
        bytes = Bytes(format.stage(std::move(bytes), name));
        return true;
    }
    return false;
}

}  // namespace

bool Bytes::more() {
    if (!from_) return false;
    const std::size_t had = pending_.size();
    if (pending_.data() != buffer_.data() && had > 0) std::memmove(buffer_.data(), pending_.data(), had);
    if (buffer_.size() < had + kBlock) buffer_.resize(had + kBlock);
    const std::size_t got = from_->read(std::span(buffer_).subspan(had));
    pending_ = {buffer_.data(), had + got};
    return got > 0;
}

std::string Bytes::rest() {
    std::string all(std::exchange(pending_, {}));
    if (!from_) return all;
    all.reserve(all.size() + from_->expected() + kBlock);
    for (std::size_t got = 1; got > 0;) {
        const std::size_t had = all.size();
        all.resize(had + kBlock);
        got = from_->read(std::span(all).subspan(had));
        all.resize(had + got);
    }
    return all;
}

bool decode(Bytes &bytes, const std::string &name) {
    const bool packed = decode(bytes, kPacked, name), encoded = decode(bytes, kEncodings, name);
    return packed || encoded;
}

}  // namespace cli
