#include "driver_devmode/field_map.h"

#include "driver_devmode/field_table.h"
#include "driver_devmode/field_text.h"
#include "driver_devmode/qv_devmode.h"

using namespace driver_devmode;

namespace {

// A field of the public part that the block's own size does not exclude; a size of 0 stands for the
// whole part.
bool IsPublicField(const TFieldInfo& row, WORD stated_size) {
    const int size = stated_size == 0 ? QV_DEVMODE_EXTRA::kPublicSize : stated_size;
    return row.Offset < QV_DEVMODE_EXTRA::kPublicSize && row.End() <= size;
}

TField FieldOf(const TFieldInfo& row, DEVMODEW* dm) {
    return {&row, reinterpret_cast<std::uint8_t*>(dm) + row.Offset};
}

}  // namespace

void DevModeToXmlNode(DEVMODEW* dm, TXmlNode* node) {
    const bool is_new = node->ChildCount() == 0;
    for (const TFieldInfo& row : DevModeFields()) {
        if (!IsPublicField(row, dm->dmSize)) continue;
        const UnicodeString& name = StringsOf(row).name;
        const UnicodeString text = ReadField(FieldOf(row, dm));
        if (is_new) {
            node->AddChild(name)->FValue = text;
        } else {
            node->SetChild(name, text, System::kCodePageUtf8);
        }
    }
}

void XmlNodeToDevMode(TXmlNode* node, DEVMODEW* dm, TXmlNode* result) {
    const WORD size = dm->dmSize;  // a child may change it
    for (int i = 0; i < node->ChildCount(); ++i) {
        const TXmlNode& child = *node->GetChild(i);
        const UnicodeString& name = child.FName;
        const TFieldInfo* row =
            FindDevModeField({{}, {name.t_str(), static_cast<std::size_t>(name.Length())}});
        UnicodeString previous;
        if (row == nullptr || !IsPublicField(*row, size)) continue;
        if (SetField(FieldOf(*row, dm), child.FValue, result != nullptr ? &previous : nullptr) &&
            result != nullptr) {
            result->SetChild(child.FName, previous, System::kCodePageUtf8);
        }
    }
}
