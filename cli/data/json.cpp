#include "cli/data/json.h"

#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "cli/app/utf8.h"

namespace cli {

namespace {

using nlohmann::ordered_json;

void make_utf8(ordered_json &value) {
    if (value.is_string()) value = as_utf8(value.get_ref<const std::string &>());
    if (value.is_structured())
        for (ordered_json &part : value) make_utf8(part);
}

}  // namespace

void write_json(ordered_json document, Output &out) {
    make_utf8(document);
    out.write(document.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n");
}

}  // namespace cli
