#include "driver_devmode/field_check.h"

#include <algorithm>
#include <iterator>

#include "driver_devmode/named_field.h"
#include "mox_classes/containers/string_list.h"
#include "mox_classes/text/sysutils_numbers.h"

namespace driver_devmode {

namespace {

using enum FieldKind;

bool IsTruth(const UnicodeString& text) {
    static constexpr const WCHAR* kWords[] = {TEXT("0"),    TEXT("1"),   TEXT("false"),
                                              TEXT("true"), TEXT("off"), TEXT("on")};
    const UnicodeString word = text.Trim().LowerCase();
    return std::any_of(std::begin(kWords), std::end(kWords),
                       [&](const WCHAR* known) { return word == known; });
}

// Whether the text is a value. Setting would take another word as 0 or as true.
bool SaysWhatItIs(const TFieldInfo& row, const UnicodeString& element) {
    if (row.Kind == Bool8) return IsTruth(element);
    std::int64_t number = 0;
    return row.Values != ValueTable::None || Sysutils::TryStrToInt64(element, number);
}

TFieldCheck CheckNumbers(const TField& field, const UnicodeString& text) {
    Classes::TStringList items;
    Classes::TStrings& elements = items;
    elements.SetCommaText(text);
    if (elements.GetCount() == 0) return TFieldCheck::BadValue;
    if (elements.GetCount() > field.row->Count) return TFieldCheck::TooMany;
    for (int i = 0; i < elements.GetCount(); ++i) {
        if (!SaysWhatItIs(*field.row, elements.Get(i))) return TFieldCheck::BadValue;
    }
    return SetField(field, text, nullptr) ? TFieldCheck::Taken : TFieldCheck::BadValue;
}

TFieldCheck CheckText(const TField& field, const UnicodeString& text, TQVDM& wrapper) {
    const UnicodeString before = ReadField(field);
    if (field.row->Kind == WideText) {
        // The next encoding writes it over, whatever its value is.
        SetField(field, TEXT("?"), nullptr);
        wrapper.Encode();
        const bool kept = ReadField(field) == TEXT("?");
        SetField(field, before, nullptr);
        if (!kept) return TFieldCheck::NotKept;
    }
    SetField(field, text, nullptr);
    if (!wrapper.Encode()) return TFieldCheck::NoRoom;
    if (!wrapper.GetDM()->IsValid()) {
        // A block with another identifier is not stored.
        SetField(field, before, nullptr);
        return TFieldCheck::BadValue;
    }
    // The block has 32 units for the names that the wrapper holds whole.
    TQVDM decoded(wrapper.GetDM());
    const TField stored = FindNamedField(
        decoded, {{}, {field.row->Name, std::char_traits<WCHAR>::length(field.row->Name)}});
    return ReadField(stored) == text ? TFieldCheck::Taken : TFieldCheck::Cut;
}

}  // namespace

TFieldCheck CheckField(TQVDM& scratch, const TFieldName& name, const UnicodeString& text) {
    const TField field = FindNamedField(scratch, name);
    if (!field) return TFieldCheck::UnknownName;
    return field.row->IsText() ? CheckText(field, text, scratch) : CheckNumbers(field, text);
}

}  // namespace driver_devmode
