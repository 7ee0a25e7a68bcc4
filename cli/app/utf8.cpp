#include "cli/app/utf8.h"

#include <utf8.h>

#include <iterator>

namespace cli {

std::string as_utf8(const std::string &text) {
    if (utf8::is_valid(text.begin(), text.end())) return text;
    std::string result;
    for (const char c : text) utf8::append(static_cast<unsigned char>(c), std::back_inserter(result));
    return result;
}

}  // namespace cli
