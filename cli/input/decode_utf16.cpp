// UTF-16 with a byte-order mark, as UTF-8 without one.
#include <utf8.h>

#include <utility>

#include "cli/app/diagnostics.h"
#include "cli/input/decode.h"

namespace cli {

namespace {

bool is_first_of_pair(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool is_second_of_pair(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

class Utf16 final : public Stage {
  public:
    Utf16(Bytes text, std::string name, bool little_endian)
        : text_(std::move(text)), name_(std::move(name)), little_endian_(little_endian) {
        text_.skip(2);  // the mark
    }

    std::size_t read(std::span<char> block) override {
        for (;;) {
            if (const std::size_t got = convert(block); got > 0) return got;
            if (whole_character()) refuse("half of a surrogate pair stands alone");
            if (text_.more()) continue;
            if (!text_.pending().empty()) refuse("is cut off within a character");
            return 0;
        }
    }

  private:
    char32_t unit(std::size_t at) const {
        const auto byte = [this, at](std::size_t i) { return static_cast<unsigned char>(text_.pending()[at + i]); };
        return little_endian_ ? byte(0) + 256U * byte(1) : byte(1) + 256U * byte(0);
    }
    bool whole_character() const {
        const std::size_t size = text_.pending().size();
        return size >= 4 || (size >= 2 && !is_first_of_pair(unit(0)));
    }

    // Up to the end of the block, of what has been received, or to a unit that cannot stand where it does.
    std::size_t convert(std::span<char> block) {
        constexpr std::size_t kLongest = 4;
        std::size_t got = 0;
        while (block.size() - got >= kLongest && whole_character()) {
            char32_t character = unit(0);
            const bool pair = is_first_of_pair(character);
            if (is_second_of_pair(character) || (pair && !is_second_of_pair(unit(2)))) break;
            if (pair) character = 0x10000 + ((character - 0xD800) << 10) + (unit(2) - 0xDC00);
            got = static_cast<std::size_t>(utf8::append(character, &block[got]) - block.data());
            text_.skip(pair ? 4 : 2);
            line_ += character == U'\n';
        }
        return got;
    }

    // A character put in its place could go unnoticed.
    [[noreturn]] void refuse(const char *reason) const { reject("{}:{}: {} (UTF-16)", name_, line_, reason); }

    Bytes text_;
    std::string name_;
    bool little_endian_;
    std::size_t line_ = 1;
};

}  // namespace

std::unique_ptr<Stage> little_endian_utf16(Bytes text, const std::string &name) {
    return std::make_unique<Utf16>(std::move(text), name, true);
}

std::unique_ptr<Stage> big_endian_utf16(Bytes text, const std::string &name) {
    return std::make_unique<Utf16>(std::move(text), name, false);
}

}  // namespace cli
