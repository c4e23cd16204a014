// A test's fresh start on Windows: no settings of the product in the registry. Since that would
// take away a real installation's settings, it works under Wine only, where the test programs run
// in a prefix of their own.
#include "support/fresh_host_root.h"

#include <windows.h>

#include <stdexcept>

#include "support/wine_gap.h"

namespace test {

namespace {

void RequireWine() {
    if (!UnderWine()) {
        throw std::runtime_error("tests change the machine's settings: run them under Wine");
    }
}

void ForgetSettings() {
    for (const HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
        for (const WCHAR* key : {TEXT("Software\\Halvorn"), TEXT("Software\\MOX")}) {
            RegDeleteTreeW(root, key);
        }
    }
}

}  // namespace

FreshHostRoot::FreshHostRoot() {
    RequireWine();
    ForgetSettings();
}

FreshHostRoot::~FreshHostRoot() {
    ForgetSettings();
}

}  // namespace test
