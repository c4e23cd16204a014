#include "mox_classes/format/format_fields.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <string>
#include <unordered_set>

#include "mox_classes/format/format_scan.h"
#include "mox_classes/text/wide_format.h"

using System::TFormatKind;

namespace {

bool IsLetter(WCHAR unit) {
    return (unit >= 'A' && unit <= 'Z') || (unit >= 'a' && unit <= 'z');
}

bool IsOneOf(WCHAR unit, const char* set) {
    for (; *set != 0; ++set) {
        if (unit == static_cast<unsigned char>(*set)) return true;
    }
    return false;
}

TArgumentType TypeOfLetter(WCHAR letter) {
    if (IsOneOf(letter, "cdiouxX")) return atInt32;
    if (IsOneOf(letter, "eEfgG")) return atDouble;
    if (IsOneOf(letter, "sp")) return atPointer;
    return letter == 'L' ? atInt64 : atNone;
}

TArgumentType TypeOfSizedLetter(WCHAR size, WCHAR letter) {
    if (size == 'h' && IsOneOf(letter, "diouxX")) return atInt32;
    if (size == 'l' && letter == 'l') return atInt64;
    if (size == 'l' && letter == 's') return atPointer;
    if (size == 'l' && IsOneOf(letter, "cdiouxX")) return atInt32;
    if (size == 'L' && IsOneOf(letter, "eEfgG")) return atDouble;
    return atNone;
}

bool Takes(const UnicodeString& spec, TFormatKind kind) {
    return System::FormatTakes(spec.t_str(), &kind, 1);
}

bool IsInteger(const TFormatValue& value) {
    return value.kind == TFormatKind::Int32 || value.kind == TFormatKind::Int64;
}

// "%L" and "%ll" give a size but no conversion. They mean decimal.
bool FormatInt64(UnicodeString& out, UnicodeString spec, long long value) {
    spec.SetLength(spec.Length() - (spec[spec.Length()] == 'L' ? 1 : 2));
    spec += TEXT("I64d");
    if (!Takes(spec, TFormatKind::Int64)) return false;
    out.printf(spec.t_str(), value);
    return true;
}

bool FormatPointer(UnicodeString& out, const UnicodeString& spec, const TFormatValue& value) {
    if (value.kind == TFormatKind::Text && Takes(spec, TFormatKind::Text)) {
        out.printf(spec.t_str(), static_cast<const WCHAR*>(value.pointer));
        return true;
    }
    const bool has_pointer = value.kind == TFormatKind::Text || value.kind == TFormatKind::Pointer;
    if (!has_pointer || !Takes(spec, TFormatKind::Pointer)) return false;
    out.printf(spec.t_str(), value.pointer);
    return true;
}

bool FormatValue(UnicodeString& out, const UnicodeString& spec, TArgumentType type,
                 const TFormatValue& value) {
    if (!value.is_set) return false;
    switch (type) {
        case atInt32:
            if (!IsInteger(value) || !Takes(spec, TFormatKind::Int32)) return false;
            out.printf(spec.t_str(), static_cast<int>(value.integer));
            return true;
        case atInt64:
            return IsInteger(value) && FormatInt64(out, spec, value.integer);
        case atDouble:
            if (value.kind != TFormatKind::Double || !Takes(spec, TFormatKind::Double)) {
                return false;
            }
            out.printf(spec.t_str(), value.real);
            return true;
        case atPointer:
            return FormatPointer(out, spec, value);
        default:
            return false;
    }
}

// Copies `text` and replaces each field that `fill(field, out)` knows. When it does not know a
// field, the '{' stays as text and the search goes on behind it.
template <class Fill>
UnicodeString ReplaceFields(const WCHAR* text, Fill fill) {
    if (text == nullptr) return UnicodeString();
    std::basic_string<WCHAR> result;
    const WCHAR* copied = text;
    TFieldSpan field;
    for (const WCHAR* p = text; FindField(p, field);) {
        UnicodeString out;
        p = field.begin + 1;
        if (!fill(field, out)) continue;
        result.append(copied, field.begin);
        result.append(out.t_str(), static_cast<std::size_t>(out.Length()));
        copied = p = field.end;
    }
    result.append(copied);
    return UnicodeString(result.data(), static_cast<long long>(result.size()));
}

}  // namespace

TArgumentType DetectArgumentType(const WCHAR* spec) {
    if (spec == nullptr || *spec != '%') return atNone;
    const WCHAR* letters = spec + 1;
    while (*letters != 0 && !IsLetter(*letters)) ++letters;
    if (letters[0] == 0) return atNone;
    if (letters[1] == 0) return TypeOfLetter(letters[0]);
    return letters[2] == 0 ? TypeOfSizedLetter(letters[0], letters[1]) : atNone;
}

namespace {

// What a 64-bit slot holds for a field of that type.
TFormatValue ValueOfSlot(TArgumentType type, std::uint64_t slot) {
    switch (type) {
        case atInt32:
            return TFormatValue(static_cast<int>(slot));
        case atInt64:
            return TFormatValue(static_cast<long long>(slot));
        case atDouble:
            return TFormatValue(std::bit_cast<double>(slot));
        case atPointer:
            return TFormatValue(reinterpret_cast<const WCHAR*>(slot));
        default:
            return {};
    }
}

}  // namespace

