// Zstandard (RFC 8878): frames one after the other.
#include <zstd.h>
#include <zstd_errors.h>

#include <algorithm>
#include <new>
#include <utility>

#include "cli/app/diagnostics.h"
#include "cli/input/decode.h"

namespace cli {

namespace {

class Unzstd final : public Stage {
  public:
    Unzstd(Bytes packed, std::string name) : packed_(std::move(packed)), name_(std::move(name)) {
        if (!state_) throw std::bad_alloc();
    }

    std::size_t read(std::span<char> block) override {
        for (;;) {
            if (const std::size_t got = unpack(block); got > 0) return got;
            if (!packed_.pending().empty() || packed_.more()) continue;
            if (!frame_ended_) reject("{}: is cut off: its zstd data end too early", name_);
            return 0;
        }
    }

  private:
    // libzstd drops what it has unpacked before an error in the same call: it gets the content of one block at a time,
    // without the header of the next block, which is in what it asks for.
    std::size_t unpack(std::span<char> block) {
        ZSTD_inBuffer in = {packed_.pending().data(), std::min(packed_.pending().size(), wanted_), 0};
        if (frame_ended_ && in.size == 0) return 0;
        ZSTD_outBuffer out = {block.data(), block.size(), 0};
        const std::size_t left = ZSTD_decompressStream(state_.get(), &out, &in);
        if (ZSTD_isError(left) != 0) refuse(left);
        packed_.skip(in.pos);
        frame_ended_ = left == 0;
        wanted_ = std::max(left, 2 * kBlockHeader) - kBlockHeader;
        return out.pos;
    }

    [[noreturn]] void refuse(std::size_t result) const {
        const ZSTD_ErrorCode code = ZSTD_getErrorCode(result);
        if (code == ZSTD_error_memory_allocation) throw std::bad_alloc();
        if (code == ZSTD_error_frameParameter_windowTooLarge)
            reject("{}: its zstd data need a window of more than 128 MiB; pack them with --long=27 or less", name_);
        reject("{}: its zstd data are damaged: {}", name_, ZSTD_getErrorString(code));
    }

    static constexpr std::size_t kBlockHeader = 3;  // bytes

    Bytes packed_;
    std::string name_;
    std::unique_ptr<ZSTD_DStream, std::size_t (*)(ZSTD_DStream *)> state_{ZSTD_createDStream(), ZSTD_freeDStream};
    std::size_t wanted_ = kBlockHeader;
    bool frame_ended_ = false;
};

}  // namespace

std::unique_ptr<Stage> unzstd(Bytes packed, const std::string &name) {
    return std::make_unique<Unzstd>(std::move(packed), name);
}

}  // namespace cli
