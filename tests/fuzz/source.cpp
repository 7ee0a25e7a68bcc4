// The stages of the companion's input: any bytes, unpacked and as UTF-8, the same in pieces as in one.
#include <algorithm>

#include "cli/app/diagnostics.h"
#include "cli/input/decode.h"
#include "input.h"

using namespace fuzz;

constexpr std::size_t kEnough = 1 << 22;  // a thousand bytes can hold many millions

// Bytes as they come through a pipe.
class Pieces final : public cli::Stage {
  public:
    Pieces(std::string_view bytes, std::size_t length) : left_(bytes), length_(length) {}
    std::size_t read(std::span<char> block) override {
        const std::size_t count = left_.copy(block.data(), std::min(block.size(), length_));
        left_.remove_prefix(count);
        return count;
    }

  private:
    std::string_view left_;
    std::size_t length_;
};

struct Decoded {
    std::string text;
    bool refused = false;
};

static Decoded decoded(std::string_view bytes, std::size_t piece) {
    Decoded result;
    try {
        cli::Bytes source(std::make_unique<Pieces>(bytes, piece));
        const bool changed = cli::decode(source, "input");
        do {
            result.text += source.pending();
            source.skip(source.pending().size());
        } while (result.text.size() < kEnough && source.more());
        check(changed || result.text == bytes);
    } catch (const cli::Failure &) {  // tells of bad input
        result.refused = true;
    }
    return result;
}

static std::string rest(std::string_view bytes) {
    cli::Bytes source(std::make_unique<Pieces>(bytes, bytes.size()));
    cli::decode(source, "input");
    return source.rest();
}

void fuzz::test(Input &input) {
    const std::size_t piece = input.ConsumeIntegralInRange<std::size_t>(1, 40);
    const std::string bytes = input.ConsumeRemainingBytesAsString();
    const Decoded pieces = decoded(bytes, piece), whole = decoded(bytes, bytes.size());
    const std::size_t common = std::min({pieces.text.size(), whole.text.size(), kEnough});
    check(pieces.text.compare(0, common, whole.text, 0, common) == 0);
    if (common == kEnough) return;
    check(pieces.refused == whole.refused);
    if (whole.refused) return;  // of the block that is refused, libzstd drops only what came in the same piece
    check(pieces.text.size() == whole.text.size() && rest(bytes) == whole.text);
}
