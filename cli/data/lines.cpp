#include "cli/data/lines.h"

#include "cli/app/diagnostics.h"

namespace cli {

namespace {

constexpr std::size_t kLongestLine = 1 << 20;

}  // namespace

bool LineReader::next(Line &line) {
    std::size_t length = source_.pending().find('\n'), seen = 0;
    while (length == std::string_view::npos) {
        seen = source_.pending().size();
        if (seen > kLongestLine) reject("{}:{}: longer than a million characters; not a CSV", name(), number_ + 1);
        if (!source_.more()) break;
        length = source_.pending().find('\n', seen);
    }
    const std::string_view pending = source_.pending();
    if (pending.empty()) return false;
    line.text = pending.substr(0, length);
    line.end = pending.substr(line.text.size(), 1);
    if (!line.text.empty() && line.text.back() == '\r') {
        line.text.remove_suffix(1);
        line.end = pending.substr(line.text.size(), line.end.size() + 1);
    }
    line.number = ++number_;
    if (line.text.find('\0') != std::string_view::npos)
        reject("{}:{}: holds zero bytes; not a text file, or one in UTF-16 without a byte-order mark", name(), number_);
    source_.skip(line.text.size() + line.end.size());
    return true;
}

}  // namespace cli
