#include "driver_global/catalogues.h"

#include "mox_classes/text/log_here.h"
#include "xml/xml_doc.h"
#include "xml/xml_node.h"
#include "xml/xml_resource.h"

using Mox::LogHere;
using System::kCodePageUtf8;

namespace {

constexpr WCHAR kMark = '*';  // in front of the default's name; alone it stands for all entries

TXmlNode* ResourceRoot() {
    TXmlDoc* resource = GetXmlRes();
    if (resource == nullptr) return nullptr;
    if (resource->IsDocEmpty()) resource->ReadFile();
    return resource->FRoot;
}

bool IsMarked(const UnicodeString& name) {
    return name.Length() > 0 && name[1] == kMark;
}

UnicodeString WithoutMark(const UnicodeString& name) {
    return name.SubString(2, name.Length());
}

TXmlNode* FindEntry(TXmlNode& list, const UnicodeString& name) {
    return list.FindChild(name, kCodePageUtf8);
}

// The entry at `index`; null outside. The first call makes ReadData load the entries.
template <class Catalogue, class Entry>
Entry* EntryAt(Catalogue& catalogue, std::vector<Entry>& data, int index) {
    if (data.empty() && catalogue.GetCount() > 0 && !catalogue.ReadData()) return nullptr;
    return index >= 0 && index < catalogue.GetCount() ? &data[static_cast<std::size_t>(index)]
                                                      : nullptr;
}

template <class Catalogue, class Match>
int IndexWhere(Catalogue& catalogue, Match match) {
    for (int i = 0; i < catalogue.GetCount(); ++i) {
        const auto* entry = catalogue.Get(i);
        if (entry == nullptr) return -1;
        if (match(*entry)) return i;
    }
    return -1;
}

int Area(const TQVPaperData& paper) {
    return paper.X * paper.Y;
}

}  // namespace

TQVSizes::~TQVSizes() = default;

void TQVSizes::Close() {
    Count = 0;
    Items.reset();
    DefaultIndex = -1;
}

TXmlNode* TQVSizes::ListNode() const {
    TXmlNode* root = ResourceRoot();
    return root == nullptr ? nullptr : root->Find(ListName, kCodePageUtf8);
}

bool TQVSizes::Open(UnicodeString list_name, UnicodeString language, UnicodeString set_name) {
    if (Items != nullptr || list_name.Length() == 0) return false;
    Language = language.Length() == 0 ? UnicodeString(TEXT("en")) : language;
    SetName = set_name.Length() == 0 ? UnicodeString(TEXT("standard")) : set_name;
    ListName = list_name;
    TXmlNode* root = ResourceRoot();
    if (root == nullptr) return false;
    const TXmlNode* set = root->Find(UnicodeString(TEXT("fax\\")) + SetName, kCodePageUtf8);
    if (set == nullptr) set = root->Find(TEXT("fax\\standard"), kCodePageUtf8);
    if (set == nullptr) return false;
    if (TakeItems(set->AttrGetString(ListName, kCodePageUtf8))) return true;
    TQVSizes::Close();
    return false;
}

bool TQVSizes::TakeItems(const UnicodeString& names) {
    Items = std::make_unique<Classes::TStringList>();
    Items->SetCommaText(names);
    Count = Items->GetCount();
    if (Count == 0) return false;
    Classes::TStrings& items = *Items;
    if (items.Get(0) == UnicodeString(kMark)) return TakeAllOfList();
    for (int i = 0; i < Count; ++i) {
        const UnicodeString name = items.Get(i);
        if (!IsMarked(name)) continue;
        items.Put(i, WithoutMark(name));
        DefaultIndex = i;
    }
    return true;
}

