#include "cli/app/sections.h"

#include <algorithm>
#include <cstddef>

#include "cli/app/diagnostics.h"

namespace cli {

int checked(int result) {
    if (result < 0) fail("{}", mensura_sos_message(result));
    return result;
}

int design_sections(const mensura_sos_request &request, Sections &sections) {
    sections.resize(MENSURA_SOS_MAX_SECTIONS);
    const int count = mensura_sos_design(&request, sections.data()->data(), MENSURA_SOS_MAX_SECTIONS);
    sections.resize(static_cast<std::size_t>(std::max(count, 0)));
    return count;
}

}  // namespace cli
