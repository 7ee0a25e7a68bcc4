// gzip (RFC 1952): members one after the other, each with a check sum.
#define ZLIB_CONST  // zlib does not change what it reads
#include <zlib.h>

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "cli/app/diagnostics.h"
#include "cli/input/decode.h"

namespace cli {

namespace {

constexpr int kGzipOnly = 16 + MAX_WBITS;

class Gunzip final : public Stage {
  public:
    Gunzip(Bytes packed, std::string name) : packed_(std::move(packed)), name_(std::move(name)) {
        if (inflateInit2(&state_, kGzipOnly) != Z_OK) throw std::bad_alloc();
    }
    ~Gunzip() override { inflateEnd(&state_); }

    std::size_t read(std::span<char> block) override {
        for (;;) {
            if (member_ended_ && !begin_member()) return 0;
            if (const std::size_t got = unpack(block); got > 0) return got;
            if (!member_ended_ && packed_.pending().empty() && !packed_.more())
                reject("{}: is cut off: its gzip data end too early", name_);
        }
    }

  private:
    // False at the end.  Tapes fill their last block with zeros.
    bool begin_member() {
        do packed_.skip(std::min(packed_.pending().find_first_not_of('\0'), packed_.pending().size()));
        while (packed_.pending().empty() && packed_.more());
        if (packed_.pending().empty()) return false;
        member_ended_ = false;
        inflateReset(&state_);
        return true;
    }

    // Data that wait inside of zlib, for want of room before, come first: whether more bytes come is then not asked.
    std::size_t unpack(std::span<char> block) {
        constexpr std::size_t kMost = std::numeric_limits<uInt>::max();
        const std::size_t given = std::min(packed_.pending().size(), kMost), room = std::min(block.size(), kMost);
        state_.next_in = reinterpret_cast<const Bytef *>(packed_.pending().data());
        state_.avail_in = static_cast<uInt>(given);
        state_.next_out = reinterpret_cast<Bytef *>(block.data());
        state_.avail_out = static_cast<uInt>(room);
        const int code = inflate(&state_, Z_SYNC_FLUSH);
        packed_.skip(given - state_.avail_in);
        member_ended_ = code == Z_STREAM_END;
        const std::size_t got = room - state_.avail_out;
        if (got > 0 || code == Z_OK || code == Z_STREAM_END || code == Z_BUF_ERROR) return got;  // BUF: needs more
        if (code == Z_MEM_ERROR) throw std::bad_alloc();
        reject("{}: its gzip data are damaged: {}", name_, state_.msg != nullptr ? state_.msg : zError(code));
    }

    Bytes packed_;
    std::string name_;
    z_stream state_ = {};
    bool member_ended_ = false;
};

}  // namespace

std::unique_ptr<Stage> gunzip(Bytes packed, const std::string &name) {
    return std::make_unique<Gunzip>(std::move(packed), name);
}

}  // namespace cli
