// Format texts whose insertion points have names: {docname%s} ({pages%d} pages).
//
// A field is '{', a name that ends at the first '%', '#' or '}', a specification up to the next
// '}', and that '}'. The specification may be empty, a printf conversion (%s, %5.2f) or, after '#',
// something that only a fill callback understands. A '{' without all that is ordinary text. Names
// compare without case (ASCII).
//
// Specifications may come from anywhere: one that asks for anything but the one value that it is
// given (%*d, %n, a width above 4096) leaves its field in the text.
#pragma once

#include <windows.h>

#include <concepts>
#include <cstdarg>
#include <map>
#include <memory>
#include <vector>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// What a printf specification consumes.
enum TArgumentType : unsigned char {
    atNone = 0,  // not a usable specification
    atInt32 = 1,
    atInt64 = 2,
    atDouble = 3,
    atPointer = 4,
};

// By the letters at the end of `spec`: %ld is a 32-bit integer, %L and %ll alone are 64-bit ones.
QV_API TArgumentType DetectArgumentType(const WCHAR* spec);

// One value to be formatted and the kind of conversion that may read it; or no value.
struct TFormatValue {
    template <class T>
    explicit TFormatValue(const T& value) : is_set(true), kind(System::FormatKindOf<T>()) {
        Set(System::FormatArgument(value));
    }
    TFormatValue() = default;

    bool is_set = false;
    System::TFormatKind kind = System::TFormatKind::Int32;
    union {
        long long integer = 0;  // of both integer kinds, extended as its type asks for
        double real;
        const void* pointer;
    };

  private:
    void Set(double value) { real = value; }
    void Set(const void* value) { pointer = value; }
    template <std::integral Integer>
    void Set(Integer value) {
        integer = static_cast<long long>(value);
    }
};

struct QV_API TFormatField {
    explicit TFormatField(const UnicodeString& name) : FName(name) {}

    UnicodeString FName;
    UnicodeString FSpec;
    TArgumentType FType = atNone;
};

// The fields of a format text in the order of their first appearance. Filling takes one argument
// for each field with a usable specification, in that order. Not synchronised.
class QV_API TFormatFields {
  public:
    TFormatFields() = default;
    explicit TFormatFields(const WCHAR* format) { Parse(format); }
    TFormatFields(const TFormatFields&) = delete;
    TFormatFields& operator=(const TFormatFields&) = delete;

    // Replaces the set by the fields of `format`; where a name appears again the later
    // specification holds. The result is the number of distinct fields.
    int Parse(const WCHAR* format);
    // The field of that name, made when it is missing. It belongs to the set.
    TFormatField* Set(const UnicodeString& name);
    void Clear();
    int Count() const { return static_cast<int>(fields_.size()); }

    // Formats the argument of the field `name` by `spec`, or by the field's own specification when
    // `spec` is empty. `args` holds one value per field, those without argument included. False,
    // and `out` stays, for an unknown field, one without argument, a specification of another type
    // or one that cannot be used.
    bool FillSingleField(const UnicodeString& name, const UnicodeString& spec,
                         const TFormatValue* args, UnicodeString& out) const;
    // The same with `args` as an array of 64-bit slots, one per field. A 32-bit integer is the low
    // half of its slot, a double its bits, a text the address of units up to a 0. Nothing can be
    // checked here: the caller fills each slot as the field's type asks for.
    bool FillSingleField(const UnicodeString& name, const UnicodeString& spec, void* args,
                         UnicodeString& out) const;

    // `format` with its fields filled. It may be another text than the parsed one, with the same
    // names and specifications of the same types, or none. What cannot be filled stays. The
    // arguments must be those that the parsed text asks for; use printf when it is not trusted.
    UnicodeString vprintf(const WCHAR* format, va_list arguments) const;
    // Checked: a field whose argument is missing or of another type stays.
    template <class... Args>
    UnicodeString printf(const WCHAR* format, const Args&... args) const {
        const TFormatValue values[] = {TFormatValue(args)..., TFormatValue()};
        return Fill(format, values, static_cast<int>(sizeof...(Args)));
    }

  private:
    int Find(const UnicodeString& name) const;
    UnicodeString Fill(const WCHAR* format, const TFormatValue* values, int count) const;
    UnicodeString FillFromTable(const WCHAR* format, const TFormatValue* table) const;

    std::vector<std::unique_ptr<TFormatField>> fields_;
    std::map<UnicodeString, int> positions_;
};

QV_API UnicodeString mox_vformat(const TFormatFields& fields, const WCHAR* format,
                                 va_list arguments);
template <class... Args>
UnicodeString mox_format(const TFormatFields& fields, const WCHAR* format, const Args&... args) {
    return fields.printf(format, args...);
}

// Formats `value` by `spec`, or by `override_spec` when that is neither null nor empty; it must
// then be of the same type. False, and `out` stays, when the types or the value do not fit.
[[nodiscard]] QV_API bool mox_format_value(UnicodeString& out, const WCHAR* spec,
                                           const WCHAR* override_spec, const TFormatValue& value);
template <class T>
[[nodiscard]] bool mox_format_field(UnicodeString& out, const WCHAR* spec,
                                    const WCHAR* override_spec, const T& value) {
    return mox_format_value(out, spec, override_spec, TFormatValue(value));
}

// The index of the '{' of the first field of that name, or of any field when `name` is empty; -1
// when there is none.
QV_API int FindFormatField(const WCHAR* text, const UnicodeString& name);

// Puts the text of a field into `out`, which comes empty; false leaves the field as it is. `name`
// is as written, `spec` begins with '%' or '#' or is empty.
using TFillField = bool (*)(const UnicodeString& name, const UnicodeString& spec,
                            UnicodeString& out, void* context);

// `text` with every field that `fill` knows replaced. `fill` must leave `text` as it is.
QV_API UnicodeString FillFormat(const WCHAR* text, TFillField fill, void* context);
