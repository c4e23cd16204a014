// TQVDM's fields by name: the XML and the text forms.
#include <iterator>
#include <utility>
#include <vector>

#include "driver_devmode/named_field.h"
#include "mox_classes/format/template_string.h"

using namespace driver_devmode;
using Classes::TStringList;
using System::kCodePageUtf8;

namespace {

constexpr UnicodeString TQVDM::*kWrapperMembers[] = {
    &TQVDM::DeviceName, &TQVDM::FormName, &TQVDM::Directory, &TQVDM::FileName, &TQVDM::Target};

TField BlockField(const TFieldInfo& row, QV_DEVMODE* block) {
    auto* const data = reinterpret_cast<std::uint8_t*>(static_cast<DEVMODEW*>(block)) + row.Offset;
    return {&row, data, row.Least};
}

TField WrapperField(const TFieldInfo& row, TQVDM& wrapper) {
    const auto index = static_cast<std::size_t>(&row - WrapperFields().data());
    return {&row, &(wrapper.*kWrapperMembers[index]), row.Least};
}

std::basic_string_view<WCHAR> ViewOf(const UnicodeString& text) {
    return {text.t_str(), static_cast<std::size_t>(text.Length())};
}

// Calls visit(field) for the block's rows from row `first` on, then for the wrapper's.
template <class Visit>
void ForEachField(TQVDM& wrapper, int first, Visit visit) {
    const auto rows = DevModeFields();
    for (std::size_t i = first < 0 ? 0 : static_cast<std::size_t>(first); i < rows.size(); ++i) {
        if (rows[i].Kind != FieldKind::Gap && wrapper.GetDM() != nullptr)
            visit(BlockField(rows[i], wrapper.GetDM()));
    }
    for (const TFieldInfo& row : WrapperFields()) visit(WrapperField(row, wrapper));
}

// Adds fields as elements below a node. Field names differ, so that a node that began empty needs
// no search for an element of the same name.
class TFieldElements {
  public:
    explicit TFieldElements(TXmlNode* node) : node_(node), is_new_(node->ChildCount() == 0) {}

    void Add(const TFieldStrings& name, const UnicodeString& text) {
        TXmlNode* const parent = name.group.IsEmpty() ? node_ : Group(name.group);
        if (is_new_) {
            parent->AddChild(name.leaf)->FValue = text;
        } else {
            parent->SetChild(name.leaf, text, kCodePageUtf8);
        }
    }

  private:
    TXmlNode* Group(const UnicodeString& name) {
        TXmlNode* found = nullptr;
        if (!is_new_) {
            found = node_->FindChild(name, kCodePageUtf8);
        } else {
            for (int i = node_->ChildCount(); i > 0 && found == nullptr; --i) {
                TXmlNode* const child = node_->GetChild(i - 1);
                if (child->ChildCount() == 0) break;
                if (child->FName == name) found = child;
            }
        }
        return found != nullptr ? found : node_->AddChild(name);
    }

    TXmlNode* const node_;
    const bool is_new_;
};

}  // namespace

TField driver_devmode::FindNamedField(TQVDM& wrapper, const TFieldName& name) {
    if (const TFieldInfo* row = FindDevModeField(name); row != nullptr) {
        return wrapper.GetDM() == nullptr ? TField{} : BlockField(*row, wrapper.GetDM());
    }
    if (const TFieldInfo* row = FindWrapperField(name); row != nullptr)
        return WrapperField(*row, wrapper);
    return {};
}

bool TQVDM::ToXmlNode(TXmlNode* node) {
    TFieldElements elements(node);
    ForEachField(*this, 0, [&elements](const TField& field) {
        if (field.row->Listed) elements.Add(StringsOf(*field.row), ReadField(field));
    });
    return true;
}

bool TQVDM::FromXmlNode(TXmlNode* node, TXmlNode* result) {
    InternalFromXmlNode(UnicodeString(), node, result);
    Encode();
    return true;
}

bool TQVDM::InternalFromXmlNode(UnicodeString prefix, TXmlNode* node, TXmlNode* result) {
    // One level of nesting: elements come from a caller and may be nested arbitrarily deep, hence
    // no recursion.
    struct Level {
        TXmlNode* node;
        TXmlNode* result;
        UnicodeString prefix;
        int next = 0;
    };
    std::vector<Level> levels;
    levels.push_back({node, result, std::move(prefix)});
    while (!levels.empty()) {
        Level& level = levels.back();
        TXmlNode* child = level.node->GetChild(level.next++);
        if (child == nullptr) {
            levels.pop_back();
            continue;
        }
        TXmlNode* const out = level.result;
        if (child->ChildCount() > 0) {
            TXmlNode* group = out == nullptr
                                  ? nullptr
                                  : out->SetChild(child->FName, UnicodeString(), kCodePageUtf8);
            levels.push_back({child, group, child->FName});
            continue;
        }
        const TField field = FindNamedField(*this, {ViewOf(level.prefix), ViewOf(child->FName)});
        UnicodeString previous;
        if (field && SetField(field, child->FValue, out == nullptr ? nullptr : &previous) &&
            out != nullptr) {
            out->SetChild(child->FName, previous, kCodePageUtf8);
        }
    }
    return true;
}

UnicodeString TQVDM::ToString(const UnicodeString& separator, int first) {
    TStringList items;
    ForEachField(*this, first, [&items](const TField& field) {
        items.Add(field.row->Name);
        items.Add(ReadField(field));
    });
    return BuildNameValueString(&items, separator, TEXT("="));
}

UnicodeString TQVDM::FromStrings(TStrings* items, int first, const UnicodeString& separator) {
    TStringList changed;
    for (int i = first < 0 ? 0 : first; i < items->GetCount() - 1;) {
        const UnicodeString name = items->Get(i);
        const TField field = FindNamedField(*this, {{}, ViewOf(name)});
        if (!field) {
            ++i;
            continue;
        }
        UnicodeString previous;
        if (SetField(field, items->Get(i + 1), &previous)) {
            changed.Add(name);
            changed.Add(previous);
        }
        i += 2;
    }
    Encode();
    return BuildNameValueString(&changed, separator, TEXT("="));
}

UnicodeString TQVDM::FromString(const UnicodeString& text, int first,
                                const UnicodeString& separator) {
    TStringList items;
    items.SetDelimiter('=');
    items.SetQuoteChar('"');
    items.SetDelimitedText(text);
    return FromStrings(&items, first, separator);
}
