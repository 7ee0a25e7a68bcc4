#include "cli/input/lines.h"

#include <algorithm>

#include "cli/app/diagnostics.h"

namespace cli {

namespace {

constexpr std::size_t kLongestLine = 1 << 20;
constexpr auto kNowhere = std::string_view::npos;

}  // namespace

bool LineReader::next_is_received() {
    if (length_ == kNowhere) length_ = source_.pending().find('\n');
    return length_ != kNowhere;
}

bool LineReader::next(Line &line) {
    std::size_t seen = 0;
    while (!next_is_received()) {
        seen = source_.pending().size();
        if (seen > kLongestLine) reject("{}:{}: longer than a million characters; not a CSV", name(), number_ + 1);
        if (!source_.more()) break;
        length_ = source_.pending().find('\n', seen);
    }
    const std::string_view pending = source_.pending();
    if (pending.empty()) return false;
    const std::size_t length = std::min(length_, pending.size()), whole = std::min(length + 1, pending.size());
    const std::size_t text = length > 0 && pending[length - 1] == '\r' ? length - 1 : length;
    line = {pending.substr(0, text), pending.substr(text, whole - text), ++number_};
    if (checked_ < whole) refuse_zeros(whole);
    source_.skip(whole);
    checked_ -= whole;
    length_ = kNowhere;
    return true;
}

// Looks through all that has been received at once.
void LineReader::refuse_zeros(std::size_t length) {
    const std::string_view pending = source_.pending();
    checked_ = std::min(pending.find('\0', checked_), pending.size());
    if (checked_ < length)
        reject("{}:{}: holds zero bytes; not a text file, or one in UTF-16 without a byte-order mark", name(), number_);
}

}  // namespace cli
