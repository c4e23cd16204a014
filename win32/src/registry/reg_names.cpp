#include "registry/reg_names.h"

#include <algorithm>
#include <iterator>

#include "root/host_path.h"
#include "text/case_fold.h"

namespace host {

namespace {

template <class Matches>
std::int64_t NumberOfRoot(const Matches& matches) {
    const auto* const found = std::ranges::find_if(RegRoots(), matches);
    return found == std::end(RegRoots()) ? 0 : found - std::begin(RegRoots()) + 1;
}

LSTATUS CheckUnits(std::u16string_view name) {
    std::string utf8;
    return NameToUtf8(name, utf8) ? ERROR_SUCCESS : ERROR_NO_UNICODE_TRANSLATION;
}

}  // namespace

const RegRoot (&RegRoots())[kRegRoots] {
    static const RegRoot roots[] = {
        {HKEY_CLASSES_ROOT, u"HKEY_CLASSES_ROOT", u"HKCR", "HKEY_CLASSES_ROOT.reg"},
        {HKEY_CURRENT_USER, u"HKEY_CURRENT_USER", u"HKCU", "HKEY_CURRENT_USER.reg"},
        {HKEY_LOCAL_MACHINE, u"HKEY_LOCAL_MACHINE", u"HKLM", "HKEY_LOCAL_MACHINE.reg"},
        {HKEY_USERS, u"HKEY_USERS", u"HKU", "HKEY_USERS.reg"},
        {HKEY_CURRENT_CONFIG, u"HKEY_CURRENT_CONFIG", u"HKCC", "HKEY_CURRENT_CONFIG.reg"},
    };
    return roots;
}

std::int64_t FindRoot(HKEY handle) {
    return NumberOfRoot([handle](const RegRoot& root) { return root.handle == handle; });
}

std::int64_t FindRoot(std::u16string_view name) {
    return NumberOfRoot([name](const RegRoot& root) {
        return SameFileName(name, root.name) || SameFileName(name, root.short_name);
    });
}

std::int64_t TakeRoot(std::u16string_view& path) {
    const std::size_t end = std::min(path.find(u'\\'), path.size());
    const std::int64_t root = FindRoot(path.substr(0, end));
    path.remove_prefix(std::min(end + 1, path.size()));
    return root;
}

LSTATUS SplitKeyPath(std::u16string_view text, RegPath& path) {
    if (text.starts_with(u'\\')) return ERROR_BAD_PATHNAME;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(u'\\'), text.size());
        if (end > 0) path.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return ERROR_SUCCESS;
}

LSTATUS CheckKeyName(std::u16string_view name) {
    if (name.size() > kMaxKeyName) return ERROR_INVALID_PARAMETER;
    if (name.find_first_of(u"\r\n") != name.npos) return ERROR_INVALID_NAME;
    return CheckUnits(name);
}

LSTATUS CheckValueName(std::u16string_view name) {
    return name.size() > kMaxValueName ? ERROR_INVALID_PARAMETER : CheckUnits(name);
}

std::string FoldedName(std::u16string_view name) {
    std::string folded(name.size() * 2, '\0');
    for (std::size_t i = 0; i < name.size(); ++i) {
        const char16_t unit = FoldFileNameUnit(name[i]);
        folded[2 * i] = static_cast<char>(unit >> 8);
        folded[2 * i + 1] = static_cast<char>(unit);
    }
    return folded;
}

}  // namespace host
