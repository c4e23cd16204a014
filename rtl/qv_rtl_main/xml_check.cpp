#include "qv_rtl_main/xml_check.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "driver_devmode/field_check.h"
#include "mox_classes/containers/streams.h"
#include "qv_rtl_main/xml_request_load.h"

namespace {

using driver_devmode::TFieldCheck;
using TView = std::basic_string_view<WCHAR>;

TView ViewOf(const UnicodeString& text) {
    return {text.t_str(), static_cast<std::size_t>(text.Length())};
}

UnicodeString Quoted(const UnicodeString& name) {
    constexpr int kMost = 60;
    const bool cut = name.Length() > kMost;
    return TEXT("'") + name.SubString(1, kMost) + (cut ? TEXT("...'") : TEXT("'"));
}

constexpr TView kRootAttributes[] = {TEXT("encoding"), TEXT("linebreak"), TEXT("indentation")};

// A child of a query and the one child that it may have; empty: none.
struct TFilter {
    TView element, filter;
};
constexpr TFilter kQuery[] = {{TEXT("global"), {}},
                              {TEXT("monitor"), TEXT("name")},
                              {TEXT("driver"), TEXT("name")},
                              {TEXT("printer"), TEXT("driver")}};

// Where everything stands that a complaint can be about.
class TSource final : public TXmlParseObserver {
  public:
    void Opened(const TXmlNode& node, int position) override {
        spans_[&node] = {position, position};
    }
    void TextBegins(const TXmlNode& node, int position) override { spans_[&node].text = position; }
    void Passed(int position) override { passed_.push_back(position); }

    int TagOf(const TXmlNode& node) const { return spans_.at(&node).tag; }
    int TextOf(const TXmlNode& node) const { return spans_.at(&node).text; }
    std::span<const int> Passed() const { return passed_; }

  private:
    struct TSpan {
        int tag, text;
    };
    std::unordered_map<const TXmlNode*, TSpan> spans_;
    std::vector<int> passed_;
};

struct TDiagnostic {
    int position;
    UnicodeString text;
};

class TChecker {
  public:
    explicit TChecker(const TSource& source) : source_(source) {}

    // In the order of the text.
    std::vector<TDiagnostic> Check(const TXmlNode& root);

  private:
    void Say(int position, const UnicodeString& text) { diagnostics_.push_back({position, text}); }
    void SayOf(const TXmlNode& node, const UnicodeString& text) { Say(source_.TagOf(node), text); }
    void CheckRoot(const TXmlNode& root);
    void NoAttributes(const TXmlNode& node);
    void NoText(const TXmlNode& node);
    void Group(const TXmlNode& node);
    void Leaf(const TXmlNode& node);
    void CheckQuery(const TXmlNode& root);
    void CheckUpdate(const TXmlNode& root);
    void CheckPrinter(const TXmlNode& printer);
    void CheckFields(const TXmlNode& devmode);
    void CheckField(TQVDM& scratch, TView group, const TXmlNode& leaf);
    // The first child of that name counts; says so of another. False for a child of another name.
    bool IsOnly(const TXmlNode& child, TView name, bool& seen);
    void SayUnknown(const TXmlNode& child);