int TFormatFields::Parse(const WCHAR* format) {
    Clear();
    TFieldSpan field;
    for (const WCHAR* p = format; FindField(p, field); p = field.end) {
        TFormatField* set = Set(field.Name());
        set->FSpec = field.Spec();
        set->FType = DetectArgumentType(set->FSpec.t_str());
    }
    return Count();
}

int TFormatFields::Find(const UnicodeString& name) const {
    const auto found = positions_.find(name.LowerCase());
    return found == positions_.end() ? -1 : found->second;
}

TFormatField* TFormatFields::Set(const UnicodeString& name) {
    const int index = Find(name);
    if (index >= 0) return fields_[static_cast<std::size_t>(index)].get();
    const UnicodeString lower = name.LowerCase();
    fields_.push_back(std::make_unique<TFormatField>(lower));
    try {
        positions_.emplace(lower, Count() - 1);
    } catch (...) {
        fields_.pop_back();
        throw;
    }
    return fields_.back().get();
}

void TFormatFields::Clear() {
    positions_.clear();
    fields_.clear();
}

bool TFormatFields::FillSingleField(const UnicodeString& name, const UnicodeString& spec,
                                    const TFormatValue* args, UnicodeString& out) const {
    const int index = Find(name);
    if (index < 0) return false;
    const TFormatField& field = *fields_[static_cast<std::size_t>(index)];
    if (spec.Length() == 0) return FormatValue(out, field.FSpec, field.FType, args[index]);
    if (DetectArgumentType(spec.t_str()) != field.FType) return false;
    return FormatValue(out, spec, field.FType, args[index]);
}

bool TFormatFields::FillSingleField(const UnicodeString& name, const UnicodeString& spec,
                                    void* args, UnicodeString& out) const {
    const int index = Find(name);
    if (index < 0) return false;
    std::vector<TFormatValue> table(fields_.size());
    table[static_cast<std::size_t>(index)] =
        ValueOfSlot(fields_[static_cast<std::size_t>(index)]->FType,
                    static_cast<const std::uint64_t*>(args)[index]);
    return FillSingleField(name, spec, table.data(), out);
}

UnicodeString TFormatFields::FillFromTable(const WCHAR* format, const TFormatValue* table) const {
    // Only names whose length some field has are made into strings: a hostile text of nothing but
    // '{' has a name at each unit.
    std::unordered_set<std::ptrdiff_t> lengths;
    for (const auto& field : fields_) lengths.insert(field->FName.Length());
    return ReplaceFields(format, [&](const TFieldSpan& field, UnicodeString& out) {
        if (lengths.count(field.spec - field.begin - 1) == 0) return false;
        return FillSingleField(field.Name(), field.Spec(), table, out);
    });
}

UnicodeString TFormatFields::vprintf(const WCHAR* format, va_list arguments) const {
    va_list rest;
    va_copy(rest, arguments);
    std::vector<TFormatValue> table;
    for (const auto& field : fields_) {
        switch (field->FType) {
            case atInt32:
                table.emplace_back(va_arg(rest, int));
                break;
            case atInt64:
                table.emplace_back(va_arg(rest, long long));
                break;
            case atDouble:
                table.emplace_back(va_arg(rest, double));
                break;
            case atPointer:
                table.emplace_back(va_arg(rest, const WCHAR*));
                break;
            default:
                table.emplace_back();
                break;
        }
    }
    va_end(rest);
    return FillFromTable(format, table.data());
}

UnicodeString TFormatFields::Fill(const WCHAR* format, const TFormatValue* values,
                                  int count) const {
    std::vector<TFormatValue> table;
    int taken = 0;
    for (const auto& field : fields_) {
        const bool takes = field->FType != atNone && taken < count;
        table.push_back(takes ? values[taken++] : TFormatValue());
    }
    return FillFromTable(format, table.data());
}

UnicodeString mox_vformat(const TFormatFields& fields, const WCHAR* format, va_list arguments) {
    return fields.vprintf(format, arguments);
}

bool mox_format_value(UnicodeString& out, const WCHAR* spec, const WCHAR* override_spec,
                      const TFormatValue& value) {
    const TArgumentType type = DetectArgumentType(spec);
    if (override_spec != nullptr && *override_spec != 0) {
        if (DetectArgumentType(override_spec) != type) return false;
        spec = override_spec;
    }
    return FormatValue(out, spec, type, value);
}

int FindFormatField(const WCHAR* text, const UnicodeString& name) {
    const UnicodeString lower = name.LowerCase();
    TFieldSpan field;
    for (const WCHAR* p = text; FindField(p, field); p = field.end) {
        if (lower.Length() == 0 || field.Name().LowerCase() == lower) {
            return static_cast<int>(field.begin - text);
        }
    }
    return -1;
}

UnicodeString FillFormat(const WCHAR* text, TFillField fill, void* context) {
    return ReplaceFields(text, [&](const TFieldSpan& field, UnicodeString& out) {
        return fill(field.Name(), field.Spec(), out, context);
    });
}
