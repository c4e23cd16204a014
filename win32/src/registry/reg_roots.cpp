// The registry's roots and how they are named.
#include <iterator>

#include "registry/reg_hive.h"
#include "text/case_fold.h"

namespace host {

namespace {

struct RootRow {
    HKEY handle;
    std::u16string_view name, short_name;
};

const RootRow kRoots[] = {
    {HKEY_CLASSES_ROOT, u"HKEY_CLASSES_ROOT", u"HKCR"},
    {HKEY_CURRENT_USER, u"HKEY_CURRENT_USER", u"HKCU"},
    {HKEY_LOCAL_MACHINE, u"HKEY_LOCAL_MACHINE", u"HKLM"},
    {HKEY_USERS, u"HKEY_USERS", u"HKU"},
    {HKEY_CURRENT_CONFIG, u"HKEY_CURRENT_CONFIG", u"HKCC"},
};

}  // namespace

const std::vector<std::unique_ptr<RegHive>>& RegHives() {
    // Never destroyed: a library that unloads at process exit may still read the registry.
    static const auto& hives = []() -> auto& {
        auto& made = *new std::vector<std::unique_ptr<RegHive>>;
        for (const RootRow& row : kRoots) made.push_back(std::make_unique<RegHive>(row.name));
        return made;
    }
    ();
    return hives;
}

RegHive* FindHive(HKEY root) {
    for (std::size_t i = 0; i < std::size(kRoots); ++i) {
        if (kRoots[i].handle == root) return RegHives()[i].get();
    }
    return nullptr;
}

RegHive* FindHive(std::u16string_view name) {
    for (std::size_t i = 0; i < std::size(kRoots); ++i) {
        if (SameFileName(name, kRoots[i].name) || SameFileName(name, kRoots[i].short_name)) {
            return RegHives()[i].get();
        }
    }
    return nullptr;
}

}  // namespace host