    const TSource& source_;
    std::vector<TDiagnostic> diagnostics_;
};

void TChecker::SayUnknown(const TXmlNode& child) {
    SayOf(child, TEXT("unknown element ") + Quoted(child.FName) + TEXT(" in ") +
                     Quoted(child.GetOwner()->FName));
}

void TChecker::NoAttributes(const TXmlNode& node) {
    for (int i = 0; i < node.AttributeCount(); ++i) {
        SayOf(node, TEXT("the attribute ") + Quoted(node.GetAttribute(i)->FName) + TEXT(" of ") +
                        Quoted(node.FName) + TEXT(" is not used"));
    }
}

void TChecker::NoText(const TXmlNode& node) {
    if (node.FValue.Length() > 0)
        Say(source_.TextOf(node), TEXT("the text in ") + Quoted(node.FName) + TEXT(" is not used"));
    for (int i = 0; i < node.ChildCount(); ++i) {
        const TXmlNode& child = *node.GetChild(i);
        if (child.FTail.Length() == 0) continue;
        SayOf(child, TEXT("the text behind ") + Quoted(child.FName) + TEXT(" is not used"));
    }
}

// An element that counts for its children alone.
void TChecker::Group(const TXmlNode& node) {
    NoAttributes(node);
    NoText(node);
}

// An element that counts for its text alone.
void TChecker::Leaf(const TXmlNode& node) {
    NoAttributes(node);
    if (node.ChildCount() > 0) {
        SayOf(*node.GetChild(0), TEXT("elements in ") + Quoted(node.FName) + TEXT(" are not used"));
    }
}

bool TChecker::IsOnly(const TXmlNode& child, TView name, bool& seen) {
    if (ViewOf(child.FName) != name) return false;
    if (seen) SayOf(child, TEXT("a second ") + Quoted(child.FName) + TEXT(" is not used"));
    seen = true;
    return true;
}

std::vector<TDiagnostic> TChecker::Check(const TXmlNode& root) {
    CheckRoot(root);
    if (root.FName == TEXT("query")) {
        CheckQuery(root);
    } else if (root.FName == TEXT("update")) {
        CheckUpdate(root);
    } else {
        SayOf(root, TEXT("unknown request ") + Quoted(root.FName) +
                        TEXT(": known are 'query' and 'update'"));
    }
    for (const int position : source_.Passed()) Say(position, TEXT("this text is not used"));
    std::stable_sort(
        diagnostics_.begin(), diagnostics_.end(),
        [](const TDiagnostic& a, const TDiagnostic& b) { return a.position < b.position; });
    return std::move(diagnostics_);
}

void TChecker::CheckRoot(const TXmlNode& root) {
    for (int i = 0; i < root.AttributeCount(); ++i) {
        const TXmlPair& attribute = *root.GetAttribute(i);
        const TView name = ViewOf(attribute.FName);
        const bool known = std::find(std::begin(kRootAttributes), std::end(kRootAttributes),
                                     name) != std::end(kRootAttributes);
        if (!known) SayOf(root, TEXT("unknown attribute ") + Quoted(attribute.FName));
        const TView value = ViewOf(attribute.FValue);
        if (name == kRootAttributes[0] && !value.empty() && value != TView(TEXT("UTF-8")) &&
            value != TView(TEXT("UTF-16"))) {
            SayOf(root, TEXT("the encoding ") + Quoted(attribute.FValue) +
                            TEXT(" is neither 'UTF-8' nor 'UTF-16'"));
        }
    }
    NoText(root);
}

void TChecker::CheckQuery(const TXmlNode& root) {
    bool seen[std::size(kQuery)] = {};
    for (int i = 0; i < root.ChildCount(); ++i) {
        const TXmlNode& child = *root.GetChild(i);
        const TFilter* row = std::find_if(
            std::begin(kQuery), std::end(kQuery),
            [&](const TFilter& filter) { return filter.element == ViewOf(child.FName); });
        if (row == std::end(kQuery)) {
            SayUnknown(child);
            continue;
        }
        IsOnly(child, row->element, seen[row - kQuery]);
        Group(child);
        bool filtered = false;
        for (int j = 0; j < child.ChildCount(); ++j) {
            const TXmlNode& filter = *child.GetChild(j);
            if (row->filter.empty() || !IsOnly(filter, row->filter, filtered)) {
                SayUnknown(filter);
            } else {
                Leaf(filter);
            }
        }
    }
}

void TChecker::CheckUpdate(const TXmlNode& root) {
    for (int i = 0; i < root.ChildCount(); ++i) {
        const TXmlNode& child = *root.GetChild(i);
        if (child.FName == TEXT("global")) {
            Group(child);
            for (int j = 0; j < child.ChildCount(); ++j) Leaf(*child.GetChild(j));
        } else if (child.FName == TEXT("printer")) {
            CheckPrinter(child);
        } else {
            SayUnknown(child);
        }
    }
}

void TChecker::CheckPrinter(const TXmlNode& printer) {
    Group(printer);
    bool named = false;
    bool set = false;
    for (int i = 0; i < printer.ChildCount(); ++i) {
        const TXmlNode& child = *printer.GetChild(i);
        if (IsOnly(child, TEXT("name"), named)) {
            Leaf(child);
        } else if (IsOnly(child, TEXT("devmode"), set)) {
            CheckFields(child);
        } else {
            SayUnknown(child);
        }
    }
}

// Groups may be nested as deep as a caller likes, hence no recursion; the innermost counts.
void TChecker::CheckFields(const TXmlNode& devmode) {
    struct TLevel {
        const TXmlNode* node;
        int next;
    };
    TQVDM scratch;
    std::vector<TLevel> levels{{&devmode, 0}};
    Group(devmode);
    while (!levels.empty()) {
        TLevel& level = levels.back();
        const TXmlNode* child = level.node->GetChild(level.next++);
        if (child == nullptr) {
            levels.pop_back();
        } else if (child->ChildCount() > 0) {
            Group(*child);
            levels.push_back({child, 0});
        } else {
            NoAttributes(*child);
            CheckField(scratch, level.node == &devmode ? TView() : ViewOf(level.node->FName),
                       *child);
        }
    }
}

void TChecker::CheckField(TQVDM& scratch, TView group, const TXmlNode& leaf) {
    const UnicodeString name =
        group.empty() ? leaf.FName
                      : UnicodeString(group.data(), static_cast<long long>(group.size())) +
                            TEXT(".") + leaf.FName;
    const auto say = [&](const UnicodeString& text) { Say(source_.TextOf(leaf), text); };
    switch (driver_devmode::CheckField(scratch, {group, ViewOf(leaf.FName)}, leaf.FValue)) {
        case TFieldCheck::Taken:
            return;
        case TFieldCheck::UnknownName:
            return SayOf(leaf, TEXT("unknown field ") + Quoted(name));
        case TFieldCheck::BadValue:
            return say(Quoted(leaf.FValue) + TEXT(" is no value of ") + Quoted(name));
        case TFieldCheck::TooMany:
            return say(Quoted(leaf.FValue) + TEXT(" has more values than ") + Quoted(name));
        case TFieldCheck::Cut:
            return say(TEXT("the text is longer than ") + Quoted(name));
        case TFieldCheck::NotKept:
            return SayOf(leaf, TEXT("the value of ") + Quoted(name) +
                                   TEXT(" does not last: set 'DeviceName' or 'FormName'"));
        case TFieldCheck::NoRoom:
            return say(TEXT("the texts together are longer than the settings have room for"));
    }
}

void Report(const std::vector<TDiagnostic>& diagnostics, TXmlSourceText& places,
            TXmlMessages& messages) {
    constexpr std::size_t kMost = 100;
    for (std::size_t i = 0; i < diagnostics.size() && i < kMost; ++i) {
        const TXmlSourceLocation place = places.FindInText(diagnostics[i].position);
        UnicodeString text = place.Name() + TEXT(": ") + diagnostics[i].text;
        if (place.shown.Length() > 0) text += TEXT("\n") + place.shown;
        SetPlace(messages.Error(text), place);
    }
    if (diagnostics.size() > kMost) {
        messages.Error(UnicodeString(static_cast<long long>(diagnostics.size() - kMost)) +
                       TEXT(" more are not shown"));
    }
}

}  // namespace

bool CheckXmlRequest(Classes::TStream* request, Classes::TStream* response) {
    TXmlDoc document;
    TXmlDoc answer;
    TSource source;
    document.SetObserver(&source);
    std::vector<unsigned char> bytes;
    const TRequestFault fault = LoadRequest(document, *request, bytes);
    if (fault.text.IsEmpty()) {
        const std::vector<TDiagnostic> diagnostics = TChecker(source).Check(*document.FRoot);
        if (diagnostics.empty()) return true;
        TXmlSourceText places(bytes.data(), static_cast<int>(bytes.size()), document.CodePage);
        TXmlMessages messages;
        Report(diagnostics, places, messages);
        BeginResponse(document, answer);
        messages.AppendTo(*answer.FRoot);
    } else {
        RejectRequest(document, answer, UnicodeString(), fault);
    }
    answer.SaveToStream(response);
    return false;
}
