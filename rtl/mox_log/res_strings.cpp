#include "mox_log/res_strings.h"

#include <atomic>
#include <string_view>

#include "mox_classes/text/log_here.h"
#include "mox_log/logger.h"
#include "mox_log/registry.h"

namespace Mox {

namespace {

UnicodeString StorageKey(const UnicodeString& domain) {
    return UnicodeString(TEXT("Software\\MOX\\")) + domain;
}

UnicodeString StorageName(DWORD id) {
    UnicodeString name;
    return name.sprintf(TEXT("%04x"), id);
}

constexpr std::basic_string_view<WCHAR> kConversions = TEXT("aAFcfnudgoxeGpXEis%");

}  // namespace

UnicodeString TLogger::GetResString(UnicodeString domain, DWORD id) {
    // The end of the last unit takes the callback away.
    const TResStringProc look_up = std::atomic_ref(resStringProc).load();
    if (look_up == nullptr) {
        return ReadRegistry(HKEY_CURRENT_USER, StorageKey(domain), StorageName(id));
    }
    UnicodeString text;
    look_up(resStringContext, domain, id, &text);
    return text;
}

DWORD TLogger::RegResString(UnicodeString domain, DWORD id, UnicodeString text) {
    if (!WriteRegistry(HKEY_CURRENT_USER, StorageKey(domain), StorageName(id), text)) {
        Mox::LogHere('i', TEXT("Run as Administrator to register the resource"));
    }
    return id;
}

TMoxStringID::TMoxStringID(UnicodeString domain, unsigned short id, UnicodeString /*defaultText*/)
    : domain_(domain), id_(id) {}

UnicodeString TMoxStringID::AsString() const {
    return GetLogger()->GetResString(domain_, id_);
}

bool TMoxStringID::IsEmpty() const {
    return AsString().Length() == 0;
}

const WCHAR* TMoxStringID::w_str() const {
    text_ = AsString();
    return text_.w_str();
}

UnicodeString ExtractFormatStrings(const UnicodeString& format) {
    const std::basic_string_view<WCHAR> text(format.t_str(),
                                             static_cast<std::size_t>(format.Length()));
    UnicodeString found;
    std::size_t at = 0;
    while ((at = text.find(WCHAR('%'), at)) != text.npos) {
        const std::size_t end = text.find_first_of(kConversions, at + 1);
        if (end == text.npos) break;
        const auto specification = text.substr(at, end + 1 - at);
        if (specification != TEXT("%%")) {
            found +=
                UnicodeString(specification.data(), static_cast<long long>(specification.size()));
        }
        at = end + 1;
    }
    return found;
}

}  // namespace Mox
