// JSON on standard output: keys in the order in which they were put in, UTF-8.
#pragma once

#include <nlohmann/json.hpp>

#include "base/console.h"

namespace qv {

using Json = nlohmann::ordered_json;

// The version of the shapes that the tool writes; it grows when a key changes its meaning or goes.
constexpr int kJsonSchema = 1;

inline Json Text(const UnicodeString& text) {
    return ToUtf8(text);
}

// A document over several lines: {"schema": 1, ...} with the keys of `body` behind it.
inline void PrintJson(const Json& body) {
    Json document = {{"schema", kJsonSchema}};
    document.update(body);
    PrintLine(document.dump(2, ' ', false, Json::error_handler_t::replace));
}

// One object on one line.
inline void PrintJsonLine(const Json& object) {
    PrintLine(object.dump(-1, ' ', false, Json::error_handler_t::replace));
}

}  // namespace qv
