#include "qv_rtl_main/xml_check.h"

#include <algorithm>
#include <span>
#include <unordered_map>
#include <vector>

#include "driver_devmode/field_check.h"
#include "driver_devmode/pool_texts.h"
#include "mox_classes/containers/streams.h"
#include "qv_rtl_main/request_vocabulary.h"
#include "qv_rtl_main/xml_request_load.h"

namespace {

using driver_devmode::TFieldCheck;
using request::TContent;
using request::TElement;
using request::TView;

TView ViewOf(const UnicodeString& text) {
    return {text.t_str(), static_cast<std::size_t>(text.Length())};
}

UnicodeString Quoted(const UnicodeString& name) {
    constexpr int kMost = 60;
    const bool cut = name.Length() > kMost;
    return TEXT("'") + name.SubString(1, kMost) + (cut ? TEXT("...'") : TEXT("'"));
}

bool Has(std::span<const TView> known, TView name) {
    return std::ranges::find(known, name) != known.end();
}

// "'query' and 'update'"
UnicodeString Roots() {
    UnicodeString names;
    for (const TElement& element : request::kElements) {
        if (!element.Parent().empty()) continue;
        if (!names.IsEmpty()) names += TEXT(" and ");
        names += Quoted(UnicodeString(element.path.data()));
    }
    return names;
}

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
    void CheckContent(const TXmlNode& node, const TElement& element);
    void CheckChildren(const TXmlNode& node, const TElement& element);
    void CheckFields(const TXmlNode& devmode);
    void CheckField(TQVDM& scratch, TView group, const TXmlNode& leaf);
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

std::vector<TDiagnostic> TChecker::Check(const TXmlNode& root) {
    CheckRoot(root);
    const TElement* operation = request::Find({}, ViewOf(root.FName));
    if (operation != nullptr) {
        CheckChildren(root, *operation);
    } else {
        SayOf(root, TEXT("unknown request ") + Quoted(root.FName) + TEXT(": known are ") + Roots());
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
        if (!Has(request::kRootAttributes, name))
            SayOf(root, TEXT("unknown attribute ") + Quoted(attribute.FName));
        const TView value = ViewOf(attribute.FValue);
        if (name == request::kRootAttributes[0] && !value.empty() &&
            !Has(request::kEncodings, value)) {
            SayOf(root, TEXT("the encoding ") + Quoted(attribute.FValue) +
                            TEXT(" is neither 'UTF-8' nor 'UTF-16'"));
        }
    }
    NoText(root);
}

// The table is three levels deep, and so is the recursion.
void TChecker::CheckContent(const TXmlNode& node, const TElement& element) {
    switch (element.content) {
        case TContent::Elements:
        case TContent::Repeated:
            Group(node);
            return CheckChildren(node, element);
        case TContent::Text:
            return Leaf(node);
        case TContent::AnyTexts:
            Group(node);
            for (int i = 0; i < node.ChildCount(); ++i) Leaf(*node.GetChild(i));
            return;
        case TContent::Fields:
            return CheckFields(node);
    }
}

void TChecker::CheckChildren(const TXmlNode& node, const TElement& element) {
    std::vector<const TElement*> seen;
    for (int i = 0; i < node.ChildCount(); ++i) {
        const TXmlNode& child = *node.GetChild(i);
        const TElement* row = request::Find(element.path, ViewOf(child.FName));
        if (row == nullptr) {
            SayUnknown(child);
            continue;
        }
        if (element.content == TContent::Elements && std::ranges::count(seen, row) > 0)
            SayOf(child, TEXT("a second ") + Quoted(child.FName) + TEXT(" is not used"));
        if (std::ranges::count(seen, row) == 0) seen.push_back(row);
        CheckContent(child, *row);
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
        case TFieldCheck::UnknownName:
            return SayOf(leaf, TEXT("unknown field ") + Quoted(name));
        case TFieldCheck::Taken:
            if (scratch.StatedSizeFits()) return;
            // A size beyond the block. The fields behind it are checked with the block's own.
            scratch.GetDM()->dmSize = QV_DEVMODE_EXTRA::kPublicSize;
            scratch.GetDM()->dmDriverExtra = QV_DEVMODE_EXTRA::kExtraSize;
            [[fallthrough]];
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
            for (const UnicodeString& text : driver_devmode::TextsWithoutRoom(scratch)) say(text);
            return;
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
