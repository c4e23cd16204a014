// Strings of a module's table, as the Linux host's modules carry them.
#include <gtest/gtest.h>
#include <windows.h>

#include "mox_classes/text/sysutils_paths.h"
#include "mox_classes/text/sysutils_platform.h"
#include "support/fresh_host_root.h"
#include "support/string_print.h"

TEST(StringTable, AnEntryReplacesTheContentOrLeavesIt) {
    const test::FreshHostRoot root;
    const UnicodeString file =
        Sysutils::ExtractFilePath(Sysutils::ExeName(nullptr)) + TEXT("test_module.so");
    const HMODULE module = LoadLibraryW(file.t_str());
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(UnicodeString::LoadStr(module, 97), TEXT("Cancel"));
    EXPECT_EQ(UnicodeString::LoadStr(module, 111), TEXT("last"));
    for (const int id : {98, 95, 112, -1, 97 + 0x10000}) {
        EXPECT_EQ(UnicodeString(TEXT("kept")).LoadStringW(module, id), TEXT("kept")) << id;
    }
    FreeLibrary(module);
}
