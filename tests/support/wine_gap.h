// Checks that Wine is known to fail. They hold on Windows and on the Linux host.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

namespace test {

/// Whether the program runs on Wine's Windows.
inline bool UnderWine() {
    const HMODULE ntdll = GetModuleHandleW(TEXT("ntdll.dll"));
    return ntdll != nullptr && GetProcAddress(ntdll, "wine_get_version") != nullptr;
}

/// Expects `holds`, and under Wine the opposite: a gap that Wine has closed shows up and is taken
/// out of the tests.
inline void ExpectExceptOnWine(bool holds, const std::string& what) {
    EXPECT_NE(holds, UnderWine()) << what;
}

}  // namespace test
