#include "settings/fields.h"

#include "base/suggestion.h"
#include "driver_devmode/qv_devmode.h"

namespace qv {

using driver_devmode::FieldKind;

namespace {

constexpr std::basic_string_view<WCHAR> kPublicPrefix = TEXT("dm");

driver_devmode::TFieldName Whole(std::basic_string_view<WCHAR> name) {
    return {{}, name};
}

std::basic_string_view<WCHAR> View(const UnicodeString& text) {
    return {text.t_str(), static_cast<std::size_t>(text.Length())};
}

std::vector<const Field*> CollectFields() {
    std::vector<const Field*> fields;
    for (const Field& field : driver_devmode::DevModeFields())
        if (field.Kind != FieldKind::Gap) fields.push_back(&field);
    for (const Field& field : driver_devmode::WrapperFields())
        if (FindField(field.Name) == &field) fields.push_back(&field);
    return fields;
}

}  // namespace

const std::vector<const Field*>& AllFields() {
    static const std::vector<const Field*> fields = CollectFields();
    return fields;
}

const Field* FindField(const UnicodeString& name) {
    if (const Field* field = driver_devmode::FindDevModeField(Whole(View(name))); field != nullptr)
        return field;
    const Field* const field = driver_devmode::FindWrapperField(Whole(View(name)));
    if (field == nullptr) return nullptr;
    const UnicodeString stored_name = UnicodeString(kPublicPrefix.data()) + name;
    const Field* const stored = driver_devmode::FindDevModeField(Whole(View(stored_name)));
    return stored != nullptr ? stored : field;
}

driver_devmode::TFieldName NameToSet(const Field& field) {
    const std::basic_string_view<WCHAR> name = field.Name;
    if (!name.starts_with(kPublicPrefix)) return Whole(name);
    const auto wrapper_name = Whole(name.substr(kPublicPrefix.size()));
    return driver_devmode::FindWrapperField(wrapper_name) != nullptr ? wrapper_name : Whole(name);
}

std::string NameOf(const Field& field) {
    return ToUtf8(field.Name);
}

std::string Hint(const UnicodeString& unknown) {
    std::vector<std::string> names;
    for (const Field* field : AllFields()) names.push_back(NameOf(*field));
    return Suggestion(OneLine(unknown), names);
}

const Field& RequireField(const std::string& name) {
    const Field* const field = FindField(FromUtf8(name));
    if (field != nullptr) return *field;
    throw Failure("no field has the name " + Quoted(name) + Hint(FromUtf8(name)));
}

bool IsPublic(const Field& field) {
    return field.Kind != FieldKind::String && field.Offset < QV_DEVMODE_EXTRA::kPublicSize;
}

bool IsLayout(const Field& field) {
    const std::string name = NameOf(field);
    return name == "dmSize" || name == "dmDriverExtra" || name == "exID";
}

}  // namespace qv
