#include "settings/field_json.h"

#include <algorithm>
#include <charconv>

namespace qv {

using driver_devmode::FieldKind;

namespace {

Json ElementJson(const std::string& text) {
    long long number = 0;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, number);
    return parsed.ec == std::errc() && parsed.ptr == end ? Json(number) : Json(text);
}

}  // namespace

Json FieldJson(const Field& field, const UnicodeString& text) {
    const std::string utf8 = ToUtf8(text);
    if (field.IsText()) return utf8;
    if (field.Kind == FieldKind::Bool8) return utf8 == "True";
    if (field.Count == 1) return ElementJson(utf8);
    Json elements = Json::array();
    for (std::size_t at = 0; at <= utf8.size();) {
        const std::size_t end = std::min(utf8.find(',', at), utf8.size());
        elements.push_back(ElementJson(utf8.substr(at, end - at)));
        at = end + 1;
    }
    return elements;
}

}  // namespace qv
