#include "xml/xml_resource.h"

#include <memory>
#include <mutex>

#include "mox_classes/memory/lock.h"
#include "mox_classes/memory/module_static.h"
#include "mox_classes/text/sysutils_numbers.h"
#include "mox_log/logger.h"
#include "xml/xml_doc.h"

namespace {

// What is kept beside the document. A lookup may read the file and build the indices of the tree,
// and any thread that logs may make the first lookup: hence the guard.
struct TResourceState {
    const TXmlNode* section = nullptr;  // the root's child "mox", once it has been found
    UnicodeString language = TEXT("en");
};

// Guards the state. It is not a part of it, because it must outlive it.
System::TLock& StateGuard() {
    static constinit System::TLock guard;
    return guard;
}

TResourceState& State() {
    static TResourceState& state = System::KeepUntilUnload(std::make_unique<TResourceState>());
    return state;
}

const TXmlNode* StringSection(TResourceState& state, TXmlDoc& document) {
    if (state.section == nullptr) {
        try {
            if (document.IsDocEmpty() && document.ReadFile() < 0) return nullptr;
        } catch (const UnicodeString&) {
            // When the file is damaged, the part in front of the damage is used.
        }
        document.FRoot->BuildIndices();
        state.section = document.FRoot->FindChild(TEXT("mox"), System::kCodePageUtf8);
    }
    return state.section;
}

// The element name of a string. The format comes from the file, so it is used only when it takes
// exactly one number.
UnicodeString ElementName(const TXmlNode& domain, ULONG id) {
    UnicodeString format = domain.AttrGetString(TEXT("format"), System::kCodePageUtf8);
    if (format.IsEmpty() || !System::FormatFits(format.t_str(), id)) format = TEXT("d%d");
    return Sysutils::UnicodePrintf(format, id);
}

}  // namespace

void InitXmlRes(UnicodeString file_name, UnicodeString fallback_file_name) {
    Mox::TLogger* logger = Mox::GetLogger();
    if (logger->resStringProc != nullptr) return;
    auto document = std::make_unique<TXmlDoc>();
    if (!document->OpenFile(file_name)) document->OpenFile(fallback_file_name);
    logger->resStringContext = document.release();
    logger->resStringProc = ResStringLookup;
}

void UninitXmlRes() {
    Mox::TLogger* logger = Mox::GetLogger();
    if (logger->refCount != 1 || logger->resStringProc != ResStringLookup) return;
    const std::unique_ptr<TXmlDoc> document(GetXmlRes());
    logger->resStringContext = nullptr;
    logger->resStringProc = nullptr;
    TResourceState& state = State();
    const std::lock_guard lock(StateGuard());
    state.section = nullptr;
}

TXmlDoc* GetXmlRes() {
    const Mox::TLogger* logger = Mox::GetLogger();
    if (logger->resStringProc != ResStringLookup) return nullptr;
    return static_cast<TXmlDoc*>(logger->resStringContext);
}

void SetLanguage(UnicodeString language) {
    TResourceState& state = State();
    const std::lock_guard lock(StateGuard());
    state.language = language;
}

UnicodeString GetLanguage() {
    TResourceState& state = State();
    const std::lock_guard lock(StateGuard());
    return state.language;
}

void ResStringLookup(void* context, UnicodeString domain, ULONG id, UnicodeString* result) {
    auto* document = static_cast<TXmlDoc*>(context);
    if (document == nullptr) return;
    TResourceState& state = State();
    const std::lock_guard lock(StateGuard());
    const TXmlNode* section = StringSection(state, *document);
    if (section == nullptr) return;
    const TXmlNode* strings = section->FindChild(domain, System::kCodePageUtf8);
    if (strings == nullptr) return;
    const TXmlNode* string = strings->FindChild(ElementName(*strings, id), System::kCodePageUtf8);
    if (string == nullptr) return;
    const TXmlPair* text = string->FindAttribute(state.language, System::kCodePageUtf8);
    if (text == nullptr) text = string->FindAttribute(TEXT("en"), System::kCodePageUtf8);
    if (text != nullptr) *result = text->FValue;
}
