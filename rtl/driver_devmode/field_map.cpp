#include "driver_devmode/field_map.h"

#include "driver_devmode/field_text.h"
#include "driver_devmode/qv_devmode.h"

using namespace driver_devmode;

namespace {

// A field of the public part that the block's own size does not exclude; a size of 0 stands for the
// whole part.
bool IsPublicField(const TFieldInfo& row, const DEVMODEW& dm) {
    const int size = dm.dmSize == 0 ? QV_DEVMODE_EXTRA::kPublicSize : dm.dmSize;
    return row.Offset < QV_DEVMODE_EXTRA::kPublicSize && row.End() <= size;
}

TField FieldOf(const TFieldInfo& row, DEVMODEW* dm) {
    return {&row, reinterpret_cast<std::uint8_t*>(dm) + row.Offset};
}

}  // namespace

void DevModeToXmlNode(DEVMODEW* dm, TXmlNode* node) {
    for (const TFieldInfo& row : DevModeFields()) {
        if (IsPublicField(row, *dm))
            node->SetChild(row.Name, ReadField(FieldOf(row, dm)), System::kCodePageUtf8);
    }
}

void XmlNodeToDevMode(TXmlNode* node, DEVMODEW* dm, TXmlNode* result) {
    const DEVMODEW as_given = *dm;
    for (int i = 0; i < node->ChildCount(); ++i) {
        const TXmlNode& child = *node->GetChild(i);
        const TFieldInfo* row = FindField(DevModeFields(), child.FName);
        UnicodeString previous;
        if (row == nullptr || !IsPublicField(*row, as_given)) continue;
        if (SetField(FieldOf(*row, dm), child.FValue, previous) && result != nullptr) {
            result->SetChild(child.FName, previous, System::kCodePageUtf8);
        }
    }
}
