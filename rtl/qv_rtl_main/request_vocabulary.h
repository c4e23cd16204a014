// What a request can say: its elements, and what each holds. The handlers take their names from
// here, the strict reading allows what stands here, and a test compares docs/schema/request.xsd
// with it. docs/contributing.md says how an element is added.
#pragma once

#include <windows.h>

#include <cstddef>
#include <string_view>

namespace request {

using TView = std::basic_string_view<WCHAR>;

enum class TContent : unsigned char {
    Elements,  // the elements of the rows below it, each once; no text
    Repeated,  // the same, each as often as wanted
    Text,
    AnyTexts,  // elements of any name, each with a text
    Fields     // settings, by the names of their rows (driver_devmode/field_rows.h)
};

enum class TNeed : unsigned char { Optional, Needed };

struct TElement {
    // The names from the root down, with a slash between them.
    TView path;
    TContent content;
    // Without an element that is needed the one around it has no effect.
    TNeed need = TNeed::Optional;

    constexpr std::size_t NameBegin() const { return path.rfind(WCHAR{'/'}) + 1; }
    constexpr TView Name() const { return path.substr(NameBegin()); }
    // Empty for a root.
    constexpr TView Parent() const {
        return NameBegin() == 0 ? TView() : path.substr(0, NameBegin() - 1);
    }
};

// A query is answered in this order.
inline constexpr TElement kElements[] = {
    {TEXT("query"), TContent::Elements},
    {TEXT("query/global"), TContent::Elements},
    {TEXT("query/monitor"), TContent::Elements},
    {TEXT("query/monitor/name"), TContent::Text},
    {TEXT("query/driver"), TContent::Elements},
    {TEXT("query/driver/name"), TContent::Text},
    {TEXT("query/printer"), TContent::Elements},
    {TEXT("query/printer/driver"), TContent::Text},
    {TEXT("update"), TContent::Repeated},
    {TEXT("update/global"), TContent::AnyTexts},
    {TEXT("update/printer"), TContent::Elements},
    {TEXT("update/printer/name"), TContent::Text, TNeed::Needed},
    {TEXT("update/printer/devmode"), TContent::Fields, TNeed::Needed},
};

// Attributes of every root, and the encodings that the first of them knows; empty is the first.
inline constexpr TView kRootAttributes[] = {TEXT("encoding"), TEXT("linebreak"),
                                            TEXT("indentation")};
inline constexpr TView kEncodings[] = {TEXT("UTF-8"), TEXT("UTF-16")};

constexpr const TElement* Find(TView parent, TView name) {
    for (const TElement& element : kElements)
        if (element.Parent() == parent && element.Name() == name) return &element;
    return nullptr;
}

// The name at the end of a path that must stand in the table: another one does not compile.
consteval const WCHAR* NameOf(TView path) {
    for (const TElement& element : kElements)
        if (element.path == path) return element.Name().data();
    throw "no such element";
}

// Whether `rows`, which have a name each, are the elements below `parent` in their order.
template <class Rows>
consteval bool AreAllBelow(TView parent, const Rows& rows) {
    std::size_t count = 0;
    for (const TElement& element : kElements) {
        if (element.Parent() != parent) continue;
        if (count == std::size(rows) || element.Name() != TView(rows[count].name)) return false;
        ++count;
    }
    return count == std::size(rows);
}

}  // namespace request