bool TQVSizes::TakeAllOfList() {
    Classes::TStrings& items = *Items;
    UnicodeString default_name;
    if (Count == 2 && IsMarked(items.Get(1))) default_name = WithoutMark(items.Get(1));
    const TXmlNode* list = ListNode();
    if (list == nullptr) return false;
    items.Clear();
    Count = list->ChildCount();
    for (int i = 0; i < Count; ++i) {
        const UnicodeString& name = list->GetChild(i)->FName;
        items.Add(name);
        if (DefaultIndex < 0 && name == default_name) DefaultIndex = i;
    }
    return true;
}

void TQVSizes::FillSize(TQVSizeData& entry, const TXmlNode& node) const {
    entry.Name = node.FName;
    entry.Text = node.AttrGetString(Language, kCodePageUtf8);
    if (entry.Text.Length() == 0) entry.Text = node.AttrGetString(TEXT("en"), kCodePageUtf8);
    entry.X = static_cast<short>(node.AttrGetInteger(TEXT("x"), kCodePageUtf8));
    entry.Y = static_cast<short>(node.AttrGetInteger(TEXT("y"), kCodePageUtf8));
}

TQVPapers::~TQVPapers() = default;

void TQVPapers::Close() {
    data_.clear();
    TQVSizes::Close();
}

bool TQVPapers::ReadData() {
    data_.clear();
    TXmlNode* list = ListNode();
    if (list == nullptr) {
        LogHere('X', TEXT("Cannot find out paper node"));
        Close();
        return false;
    }
    std::vector<TQVPaperData> papers(static_cast<std::size_t>(Count));
    for (int i = 0; i < Count; ++i) {
        const UnicodeString name = static_cast<Classes::TStrings&>(*Items).Get(i);
        const TXmlNode* node = FindEntry(*list, name);
        if (node == nullptr) {
            LogHere('X', UnicodeString().sprintf(TEXT("Cannot find out child node %s"), name));
            Close();
            return false;
        }
        TQVPaperData& paper = papers[static_cast<std::size_t>(i)];
        FillSize(paper, *node);
        paper.Id = static_cast<short>(node->AttrGetInteger(TEXT("id"), kCodePageUtf8));
    }
    data_ = std::move(papers);
    return true;
}

TQVPaperData* TQVPapers::Get(int index) {
    return EntryAt(*this, data_, index);
}

int TQVPapers::IndexOf(short id) {
    return IndexWhere(*this, [id](const TQVPaperData& paper) { return paper.Id == id; });
}

int TQVPapers::IndexOfBestFit(int width, int height) {
    if (Count <= 1) return Count - 1;
    int smallest = -1;
    int largest = -1;
    for (int i = 0; i < Count; ++i) {
        const TQVPaperData* paper = Get(i);
        if (paper == nullptr) return -1;
        if (largest < 0 || Area(*paper) > Area(*Get(largest))) largest = i;
        const bool holds = paper->X >= width && paper->Y >= height;
        if (holds && (smallest < 0 || Area(*paper) < Area(*Get(smallest)))) smallest = i;
    }
    return smallest >= 0 ? smallest : largest;
}

TQVResolutions::~TQVResolutions() = default;

void TQVResolutions::Close() {
    data_.clear();
    TQVSizes::Close();
}

bool TQVResolutions::ReadData() {
    data_.clear();
    TXmlNode* list = ListNode();
    if (list == nullptr) {
        Close();
        return false;
    }
    std::vector<TQVSizeData> resolutions(static_cast<std::size_t>(Count));
    for (int i = 0; i < Count; ++i) {
        const TXmlNode* node = FindEntry(*list, static_cast<Classes::TStrings&>(*Items).Get(i));
        if (node == nullptr) {
            Close();
            return false;
        }
        FillSize(resolutions[static_cast<std::size_t>(i)], *node);
    }
    data_ = std::move(resolutions);
    return true;
}

TQVSizeData* TQVResolutions::Get(int index) {
    return EntryAt(*this, data_, index);
}

int TQVResolutions::IndexOf(int x, int y) {
    return IndexWhere(*this,
                      [x, y](const TQVSizeData& entry) { return entry.X == x && entry.Y == y; });
}
